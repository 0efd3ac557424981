#include "Ham/QuillonSmbusHam.h"

#include "Components/HardwareDevice.h"
#include "Components/Mux.h"
#include "Quillon.h"

#include <bit>
#include <cassert>
#include <cerrno>
#include <cstring>
#include <memory>

namespace Ham {

Ham* QuillonSmbusHam::createFromAddress( const HamAddress& address, const PCIAddress& pci ) {
   auto ham = new QuillonSmbusHam;
   if ( pci.value != 0 ) {
      ham->masterType = Smbus::SCD;
      ham->pciAddress = pci.value;
   } else {
      assert( address.accelerator == 0 );
      ham->masterType = Smbus::I2C;
   }
   ham->address = address;
   return ham;
}

namespace {

/** The address word of a multiplexer chip. */
const HamAddress& addressOf( Component::LogicalDevice::Mux* mux ) {
   auto ham = dynamic_cast<QuillonSmbusHam*>( mux->device()->ham );
   assert( ham );
   return ham->address;
}

} // namespace

void QuillonSmbusHam::init() {
   prepareRequestCount_ = 0;
   request_.Clear();
   response_.Clear();
   auto own = address;
   for ( auto mux : muxes ) {
      address = addressOf( mux );
      prepareRequestCount_ += mux->addSelectRequests( this );
   }
   address = own;
}

void QuillonSmbusHam::prepare() {
   // Requests removed this way are kept by the message and used again.
   auto requests = request_.mutable_request();
   while ( requests->size() > static_cast<int>( prepareRequestCount_ ) ) {
      requests->RemoveLast();
   }
   response_.Clear();
   responseId = INVALID_RESPONSE_ID;
}

ql_status QuillonSmbusHam::execute() {
   auto own = address;
   for ( auto mux = muxes.rbegin(); mux != muxes.rend(); ++mux ) {
      address = addressOf( *mux );
      ( *mux )->addReleaseRequests( this );
   }
   address = own;

   ql_trace( 4, "executing QuillonSmbusHam request" );
   if ( retryCountIsSet ) {
      request_.set_retries( retryCount );
   }
   assert( _qlSock );
   Smbus::TransactionResponse* reply = nullptr;
   auto result = _qlSock->sendRequestWait( &request_, &reply );
   auto error = errno;
   std::unique_ptr<Smbus::TransactionResponse> owned( reply );
   if ( result < 0 ) {
      ql_trace( 3, "%s: error. %d, %s", "execute", error, strerror( error ) );
      return QL_STATUS_IO_ERROR;
   }
   assert( reply );
   response_.Swap( reply );
   if ( response_.failed() ) {
      ql_trace( 3, "%s: failure in response %s", "execute",
         response_.has_reason() ? response_.reason().c_str() : "unknown reason" );
      return QL_STATUS_FAILED;
   }
   if ( response_.response_size() != request_.request_size() ) {
      ql_trace( 3, "%s: invalid number of response entries; expected %d, got %d", "execute",
         request_.request_size(), response_.response_size() );
      return QL_STATUS_FAILED;
   }
   return QL_STATUS_OK;
}

Ham::ResponseId QuillonSmbusHam::addRecvByte() {
   requestInit( request_.add_request(), 0, Smbus::READ, 0, false, false, 1 );
   return responseId;
}

Ham::ResponseId QuillonSmbusHam::addRead8( Register reg, uint8_t regSize ) {
   requestInit( request_.add_request(), reg, Smbus::READ, 1, false, false, regSize );
   return responseId;
}

Ham::ResponseId QuillonSmbusHam::addRead16( Register reg, uint8_t regSize ) {
   requestInit( request_.add_request(), reg, Smbus::READ, 2, false, false, regSize );
   return responseId;
}

Ham::ResponseId QuillonSmbusHam::addRead( Register reg, uint32_t size, bool noStop, uint8_t regSize ) {
   requestInit( request_.add_request(), reg, Smbus::READ, size, false, noStop, regSize );
   return responseId;
}

Ham::ResponseId QuillonSmbusHam::addReadBlock( Register reg, uint8_t regSize ) {
   requestInit( request_.add_request(), reg, Smbus::BLOCK_READ, 0, false, false, regSize );
   return responseId;
}

void QuillonSmbusHam::addSendByte( uint8_t value, bool flag ) {
   requestInit( request_.add_request(), value, Smbus::WRITE, 0, flag, false, 1 );
}

namespace {

/** The low byte goes out first. */
std::string lowByteFirst( uint16_t value ) {
   return { static_cast<char>( value & 0xFF ), static_cast<char>( value >> 8 ) };
}

} // namespace

void QuillonSmbusHam::addWrite8( Register reg, uint8_t value, bool flag, uint8_t regSize ) {
   auto request = request_.add_request();
   requestInit( request, reg, Smbus::WRITE, 1, flag, false, regSize );
   request->set_data( &value, 1 );
}

void QuillonSmbusHam::addWrite16( Register reg, uint16_t value, bool flag, uint8_t regSize ) {
   auto request = request_.add_request();
   requestInit( request, reg, Smbus::WRITE, 2, flag, false, regSize );
   request->set_data( lowByteFirst( value ) );
}

void QuillonSmbusHam::addWrite( Register reg, const void* data, uint32_t size, bool flag, uint8_t regSize ) {
   auto request = request_.add_request();
   requestInit( request, reg, Smbus::WRITE, size, flag, false, regSize );
   request->set_data( data, size );
}

void QuillonSmbusHam::addWriteBlock(
   Register reg, const void* data, uint32_t size, bool flag, uint8_t regSize ) {
   auto request = request_.add_request();
   requestInit( request, reg, Smbus::BLOCK_WRITE, size, flag, false, regSize );
   request->set_data( data, size );
}

Ham::ResponseId QuillonSmbusHam::addProcessCall( Register reg, uint16_t value, uint8_t regSize ) {
   auto request = request_.add_request();
   requestInit( request, reg, Smbus::PROCESS_CALL, 2, false, false, regSize );
   request->set_data( lowByteFirst( value ) );
   return responseId;
}

uint8_t QuillonSmbusHam::get8( ResponseId id ) {
   auto& data = response( id ).data();
   assert( data.size() == 1 );
   return static_cast<uint8_t>( data[0] );
}

uint16_t QuillonSmbusHam::get16( ResponseId id ) {
   auto& data = response( id ).data();
   assert( data.size() == 2 );
   return static_cast<uint16_t>( static_cast<uint8_t>( data[0] ) | static_cast<uint8_t>( data[1] ) << 8 );
}

std::string QuillonSmbusHam::getBlock( ResponseId id, size_t ) { return response( id ).data(); }

void QuillonSmbusHam::setAddress( uint8_t value ) { address.address = value & 0x7F; }

uint8_t QuillonSmbusHam::getAddress() const { return address.address; }

void QuillonSmbusHam::setBus( uint8_t value ) { address.bus = value & 0x7F; }

uint8_t QuillonSmbusHam::getBus() const { return address.bus; }

void QuillonSmbusHam::requestInit( Smbus::Request* request, Register reg, Smbus::RequestType type,
   size_t size, bool flag, bool noStop, uint8_t regSize ) {
   address.reg = reg;
   if ( noStop ) {
      address.writeNoStopReadCurrent = 1;
   }
   assert( regSize <= sizeof( Register ) );
   address.addrSize = regSize & 3;
   request->set_type( type );
   request->set_size( static_cast<uint32_t>( size ) );
   request->set_address( std::bit_cast<uint64_t>( address ) );
   request->set_pciaddress( pciAddress );
   request->set_mastertype( masterType );
   request->set_flag( flag );
   ++responseId;
}

const Smbus::Response& QuillonSmbusHam::response( ResponseId idx ) const {
   assert( idx != INVALID_RESPONSE_ID );
   assert( ( uint32_t )response_.response_size() > prepareRequestCount_ + idx );
   return response_.response( static_cast<int>( prepareRequestCount_ + idx ) );
}

} // namespace Ham
