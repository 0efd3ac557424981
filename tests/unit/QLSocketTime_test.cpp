#include "Alarms.h"
#include "QLSocketTest.h"

#include "TemporaryDirectory.h"
#include "VirtualTime.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

using namespace std::literals;
using std::chrono::milliseconds;
using Connection = SocketServer::Connection;

// In front of the C library's: under VirtualTime nothing ever comes, and that takes no time.
extern "C" int poll( pollfd* entries, nfds_t count, int timeout ) {
   if ( VirtualTime::current ) {
      VirtualTime::current->waits.push_back( milliseconds( timeout ) );
      return 0;
   }
   auto next = reinterpret_cast<decltype( &poll )>( dlsym( RTLD_NEXT, "poll" ) );
   return next( entries, count, timeout );
}

extern "C" ssize_t recv( int fd, void* bytes, size_t size, int flags ) {
   // The servers of the tests have threads of their own.
   if ( VirtualTime::current && gettid() == getpid() && !( flags & MSG_DONTWAIT ) ) {
      errno = EAGAIN;
      return -1;
   }
   auto next = reinterpret_cast<decltype( &recv )>( dlsym( RTLD_NEXT, "recv" ) );
   return next( fd, bytes, size, flags );
}

namespace {

class QLSocketTime : public QLSocketTest {};

/** Takes requests and never answers. */
void silent( Connection& connection ) {
   while ( connection.receive() ) {
   }
}

/** A server whose queue has room for a single client, which has come already. */
class FullServer {
public:
   FullServer() {
      auto path = ( directory_.path() / "smbus.sock" ).string();
      sockaddr_un address {};
      address.sun_family = AF_UNIX;
      path.copy( address.sun_path, path.size() );
      auto generic = reinterpret_cast<sockaddr*>( &address );
      EXPECT_EQ( bind( listener_, generic, sizeof( address ) ), 0 );
      EXPECT_EQ( listen( listener_, 0 ), 0 );
      EXPECT_EQ( ::connect( first_, generic, sizeof( address ) ), 0 );
      setenv( "QUILLON_SMBUS_SOCKET", path.c_str(), 1 );
   }

   ~FullServer() {
      close( listener_ );
      close( first_ );
   }

   FullServer( const FullServer& ) = delete;
   FullServer& operator=( const FullServer& ) = delete;

   /** Makes room for one more. */
   void takeOne() {
      auto client = accept( listener_, nullptr, nullptr );
      EXPECT_GE( client, 0 );
      close( client );
   }

private:
   TemporaryDirectory directory_;
   int listener_ = socket( AF_UNIX, SOCK_STREAM, 0 );
   int first_ = socket( AF_UNIX, SOCK_STREAM, 0 );
};

milliseconds since( std::chrono::steady_clock::time_point start ) {
   return std::chrono::duration_cast<milliseconds>( std::chrono::steady_clock::now() - start );
}

} // namespace

TEST_F( QLSocketTime, RequestTimesOut ) {
   struct {
      const char* what;
      SocketServer::Script script;
   } rows[] = {
      { "no answer", silent },
      { "half of a length", sending( std::string( 2, '\0' ) ) },
      { "a length alone", sending( "\x00\x00\x00\x05"s ) },
      { "a reply but its last byte", sending( "\x00\x00\x00\x05\x0a\x03\x0a\x01"s ) },
      { "a request that nobody reads", []( Connection& connection ) { connection.waitForClose( 5000ms ); } },
   };

   limit( "100" );
   for ( auto& row : rows ) {
      SCOPED_TRACE( row.what );
      SocketServer server( { row.script, echoing } );
      auto start = std::chrono::steady_clock::now();
      EXPECT_EQ( ask( requestOfSize( maxPayload ) ), "ETIMEDOUT" );
      EXPECT_GE( since( start ), 100ms );
      EXPECT_LT( since( start ), 2000ms );
      EXPECT_TRUE( descriptorsTo( server.path() ).empty() );
   }
}

TEST_F( QLSocketTime, LimitIsForTheWholeReplyNotForEachPiece ) {
   SocketServer server( []( Connection& connection ) {
      connection.receive();
      for ( auto byte : SocketServer::frame( replyWith( std::string( 34, 'd' ) ) ) ) {
         connection.sendBytes( { &byte, 1 } );
         if ( connection.waitForClose( 20ms ) ) {
            return;
         }
      }
   } );
   limit( "300" );
   auto start = std::chrono::steady_clock::now();
   EXPECT_EQ( ask( 1 ), "ETIMEDOUT" );
   EXPECT_GE( since( start ), 300ms );
}

// Neither of the two waits is longer than the limit.
TEST_F( QLSocketTime, LimitIsForSendingAndReceivingTogether ) {
   SocketServer server( []( Connection& connection ) {
      std::this_thread::sleep_for( 200ms );
      connection.receive();
      std::this_thread::sleep_for( 200ms );
      connection.send( "" );
      connection.receive();
   } );
   limit( "300" );
   EXPECT_EQ( ask( requestOfSize( maxPayload ) ), "ETIMEDOUT" );
}

