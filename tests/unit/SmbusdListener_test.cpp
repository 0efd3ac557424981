#include "smbusd/Listener.h"

#include "SmbusdFakes.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

using namespace Smbusd;
using namespace std::chrono_literals;

namespace {

class SmbusdListener : public testing::Test {
protected:
   SmbusdListener() {
      char name[] = "/tmp/smbusd-XXXXXX";
      directory = mkdtemp( name );
      path = directory + "/smbus.sock";
      listener.emplace(
         loop, path, [this]( Descriptor descriptor ) { accepted.push_back( std::move( descriptor ) ); } );
   }

   ~SmbusdListener() override { std::filesystem::remove_all( directory ); }

   Descriptor connected() {
      Descriptor descriptor( socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 ) );
      sockaddr_un address {};
      address.sun_family = AF_UNIX;
      path.copy( address.sun_path, sizeof( address.sun_path ) - 1 );
      EXPECT_EQ( connect( descriptor.get(), reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ), 0 );
      return descriptor;
   }

   EventLoop loop;
   std::string directory;
   std::string path;
   std::optional<Listener> listener;
   std::vector<Descriptor> accepted;
};

/**
 * Lets the process have no descriptor more than it has. Sanitizers need one to look at a class for the first
 * time: somebody has to be accepted before.
 */
class NoMoreDescriptors {
public:
   NoMoreDescriptors() {
      getrlimit( RLIMIT_NOFILE, &before_ );
      Descriptor next( dup( 0 ) );
      rlimit limit { static_cast<rlim_t>( next.get() ), before_.rlim_max };
      EXPECT_EQ( setrlimit( RLIMIT_NOFILE, &limit ), 0 );
   }

   ~NoMoreDescriptors() { setrlimit( RLIMIT_NOFILE, &before_ ); }

private:
   rlimit before_ {};
};

} // namespace

TEST_F( SmbusdListener, AcceptsConnectionsThatDoNotBlock ) {
   auto peer = connected();
   loop.runOnce();
   ASSERT_EQ( accepted.size(), 1U );
   EXPECT_EQ( fcntl( accepted[0].get(), F_GETFL ) & O_NONBLOCK, O_NONBLOCK );
   EXPECT_EQ( fcntl( accepted[0].get(), F_GETFD ) & FD_CLOEXEC, FD_CLOEXEC );
}

TEST_F( SmbusdListener, AcceptsEveryoneWhoWaits ) {
   std::vector<Descriptor> peers;
   for ( int i = 0; i < 10; ++i ) {
      peers.push_back( connected() );
   }
   EXPECT_TRUE( runUntil( loop, [this] { return accepted.size() == 10; } ) );
}

TEST_F( SmbusdListener, TurnsAwayWhoCanNotBeServed ) {
   listener.reset();
   int tries = 0;
   listener.emplace( loop, path, [&]( Descriptor descriptor ) {
      if ( ++tries == 1 ) {
         throw std::system_error( ENOSPC, std::generic_category(), "event loop" );
      }
      accepted.push_back( std::move( descriptor ) );
   } );
   auto peer = connected();
   loop.runOnce();
   char byte;
   EXPECT_EQ( read( peer.get(), &byte, 1 ), 0 );
   auto next = connected();
   loop.runOnce();
   EXPECT_EQ( accepted.size(), 1U );
}

TEST_F( SmbusdListener, PausesWithoutADescriptorInsteadOfSpinning ) {
   auto first = connected();
   loop.runOnce();
   auto peer = connected();
   NoMoreDescriptors none;
   loop.runOnce();
   EXPECT_EQ( accepted.size(), 1U );
   auto begin = std::chrono::steady_clock::now();
   loop.runOnce();
   EXPECT_GE( std::chrono::steady_clock::now() - begin, Listener::pause / 2 );
}

TEST_F( SmbusdListener, AcceptsWhoHasWaitedWhenThereIsADescriptorAgain ) {
   auto first = connected();
   loop.runOnce();
   auto peer = connected();
   {
      NoMoreDescriptors none;
      loop.runOnce();
      EXPECT_EQ( accepted.size(), 1U );
   }
   EXPECT_TRUE( runUntil( loop, [this] { return accepted.size() == 2; } ) );
}
