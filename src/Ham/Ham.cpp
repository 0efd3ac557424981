#include "Ham/Ham.h"

#include "Drivers/Drivers.h"

#include <cassert>
#include <cstdlib>

NotImplementedException::NotImplementedException( const std::string& operation )
   : text_( "Not implemented " + operation ) {}

const char* NotImplementedException::what() const noexcept { return text_.c_str(); }

int Utils::isInSimulation = -1;

bool Utils::simulationIsOn() {
   if ( isInSimulation == -1 ) {
      isInSimulation = getenv( "SIMULATION_VMID" ) ? 1 : 0;
   }
   return isInSimulation == 1;
}

namespace Ham {

void Ham::init() {}

Ham::ResponseId Ham::addRecvByte() { throw NotImplementedException( "addRecvByte" ); }

Ham::ResponseId Ham::addRead8( Register, uint8_t ) { throw NotImplementedException( "addRead8" ); }

Ham::ResponseId Ham::addRead16( Register, uint8_t ) { throw NotImplementedException( "addRead16" ); }

Ham::ResponseId Ham::addRead32( Register, uint8_t ) { throw NotImplementedException( "addRead32" ); }

Ham::ResponseId Ham::addRead( Register, uint32_t, bool, uint8_t ) {
   throw NotImplementedException( "addRead" );
}

Ham::ResponseId Ham::addReadBlock( Register, uint8_t ) { throw NotImplementedException( "addReadBlock" ); }

void Ham::addSendByte( uint8_t, bool ) { throw NotImplementedException( "addSendByte" ); }

void Ham::addWrite8( Register, uint8_t, bool, uint8_t ) { throw NotImplementedException( "addWrite8" ); }

void Ham::addWrite16( Register, uint16_t, bool, uint8_t ) { throw NotImplementedException( "addWrite16" ); }

void Ham::addWrite32( Register, uint32_t, bool, uint8_t ) { throw NotImplementedException( "addWrite32" ); }

void Ham::addWrite( Register, const void*, uint32_t, bool, uint8_t ) {
   throw NotImplementedException( "addWrite" );
}

void Ham::addWriteBlock( Register, const void*, uint32_t, bool, uint8_t ) {
   throw NotImplementedException( "addWriteBlock" );
}

Ham::ResponseId Ham::addProcessCall( Register, uint16_t, uint8_t ) {
   throw NotImplementedException( "addProcessCall" );
}

uint8_t Ham::get8( ResponseId ) { throw NotImplementedException( "get8" ); }

uint16_t Ham::get16( ResponseId ) { throw NotImplementedException( "get16" ); }

uint32_t Ham::get32( ResponseId ) { throw NotImplementedException( "get32" ); }

std::string Ham::getBlock( ResponseId, size_t ) { throw NotImplementedException( "getBlock" ); }

void Ham::setExpected( std::map<uint32_t, Utils::ExpectedVal>* ) {
   ql_trace( 0, "virtual Ham::setExpected() invoked!!!" );
}

void Ham::setDriverName( std::string, std::string ) {
   ql_trace( 0, "virtual Ham::setDriverName() invoked!!!" );
}

ql_status Ham::recvByte( uint8_t* value ) {
   prepare();
   auto id = addRecvByte();
   auto status = execute();
   if ( status == QL_STATUS_OK ) {
      *value = get8( id );
   }
   return status;
}

ql_status Ham::read8( Register reg, uint8_t* value, uint8_t regSize ) {
   prepare();
   auto id = addRead8( reg, regSize );
   auto status = execute();
   if ( status == QL_STATUS_OK ) {
      *value = get8( id );
   }
   return status;
}

ql_status Ham::read16( Register reg, uint16_t* value, uint8_t regSize ) {
   prepare();
   auto id = addRead16( reg, regSize );
   auto status = execute();
   if ( status == QL_STATUS_OK ) {
      *value = get16( id );
   }
   return status;
}

ql_status Ham::read32( Register reg, uint32_t* value, uint8_t regSize ) {
   prepare();
   auto id = addRead32( reg, regSize );
   auto status = execute();
   if ( status == QL_STATUS_OK ) {
      *value = get32( id );
   }
   return status;
}

ql_status Ham::read( Register reg, uint32_t size, std::string* data, bool noStop, uint8_t regSize ) {
   prepare();
   auto id = addRead( reg, size, noStop, regSize );
   auto status = execute();
   if ( status == QL_STATUS_OK ) {
      *data = getBlock( id, size );
   }
   return status;
}

ql_status Ham::readBlock( Register reg, std::string* data, uint8_t regSize ) {
   prepare();
   auto id = addReadBlock( reg, regSize );
   auto status = execute();
   if ( status == QL_STATUS_OK ) {
      *data = getBlock( id, 0 );
   }
   return status;
}

ql_status Ham::sendByte( uint8_t value, bool flag ) {
   prepare();
   addSendByte( value, flag );
   return execute();
}

ql_status Ham::write8( Register reg, uint8_t value, bool flag, uint8_t regSize ) {
   prepare();
   addWrite8( reg, value, flag, regSize );
   return execute();
}

ql_status Ham::write16( Register reg, uint16_t value, bool flag, uint8_t regSize ) {
   prepare();
   addWrite16( reg, value, flag, regSize );
   return execute();
}

ql_status Ham::write32( Register reg, uint32_t value, bool flag, uint8_t regSize ) {
   prepare();
   addWrite32( reg, value, flag, regSize );
   return execute();
}

ql_status Ham::write( Register reg, const void* data, size_t size, bool flag, uint8_t regSize ) {
   prepare();
   addWrite( reg, data, static_cast<uint32_t>( size ), flag, regSize );
   return execute();
}

ql_status Ham::writeBlock( Register reg, const void* data, size_t size, bool flag, uint8_t regSize ) {
   prepare();
   addWriteBlock( reg, data, static_cast<uint32_t>( size ), flag, regSize );
   return execute();
}

ql_status Ham::processCall( Register reg, uint16_t value, uint16_t* result, uint8_t regSize ) {
   prepare();
   auto id = addProcessCall( reg, value, regSize );
   auto status = execute();
   if ( status == QL_STATUS_OK ) {
      *result = get16( id );
   }
   return status;
}

void Ham::retryCountIs( uint32_t count ) {
   retryCount = count;
   retryCountIsSet = true;
}

Ham* Ham::create(
   const std::string& name, const Topology::Topology& topology, const Drivers::DriverArgs& args ) {
   ql_trace( 3, "looking up for %s in %p with %p", name.c_str(), static_cast<const void*>( &topology ),
      static_cast<const void*>( &args ) );
   auto factory = hams.find( name );
   if ( factory == hams.end() ) {
      ql_trace( 0, "Couldn't find HAM %s", name.c_str() );
      return nullptr;
   }
   ql_trace( 3, "calling %s factory function", name.c_str() );
   auto ham = factory->second( topology, args );
   if ( !ham ) {
      ql_trace( 0, "Factory function returned, couldn't create HAM %s", name.c_str() );
      return nullptr;
   }
   ql_trace( 3, "ham initialisation" );
   ham->init();
   return ham;
}

} // namespace Ham
