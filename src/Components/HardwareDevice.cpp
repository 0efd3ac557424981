#include "Components/HardwareDevice.h"

#include "Components/Gpio.h"
#include "Ham/Ham.h"
#include "Json.h"

#include <cassert>

namespace Component {

using Drivers::DriverArgs;

std::map<uint32_t, DeviceBase*> DeviceBase::devices;
std::map<uint32_t, Utils::ExpectedVal> HardwareDevice::emptyExpectedValues;

void DeviceBase::init() {}

LogicalDevice::PoePort* DeviceBase::newPoePort( const DriverArgs& ) {
   throw NotImplementedException( "newPoePort" );
}

LogicalDevice::TempSensor* DeviceBase::newTempSensor( const DriverArgs& ) {
   throw NotImplementedException( "newTempSensor" );
}

LogicalDevice::Slot* DeviceBase::newSlot( const DriverArgs& ) { throw NotImplementedException( "newSlot" ); }

LogicalDevice::SfpXcvr* DeviceBase::newSfpXcvr( uint32_t, const DriverArgs& ) {
   throw NotImplementedException( "newSfpXcvr" );
}

LogicalDevice::QsfpXcvr* DeviceBase::newQsfpXcvr( uint32_t, const DriverArgs& ) {
   throw NotImplementedException( "newQsfpXcvr" );
}

LogicalDevice::CmisXcvr* DeviceBase::newCmisXcvr( uint32_t, const DriverArgs& ) {
   throw NotImplementedException( "newCmisXcvr" );
}

LogicalDevice::Led* DeviceBase::newLed( const DriverArgs& ) { throw NotImplementedException( "newLed" ); }

LogicalDevice::Fan* DeviceBase::newFan( const DriverArgs& ) { throw NotImplementedException( "newFan" ); }

LogicalDevice::Mux* DeviceBase::newMux( const DriverArgs&, uint32_t ) {
   throw NotImplementedException( "newMux" );
}

LogicalDevice::Psu* DeviceBase::newPsu( const DriverArgs& ) { throw NotImplementedException( "newPsu" ); }

LogicalDevice::SmbusProxy* DeviceBase::newSmbusProxy( const DriverArgs& ) {
   throw NotImplementedException( "newSmbusProxy" );
}

DeviceBase* DeviceBase::create( const char* devArgs, DriverArgs& args ) {
   ql_trace( 0, "parsing devArgs = %s", devArgs );
   if ( !args.parseJSON( devArgs ) ) {
      ql_trace( 0, "failed to parse json object as a device" );
      return nullptr;
   }
   return args.isMultiDevice ? MultiDevice::create( args ) : HardwareDevice::create( args, nullptr );
}

DeviceBase* DeviceBase::findDevice( DriverArgs& args ) {
   ql_trace( 0, "looking for already existing device %u", args.did );
   auto cached = devices.find( args.did );
   if ( cached == devices.end() ) {
      return nullptr;
   }
   ql_trace( 0, "using previously instanciated HardwareDevice %s", args.driver.c_str() );
   return cached->second;
}

DeviceBase* DeviceBase::callDriverFactoryFunc( DriverArgs& args, Ham::Ham* ham ) {
   ql_trace( 0, "creating HardwareDevice %s", args.driver.c_str() );
   auto factory = Drivers::drivers.find( args.driver );
   if ( factory == Drivers::drivers.end() ) {
      ql_trace( 0, "driver %s not found", args.driver.c_str() );
      return nullptr;
   }
   ql_trace( 0, "calling factory function for %s", args.driver.c_str() );
   return factory->second( args, ham );
}

LogicalDevice::Gpio* HardwareDevice::newGpio( const DriverArgs& args ) {
   return new LogicalDevice::RegGpio( this, args );
}

std::map<uint32_t, Utils::ExpectedVal>* HardwareDevice::expectedValues() { return &emptyExpectedValues; }

namespace {

/** Name of the device, which tells apart the simulation files of one driver; only simulation has one. */
std::string deviceName( const DriverArgs& args ) {
   if ( !Utils::simulationIsOn() ) {
      return "";
   }
   // A record from the topology has no text: such a device can't be the first of its did in simulation.
   assert( args.jsonText );
   rapidjson::Document document;
   document.Parse( args.jsonText );
   assert( document.IsObject() );
   auto name = Json::Object( document ).find( "name" );
   return name ? Json::text( *name ) : "";
}

} // namespace

DeviceBase* HardwareDevice::create( DriverArgs& args, Ham::Ham* ham ) {
   if ( auto cached = findDevice( args ) ) {
      return cached;
   }
   if ( !ham && args.provideHam ) {
      ql_trace( 0, "creating Ham" );
      ham = Ham::createHam( args );
      if ( !ham ) {
         ql_trace( 0, "failed to create Ham" );
         return nullptr;
      }
   }
   auto made = callDriverFactoryFunc( args, ham );
   if ( !made ) {
      ql_trace( 0, "factory function returned a null object" );
      return nullptr;
   }
   auto device = dynamic_cast<HardwareDevice*>( made );
   assert( device );

   auto name = deviceName( args );
   device->ham = ham;
   if ( ham ) {
      ham->setDriverName( args.driver, name );
      ham->setExpected( device->expectedValues() );
   }
   device->init();
   ql_trace( 0, "%s device created", args.driver.c_str() );
   devices[args.did] = device;
   return device;
}

} // namespace Component
