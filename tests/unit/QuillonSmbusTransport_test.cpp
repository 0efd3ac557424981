// The SMBus Ham on a socket that this program has in place of the platform's: who frees what it hands back.

#include "Ham/QuillonSmbusHam.h"

#include "FreshLibrary.h"
#include "Quillon.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <utility>

using testing::ElementsAre;

namespace {

/** What the next request comes to: the result, and what it hands back. */
std::function<int( Smbus::TransactionResponse** )> outcome;

/** The memory that is waited for to be freed. */
void* watched;
bool isFreed;

void release( void* memory ) {
   if ( memory && memory == watched ) {
      isFreed = true;
      watched = nullptr;
   }
   std::free( memory );
}

} // namespace

void* operator new( size_t size ) {
   if ( auto memory = std::malloc( size ) ) {
      return memory;
   }
   throw std::bad_alloc();
}

void operator delete( void* memory ) noexcept { release( memory ); }

void operator delete( void* memory, size_t ) noexcept { release( memory ); }

namespace QuillonLibrary {

QLSocket::QLSocket() = default;

QLSocket::~QLSocket() = default;

int QLSocket::setup() { return 0; }

void QLSocket::cleanup() {}

int QLSocket::sendRequestWait( Smbus::TransactionRequest*, Smbus::TransactionResponse** response ) {
   EXPECT_EQ( *response, nullptr );
   return outcome( response );
}

} // namespace QuillonLibrary

namespace {

class QuillonSmbusTransport : public FreshLibrary {
protected:
   QuillonSmbusTransport() {
      EXPECT_EQ( qlSockInit( "test", 1 ), QL_STATUS_OK );
      HamAddress address {};
      address.address = 0x48;
      // A Ham lives until the process ends.
      static auto ofAllTests = Ham::QuillonSmbusHam::createFromAddress( address, { 0 } );
      ham = ofAllTests;
   }

   ~QuillonSmbusTransport() override { delete std::exchange( _qlSock, nullptr ); }

   /** Lets the next request hand back a response of one byte, whose end is watched. */
   static void handBack( int result, int error ) {
      outcome = [=]( Smbus::TransactionResponse** response ) {
         *response = new Smbus::TransactionResponse;
         ( *response )->add_response()->set_data( "\x2a" );
         watched = *response;
         isFreed = false;
         errno = error;
         return result;
      };
   }

   Ham::Ham* ham = nullptr;
   uint8_t byte = 0x55;
};

} // namespace

TEST_F( QuillonSmbusTransport, FreesTheResponseThatAFailureHandsBack ) {
   for ( auto result : { -1, -7 } ) {
      handBack( result, EPROTO );
      Host::traces.clear();
      EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_IO_ERROR ) << result;
      EXPECT_TRUE( isFreed ) << result;
      EXPECT_EQ( byte, 0x55 ) << "it is no answer";
      EXPECT_THAT( Host::tracesOf( 3 ),
         ElementsAre( "execute: error. " + std::to_string( EPROTO ) + ", " + strerror( EPROTO ) ) );
   }
}

TEST_F( QuillonSmbusTransport, TakesAFailureThatHandsNothingBack ) {
   outcome = []( auto ) {
      errno = ETIMEDOUT;
      return -1;
   };
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( byte, 0x55 );
}

TEST_F( QuillonSmbusTransport, FreesTheResponseOfASuccessAndKeepsItsContents ) {
   handBack( 0, 0 );
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_OK );
   EXPECT_TRUE( isFreed );
   EXPECT_EQ( byte, 0x2A );
}

TEST_F( QuillonSmbusTransport, TakesEveryResultThatIsNotNegativeAsSuccess ) {
   handBack( 12, 0 );
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_OK );
   EXPECT_TRUE( isFreed );
   EXPECT_EQ( byte, 0x2A );
}
