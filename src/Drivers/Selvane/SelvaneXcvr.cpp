#include "Drivers/Selvane/SelvaneXcvr.h"

#include "Ham/Ham.h"

#include <cassert>
#include <string>

namespace Drivers {

namespace {

constexpr uint32_t pollMilliseconds = 1000;
constexpr uint8_t regSize = 1;

} // namespace

std::map<uint32_t, Utils::ExpectedVal> SelvaneXcvr::values = {
   { 0x10, { 0xFF, 1 } },
   { 0x1F, { 0x30, 1 } },
};

Component::HardwareDevice* SelvaneXcvr::create( const DriverArgs&, Ham::Ham* ) {
   ql_trace( 0, "Creating SelvaneXcvr device" );
   return new SelvaneXcvr;
}

void SelvaneXcvr::init() {
   ql_trace( 0, "SelvaneXcvr::init()" );
   pollInterval = pollMilliseconds;
   assert( pollStart() );
}

/** Reads a signal's place, and enters its register into the cache. */
SelvaneXcvr::Signal SelvaneXcvr::newSignal( const DriverArgs& args, const std::string& name ) {
   Signal signal = {
      .reg = static_cast<uint8_t>( std::stoi( args.driverArgs.at( name + "Reg" ) ) ),
      .bit = static_cast<uint8_t>( std::stoi( args.driverArgs.at( name + "Bit" ) ) ),
      .activeHigh = args.driverArgs.at( name + "ActiveHigh" ) == "true",
   };
   registerCache[signal.reg] = 0;
   return signal;
}

Component::LogicalDevice::SfpXcvr* SelvaneXcvr::newSfpXcvr( uint32_t id, const DriverArgs& args ) {
   auto presence = newSignal( args, "presence" );
   auto rxLos = newSignal( args, "rxLos" );
   auto txFault = newSignal( args, "txFault" );
   auto txDisable = newSignal( args, "txDisable" );
   updateRegisterCache();
   ql_trace( 0, "creating new SfpXcvr with id=%hhu", static_cast<uint8_t>( id ) );
   return new SfpXcvr( this, id, presence, rxLos, txFault, txDisable );
}

std::map<uint32_t, Utils::ExpectedVal>* SelvaneXcvr::expectedValues() { return &values; }

void SelvaneXcvr::pollCallback() { updateRegisterCache(); }

void SelvaneXcvr::updateRegisterCache() {
   ql_trace( 6, "SelvaneXcvr::updateRegisterCache()" );
   assert( ham );
   ham->prepare();
   Ham::Ham::ResponseId last = Ham::Ham::INVALID_RESPONSE_ID;
   for ( auto& [reg, content] : registerCache ) {
      last = ham->addRead8( reg, regSize );
   }
   if ( ham->execute() != QL_STATUS_OK ) {
      ql_trace( 0, "Failed to poll information for SelvaneXcvr" );
      cacheStale = true;
      return;
   }
   cacheStale = false;
   auto id = last - static_cast<uint32_t>( registerCache.size() ) + 1;
   for ( auto& [reg, content] : registerCache ) {
      content = ham->get8( id++ );
   }
   ql_trace( 6, "Register cache updated for SelvaneXcvr" );
}

ql_status SelvaneXcvr::getRegisterBit( uint8_t reg, uint8_t bit, int* value, bool activeHigh ) {
   if ( cacheStale ) {
      return QL_STATUS_IO_ERROR;
   }
   auto content = registerCache[reg];
   int raw = content >> ( bit & 31 ) & 1;
   *value = activeHigh ? raw : 1 - raw;
   ql_trace( 6, "%s(): reg=%x, bit=%d, activeHigh=%d, regContent=%x, value=%d", "getRegisterBit", reg, bit,
      activeHigh, content, *value );
   return QL_STATUS_OK;
}

ql_status SelvaneXcvr::setRegisterBit( uint8_t reg, uint8_t bit, int value, bool activeHigh ) {
   auto mask = 1U << ( bit & 31 );
   auto& content = registerCache[reg];
   ql_trace( 6, "%s(): reg=%x, bit=%d, activeHigh=%d, regContent=%x, value=%d", "setRegisterBit", reg, bit,
      activeHigh, content, value );
   bool asserted = value != 0;
   auto changed =
      static_cast<uint8_t>( ( asserted == activeHigh ? content | mask : content & ~mask ) & 0xFF );
   assert( ham );
   auto status = ham->write8( reg, changed, false, regSize );
   if ( status == QL_STATUS_OK ) {
      content = changed;
   }
   return status;
}

SelvaneXcvr::SfpXcvr::SfpXcvr(
   SelvaneXcvr* owner, uint32_t number, Signal presence, Signal rxLos, Signal txFault, Signal txDisable )
   : Component::LogicalDevice::SfpXcvr( number )
   , device( owner )
   , presenceReg( presence.reg )
   , presenceBit( presence.bit )
   , presenceActiveHigh( presence.activeHigh )
   , rxLosReg( rxLos.reg )
   , rxLosBit( rxLos.bit )
   , rxLosActiveHigh( rxLos.activeHigh )
   , txFaultReg( txFault.reg )
   , txFaultBit( txFault.bit )
   , txFaultActiveHigh( txFault.activeHigh )
   , txDisableReg( txDisable.reg )
   , txDisableBit( txDisable.bit )
   , txDisableActiveHigh( txDisable.activeHigh ) {}

ql_status SelvaneXcvr::SfpXcvr::getPresence() {
   ql_trace( 6, "%s(): id=%hhu", "getPresence", static_cast<uint8_t>( id ) );
   int present = 0;
   auto status = device->getRegisterBit( presenceReg, presenceBit, &present, presenceActiveHigh );
   if ( status != QL_STATUS_OK ) {
      return status;
   }
   return present ? QL_STATUS_OK : QL_STATUS_NOT_PRESENT;
}

ql_status SelvaneXcvr::SfpXcvr::getTxFault( int* value ) {
   ql_trace( 6, "%s(): id=%hhu", "getTxFault", static_cast<uint8_t>( id ) );
   return device->getRegisterBit( txFaultReg, txFaultBit, value, txFaultActiveHigh );
}

ql_status SelvaneXcvr::SfpXcvr::getRxLos( int* value ) {
   ql_trace( 6, "%s(): id=%hhu", "getRxLos", static_cast<uint8_t>( id ) );
   return device->getRegisterBit( rxLosReg, rxLosBit, value, rxLosActiveHigh );
}

ql_status SelvaneXcvr::SfpXcvr::getTxDisable( int* value ) {
   ql_trace( 6, "%s(): id=%hhu", "getTxDisable", static_cast<uint8_t>( id ) );
   return device->getRegisterBit( txDisableReg, txDisableBit, value, txDisableActiveHigh );
}

ql_status SelvaneXcvr::SfpXcvr::setTxDisable( int value ) {
   ql_trace( 0, "%s(): id=%hhu", "setTxDisable", static_cast<uint8_t>( id ) );
   return device->setRegisterBit( txDisableReg, txDisableBit, value, txDisableActiveHigh );
}

} // namespace Drivers