TEST_F( QLSocketTime, LimitIsForConnectingAndReceivingTogether ) {
   FullServer server;
   std::thread later( [&] {
      std::this_thread::sleep_for( 700ms );
      server.takeOne();
   } );
   limit( "800" );
   auto start = std::chrono::steady_clock::now();
   EXPECT_EQ( ask( 1 ), "ETIMEDOUT" );
   EXPECT_GE( since( start ), 800ms );
   EXPECT_LT( since( start ), 1450ms );
   later.join();
}

TEST_F( QLSocketTime, SetupTimesOutWhenTheServerHasNoRoom ) {
   FullServer server;
   limit( "100" );
   auto start = std::chrono::steady_clock::now();
   EXPECT_EQ( setup(), "ETIMEDOUT" );
   EXPECT_GE( since( start ), 100ms );
   EXPECT_LT( since( start ), 2000ms );
}

TEST_F( QLSocketTime, SetupWaitsUntilTheServerHasRoom ) {
   FullServer server;
   std::thread later( [&] {
      std::this_thread::sleep_for( 100ms );
      server.takeOne();
   } );
   EXPECT_EQ( setup(), "OK" );
   later.join();
}

TEST_F( QLSocketTime, LateReplyNeverAnswersTheNextRequest ) {
   SocketServer server( { []( Connection& connection ) {
                            connection.receive();
                            connection.waitForClose( 300ms );
                            connection.send( replyWith( "late" ) );
                         },
      echoing } );
   limit( "100" );
   ASSERT_EQ( ask( 1 ), "ETIMEDOUT" );
   limit( "5000" );
   ASSERT_EQ( ask( 2 ), "OK" );
   EXPECT_EQ( answer->reason(), "2" );
}

TEST_F( QLSocketTime, LimitComesFromTheEnvironmentAtEachRequest ) {
   struct {
      const char* value;
      milliseconds limit;
   } rows[] = {
      { "1", 1ms },
      { "250", 250ms },
      { "2147483647", 2147483647ms },
      { nullptr, 10000ms },
      { "", 10000ms },
      { "0", 10000ms },
      { "-250", 10000ms },
      { "250ms", 10000ms },
      { "0.5", 10000ms },
      { " 250", 10000ms },
      { "soon", 10000ms },
      { "2147483648", 10000ms },
      { "99999999999999999999", 10000ms },
   };

   SocketServer server( silent );
   for ( auto& row : rows ) {
      SCOPED_TRACE( row.value ? row.value : "unset" );
      row.value ? limit( row.value ) : static_cast<void>( unsetenv( "QUILLON_SMBUS_TIMEOUT_MS" ) );
      VirtualTime time;
      EXPECT_EQ( ask( 1 ), "ETIMEDOUT" );
      EXPECT_EQ( time.waits, std::vector<std::chrono::microseconds>( 1, row.limit ) );
   }
}

// Signals

TEST_F( QLSocketTime, SignalsDuringTheWaitDoNotDisturbIt ) {
   SocketServer server( []( Connection& connection ) {
      connection.receive();
      std::this_thread::sleep_for( 200ms );
      connection.send( replyWith( "undisturbed" ) );
      connection.receive();
   } );
   Alarms alarms( 10ms );
   ASSERT_EQ( ask( 1 ), "OK" );
   EXPECT_EQ( answer->reason(), "undisturbed" );
   EXPECT_GE( Alarms::count, 3 );
}

TEST_F( QLSocketTime, SignalsDuringTheWaitDoNotLengthenIt ) {
   SocketServer server( silent );
   limit( "200" );
   Alarms alarms( 10ms );
   auto start = std::chrono::steady_clock::now();
   EXPECT_EQ( ask( 1 ), "ETIMEDOUT" );
   EXPECT_GE( since( start ), 200ms );
   EXPECT_LT( since( start ), 2000ms );
   EXPECT_GE( Alarms::count, 3 );
}

TEST_F( QLSocketTime, SignalsWhileTheServerHasNoRoomDoNotDisturbSetup ) {
   FullServer server;
   Alarms alarms( 10ms );
   std::thread later( [&] {
      std::this_thread::sleep_for( 200ms );
      server.takeOne();
   } );
   EXPECT_EQ( setup(), "OK" );
   EXPECT_GE( Alarms::count, 3 );
   later.join();
}

TEST_F( QLSocketTime, SignalsWhileTheServerHasNoRoomDoNotLengthenSetup ) {
   FullServer server;
   limit( "200" );
   Alarms alarms( 10ms );
   auto start = std::chrono::steady_clock::now();
   EXPECT_EQ( setup(), "ETIMEDOUT" );
   EXPECT_GE( since( start ), 200ms );
   EXPECT_LT( since( start ), 2000ms );
   EXPECT_GE( Alarms::count, 3 );
}
