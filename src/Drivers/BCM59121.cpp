#include "Drivers/BCM59121.h"

#include <string>

namespace Drivers {

namespace {

constexpr uint8_t defaultDownloadSize = 36;

const std::string* optionalArg( const DriverArgs& args, const char* key ) {
   auto entry = args.driverArgs.find( key );
   return entry == args.driverArgs.end() ? nullptr : &entry->second;
}

template <typename Number>
Number requiredNumber( const DriverArgs& args, const char* key ) {
   return static_cast<Number>( std::stoi( args.driverArgs.at( key ) ) );
}

} // namespace

Component::HardwareDevice* BCM59121::create( const DriverArgs& args, Ham::Ham* ) {
   return new BCM59121( args );
}

BCM59121::BCM59121( const DriverArgs& args )
   : globalConfigDone( false )
   , numPorts( requiredNumber<uint8_t>( args, "numPorts" ) )
   , numAtPorts( requiredNumber<uint8_t>( args, "numAtPorts" ) )
   , firmwareDownloadSize( defaultDownloadSize )
   , hasFirmwarePath( false )
   , mpssValueZero( false )
   , portMpssMask( new uint8_t[numPorts]() )
   , crcAutocorrectChip( 0 )
   , crcAutocorrect( false )
   , hasResetControl( false )
   , resetReg( 0 )
   , outOfResetVal( 0 )
   , maxPdClass( QL_POE_CLASS_6 )
   , maxDualSigPdClass( QL_POE_CLASS_4 ) {
   poeCache.resize( numPorts );
   if ( auto path = optionalArg( args, "firmwarePath" ) ) {
      firmwarePath = *path;
      hasFirmwarePath = true;
   }
   if ( optionalArg( args, "firmwareDownloadSize" ) ) {
      firmwareDownloadSize = requiredNumber<uint8_t>( args, "firmwareDownloadSize" );
   }
   if ( optionalArg( args, "resetReg" ) && optionalArg( args, "outOfResetVal" ) ) {
      resetReg = requiredNumber<uint16_t>( args, "resetReg" );
      outOfResetVal = requiredNumber<uint8_t>( args, "outOfResetVal" );
      hasResetControl = true;
   }
   if ( auto value = optionalArg( args, "mpssValueZero" ) ) {
      mpssValueZero = *value == "true";
   }
}

Component::LogicalDevice::PoePort* BCM59121::newPoePort( const DriverArgs& args ) {
   auto id = requiredNumber<uint8_t>( args, "portId" );
   ql_trace( 0, "Creating new BCM59121 PoE port id %d", id );
   return new PoePort( this, id );
}

uint8_t BCM59121::portChipIndex( uint8_t port ) const {
   constexpr int channelsInGroup = 8;
   constexpr int fourPairPortsInGroup = 4;
   if ( !isFourPair( port ) ) {
      return static_cast<uint8_t>( port / channelsInGroup );
   }
   return static_cast<uint8_t>( numAtPorts / channelsInGroup + ( port - numAtPorts ) / fourPairPortsInGroup );
}

BCM59121::PoeCache BCM59121::copyCache( size_t port ) const {
   return port < poeCache.size() ? poeCache[port] : PoeCache {};
}

void BCM59121::storeCache( size_t port, const PoeCache& cache ) {
   if ( port < poeCache.size() ) {
      poeCache[port] = cache;
   }
}

BCM59121::PoePort::PoePort( BCM59121* owner, uint8_t number ) : driver( owner ), id( number ) {}

size_t BCM59121::PoePort::debugInfo( char** text, bool raw ) {
   return raw ? driver->getInformationRaw( this, text ) : driver->getInformation( this, text );
}

ql_status BCM59121::PoePort::poePortInit() { return driver->portInit( this ); }

ql_status BCM59121::PoePort::reprogramPoeFirmware( bool skip, char** revision ) {
   return driver->reprogramFirmware( this, skip, revision );
}

ql_status BCM59121::PoePort::setPoePortPse( bool enable ) { return driver->setPse( this, enable ); }

ql_status BCM59121::PoePort::setPoePortLimit( ql_poe_power_limit_mode mode, float watts ) {
   return driver->setPowerLimit( this, mode, watts );
}

ql_status BCM59121::PoePort::setPoePortShutOffWithPsu( uint8_t psu, bool shutOff ) {
   return driver->setShutOffWithPsu( this, psu, shutOff );
}

ql_status BCM59121::PoePort::poePortPowerOn( bool on ) { return driver->powerOn( this, on ); }

ql_status BCM59121::PoePort::setPoePortLegacyDetect( bool legacy ) {
   return driver->setLegacyDetect( this, legacy );
}

ql_status BCM59121::PoePort::getPoePortPowerState( ql_poe_port_state* state, ql_poe_port_state* primary,
   ql_poe_port_state* alternative, ql_poe_port_pair_state* pairState ) {
   return driver->getPowerState( this, state, primary, alternative, pairState );
}

ql_status BCM59121::PoePort::getPoeDeviceClass(
   ql_poe_device_class* cls, ql_poe_device_class* primary, ql_poe_device_class* alternative ) {
   return driver->getDeviceClass( this, cls, primary, alternative );
}

ql_status BCM59121::PoePort::getPoePortPower( float* total, float* primary, float* alternative ) {
   return driver->getPower( this, total, primary, alternative );
}

ql_status BCM59121::PoePort::getPoePortVoltage( float* volts ) { return driver->getVoltage( this, volts ); }

ql_status BCM59121::PoePort::getPoePortCurrent( float* amps ) { return driver->getCurrent( this, amps ); }

ql_status BCM59121::PoePort::getPoePortTemperature( float* degrees ) {
   return driver->getTemperature( this, degrees );
}

ql_status BCM59121::PoePort::getPoePortCrcStatus( bool* ok ) { return driver->getCrcStatus( this, ok ); }

size_t BCM59121::PoePort::getPoePortInformation( char** text ) {
   return driver->getInformation( this, text );
}

} // namespace Drivers
