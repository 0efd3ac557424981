#include "Ham/SimHam.h"

#include <fmt/format.h>

#include <cstdlib>
#include <optional>

namespace Ham {

Ham* SimHam::create( const Topology::Topology&, const Drivers::DriverArgs& ) { return new SimHam; }

void SimHam::init() {}

void SimHam::prepare() {
   queuedRegs.clear();
   responseId = INVALID_RESPONSE_ID;
}

ql_status SimHam::execute() {
   return !simFileExists_ || isAddrSimulated() ? QL_STATUS_OK : QL_STATUS_IO_ERROR;
}

Ham::ResponseId SimHam::addRecvByte() {
   requestInit( 0 );
   return responseId;
}

Ham::ResponseId SimHam::addRead8( Register reg, uint8_t ) {
   requestInit( reg );
   return responseId;
}

Ham::ResponseId SimHam::addRead16( Register reg, uint8_t regSize ) { return addRead8( reg, regSize ); }

Ham::ResponseId SimHam::addRead( Register reg, uint32_t, bool, uint8_t regSize ) {
   return addRead8( reg, regSize );
}

Ham::ResponseId SimHam::addReadBlock( Register reg, uint8_t regSize ) { return addRead8( reg, regSize ); }

void SimHam::addSendByte( uint8_t, bool ) {}

void SimHam::addWrite8( Register reg, uint8_t value, bool, uint8_t ) { writeNumber( reg, value, 1 ); }

void SimHam::addWrite16( Register reg, uint16_t value, bool, uint8_t ) { writeNumber( reg, value, 2 ); }

void SimHam::addWrite( Register reg, const void* data, uint32_t size, bool, uint8_t ) {
   writeText( reg, data, size );
}

void SimHam::addWriteBlock( Register reg, const void* data, uint32_t size, bool, uint8_t ) {
   writeText( reg, data, size );
}

Ham::ResponseId SimHam::addProcessCall( Register reg, uint16_t, uint8_t regSize ) {
   return addRead8( reg, regSize );
}

uint8_t SimHam::get8( ResponseId id ) { return static_cast<uint8_t>( readNumber( id, 2 ) ); }

uint16_t SimHam::get16( ResponseId id ) { return static_cast<uint16_t>( readNumber( id, 4 ) ); }

std::string SimHam::getBlock( ResponseId id, size_t size ) {
   selectQueued( id );
   if ( !canAccess() ) {
      warnNotSimulated();
      return "";
   }
   return readFromFile( size );
}

void SimHam::setExpected( std::map<uint32_t, Utils::ExpectedVal>* values ) {
   expected = values;
   if ( !expected->empty() ) {
      createSimFile();
   }
}

/** A directory that the environment gives is remembered; while it gives none, one may still come. */
std::string SimHam::simulationDirectory() {
   static std::optional<std::string> remembered;
   if ( !remembered ) {
      auto directory = getenv( "QUILLONLIB_SIMDIR" );
      if ( !directory ) {
         return "/tmp/QuillonSimulationDevices";
      }
      remembered = directory;
   }
   return *remembered;
}

void SimHam::setDriverName( std::string driver, std::string name ) {
   driverName = driver;
   simFileName_ = simulationDirectory() + "/" + driver;
   if ( !name.empty() ) {
      deviceName = name;
      simFileName_ += "-" + name;
   }
}

void SimHam::requestInit( Register reg ) {
   currentReg = reg;
   queuedRegs.push_back( reg );
   ++responseId;
}

bool SimHam::isAddrSimulated() const { return expected->find( currentReg ) != expected->end(); }

bool SimHam::canAccess() const { return simFileExists_ && isAddrSimulated(); }

void SimHam::warnNotSimulated() const {
   ql_trace( 0,
      "WARNING: Simulated Driver %s doesn't yet have expectedVal set for register 0x%x using "
      "SIMULATION_HAM()\n",
      driverName.c_str(), currentReg );
}

/** An id that no request has got selects a register that no device has. */
void SimHam::selectQueued( ResponseId id ) {
   currentReg = id < queuedRegs.size() ? queuedRegs[id] : ~Register {};
}

unsigned long SimHam::readNumber( ResponseId id, size_t digits ) {
   selectQueued( id );
   if ( !canAccess() ) {
      warnNotSimulated();
      return 0;
   }
   return strtoul( readFromFile( digits ).c_str(), nullptr, 16 );
}

void SimHam::writeNumber( Register reg, unsigned value, size_t bytes ) {
   requestInit( reg );
   if ( !canAccess() ) {
      warnNotSimulated();
   } else if ( expected->at( reg ).size == bytes ) {
      writeToFile( fmt::format( "{:0{}x}", value, 2 * bytes ) );
   }
}

void SimHam::writeText( Register reg, const void* data, uint32_t size ) {
   requestInit( reg );
   if ( !canAccess() ) {
      warnNotSimulated();
   } else if ( expected->at( reg ).size == size ) {
      writeToFile( *static_cast<const std::string*>( data ) );
   }
}

} // namespace Ham
