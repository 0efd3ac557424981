#include "Drivers/EMC2305.h"

#include "Ham/Ham.h"

#include <cassert>
#include <string>

namespace Drivers {

namespace {

// Registers, 8 bits each. Those of a fan lie 16 apart.
constexpr uint32_t configurationReg = 0x20;
constexpr unsigned firstFanSettingReg = 0x30;
constexpr unsigned firstFanConfig1Reg = 0x32;
constexpr unsigned firstTachHighReg = 0x3E;
constexpr unsigned firstTachLowReg = 0x3F;
constexpr uint8_t regSize = 1;

// The tachometer counts 32.768 kHz clocks over a number of revolutions: rpm = multiplier * 3932160 / count.
constexpr int tachClock = 3932160;

constexpr int fullDrive = 255;

uint8_t fanRegister( unsigned first, int offset ) {
   return static_cast<uint8_t>( first + ( static_cast<unsigned>( offset ) << 4 ) );
}

int numberArg( const DriverArgs& args, const char* key ) {
   auto it = args.driverArgs.find( key );
   assert( it != args.driverArgs.end() );
   return std::stoi( it->second );
}

} // namespace

std::map<uint32_t, Utils::ExpectedVal> EMC2305::values = {
   { 0x32, { 0x27, 1 } },
   { 0x42, { 0x6E, 1 } },
   { 0x52, { 0x6E, 1 } },
   { 0x62, { 0x6E, 1 } },
   { 0x72, { 0x6E, 1 } },
   { 0x3E, { 0x0D, 1 } },
   { 0x4E, { 0x0D, 1 } },
   { 0x5E, { 0x0D, 1 } },
   { 0x6E, { 0x0D, 1 } },
   { 0x7E, { 0x0D, 1 } },
   { 0x3F, { 0x30, 1 } },
   { 0x4F, { 0x30, 1 } },
   { 0x5F, { 0x30, 1 } },
   { 0x6F, { 0x30, 1 } },
   { 0x7F, { 0x30, 1 } },
};

Component::HardwareDevice* EMC2305::create( const DriverArgs&, Ham::Ham* ham ) {
   ql_trace( 0, "Creating EMC2305 Device" );
   assert( ham );
   if ( ham->write8( configurationReg, 0, false, regSize ) != QL_STATUS_OK ) {
      ql_trace( 0, "Error writing config register" );
   }
   return new EMC2305;
}

Component::LogicalDevice::Fan* EMC2305::newFan( const DriverArgs& args ) {
   auto fanId = static_cast<uint8_t>( numberArg( args, "fanId" ) );
   ql_trace( 5, "Creating new EMC2305 Fan id %hhu", fanId );
   assert( fanId >= 1 && fanId <= 5 );
   auto maxRpm = numberArg( args, "maxRpm" );
   return new Fan( this, static_cast<uint8_t>( fanId - 1 ), maxRpm, args.driverArgs );
}

std::map<uint32_t, Utils::ExpectedVal>* EMC2305::expectedValues() { return &values; }

ql_status EMC2305::getFanRpm( Fan* fan, int* rpm ) {
   // One batch, so that the two bytes belong together.
   ham->prepare();
   auto highId = ham->addRead8( fan->tachHighReg, regSize );
   auto lowId = ham->addRead8( fan->tachLowReg, regSize );
   auto status = ham->execute();
   if ( status != QL_STATUS_OK ) {
      return status;
   }
   auto low = ham->get8( lowId );
   auto high = ham->get8( highId );
   int count = high << 5 | low >> 3;
   if ( count == 0 ) {
      *rpm = 0;
      ql_trace( 0, "Error: invalid fan count" );
      return QL_STATUS_DEVICE_ERROR;
   }
   *rpm = fan->tachMultiplier * tachClock / count;
   ql_trace( 5, "EMC2305::getFanRpm -- id: %d tachLow: %d, tachHigh: %d, count: %d rpm: %d", fan->id, low,
      high, count, *rpm );
   return QL_STATUS_OK;
}

ql_status EMC2305::setFanRpm( Fan* fan, int rpm ) {
   assert( fan->maxRpm != 0 );
   // 32-bit arithmetic that wraps, so that every speed has a level.
   auto product = static_cast<int32_t>( static_cast<uint32_t>( rpm ) * fullDrive );
   auto level = static_cast<int64_t>( product ) / fan->maxRpm;
   ql_trace( 5, "Setting fan %d rpm to %d", fan->id, rpm );
   auto status = ham->write8( fan->settingReg, static_cast<uint8_t>( level & 0xFF ), false, regSize );
   if ( status != QL_STATUS_OK ) {
      ql_trace( 0, "Error: setting fan %d to %d rpm failed with status %d", fan->id, rpm,
         static_cast<int>( status ) );
   }
   return status;
}

EMC2305::Fan::Fan(
   EMC2305* owner, uint8_t fanId, int32_t topRpm, std::map<std::string, std::string> driverArgs )
   : device( owner ), id( fanId ), maxRpm( topRpm ), tachMultiplier( 1 ) {
   auto offset = std::stoi( driverArgs["registerOffset"] );
   settingReg = fanRegister( firstFanSettingReg, offset );
   config1Reg = fanRegister( firstFanConfig1Reg, offset );
   tachLowReg = fanRegister( firstTachLowReg, offset );
   tachHighReg = fanRegister( firstTachHighReg, offset );
   uint8_t config1 = 0;
   if ( device->ham->read8( config1Reg, &config1, regSize ) != QL_STATUS_OK ) {
      ql_trace( 0, "Error reading config1 register for fan %d", id );
      return;
   }
   tachMultiplier = static_cast<uint8_t>( 1 << ( config1 >> 5 & 3 ) );
   ql_trace( 5, "Fan %d tach multipler = %d", id, tachMultiplier );
}

ql_status EMC2305::Fan::getRpm( int* rpm ) { return device->getFanRpm( this, rpm ); }

ql_status EMC2305::Fan::setRpm( int rpm ) { return device->setFanRpm( this, rpm ); }

} // namespace Drivers
