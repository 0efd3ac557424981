#include "smbusd/SocketFile.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>

using Smbusd::Descriptor;
using Smbusd::SocketFile;

namespace {

namespace fs = std::filesystem;

/** A directory of the test's own. */
class SmbusdSocketFile : public testing::Test {
protected:
   SmbusdSocketFile() {
      char name[] = "/tmp/smbusd-XXXXXX";
      directory = mkdtemp( name );
      path = directory / "smbus.sock";
   }

   ~SmbusdSocketFile() override { fs::remove_all( directory ); }

   /** What a server leaves behind that was killed. */
   void leaveBehind() const {
      auto socket = bound();
      ASSERT_TRUE( fs::is_socket( path ) );
   }

   Descriptor bound() const {
      Descriptor descriptor( socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 ) );
      auto address = addressOf( path );
      EXPECT_EQ( bind( descriptor.get(), reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ), 0 );
      return descriptor;
   }

   static sockaddr_un addressOf( const fs::path& path ) {
      sockaddr_un address {};
      address.sun_family = AF_UNIX;
      path.string().copy( address.sun_path, sizeof( address.sun_path ) - 1 );
      return address;
   }

   bool canConnect() const {
      Descriptor descriptor( socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 ) );
      auto address = addressOf( path );
      return connect( descriptor.get(), reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ) == 0;
   }

   static std::string refusal( const std::string& path ) {
      try {
         SocketFile file( path );
      } catch ( const std::runtime_error& error ) {
         return error.what();
      }
      return "accepted";
   }

   fs::path directory;
   fs::path path;
};

} // namespace

TEST_F( SmbusdSocketFile, ListensAtItsPath ) {
   SocketFile file( path );
   EXPECT_TRUE( canConnect() );
}

TEST_F( SmbusdSocketFile, IsForItsUserAndGroupAlone ) {
   auto mask = umask( 0 );
   SocketFile file( path );
   umask( mask );

   struct stat status {};

   ASSERT_EQ( stat( path.c_str(), &status ), 0 );
   EXPECT_EQ( status.st_mode & 07777, 0660U );
}

TEST_F( SmbusdSocketFile, LeavesTheMaskOfNewFilesAsItWas ) {
   auto mask = umask( 0027 );
   SocketFile file( path );
   EXPECT_EQ( umask( mask ), 0027U );
}

TEST_F( SmbusdSocketFile, IsGoneAtItsEnd ) {
   std::make_unique<SocketFile>( path ).reset();
   EXPECT_FALSE( fs::exists( path ) );
}

TEST_F( SmbusdSocketFile, LeavesWhatAnotherHasPutInItsPlace ) {
   auto file = std::make_unique<SocketFile>( path );
   fs::remove( path );
   SocketFile other( path );
   file.reset();
   EXPECT_TRUE( fs::exists( path ) );
}

TEST_F( SmbusdSocketFile, TakesOverWhatAServerHasLeftBehind ) {
   leaveBehind();
   SocketFile file( path );
   EXPECT_TRUE( canConnect() );
}

TEST_F( SmbusdSocketFile, IsNotTakenFromAServerThatLives ) {
   SocketFile file( path );
   EXPECT_EQ(
      refusal( path ), path.string() + ": already served; stop the other server, or choose another socket" );
   EXPECT_TRUE( canConnect() );
}

TEST_F( SmbusdSocketFile, IsNotTakenFromAServerWhoseQueueIsFull ) {
   auto busy = bound();
   ASSERT_EQ( listen( busy.get(), 0 ), 0 );
   Descriptor waiting( socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 ) );
   auto address = addressOf( path );
   ASSERT_EQ( connect( waiting.get(), reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ), 0 );
   EXPECT_EQ(
      refusal( path ), path.string() + ": already served; stop the other server, or choose another socket" );
}

TEST_F( SmbusdSocketFile, WaitsWhileAnotherServerIsAboutToPutItsOwnThere ) {
   Descriptor lock( open( directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC ) );
   ASSERT_EQ( flock( lock.get(), LOCK_EX ), 0 );
   std::optional<SocketFile> file;
   std::jthread server( [&] { file.emplace( path ); } );
   std::this_thread::sleep_for( std::chrono::milliseconds( 50 ) );
   EXPECT_FALSE( fs::exists( path ) );
   flock( lock.get(), LOCK_UN );
   server.join();
   EXPECT_TRUE( canConnect() );
}

TEST_F( SmbusdSocketFile, DoesNotReplaceAFileThatIsNoSocket ) {
   std::ofstream( path ) << "precious";
   EXPECT_EQ(
      refusal( path ), path.string() + ": exists and is no socket; remove it, or choose another socket" );
   EXPECT_EQ( fs::file_size( path ), 8U );
}

TEST_F( SmbusdSocketFile, NeedsItsDirectory ) {
   auto missing = directory / "missing";
   EXPECT_EQ( refusal( missing / "smbus.sock" ),
      ( missing / "smbus.sock" ).string() + ": directory " + missing.string() +
         ": No such file or directory; make it, or choose another socket" );
}

TEST_F( SmbusdSocketFile, HasAPathThatFitsAnAddress ) {
   auto longest = ( directory / std::string( 107 - directory.string().size() - 1, 'x' ) ).string();
   EXPECT_EQ( refusal( longest ), "accepted" );
   EXPECT_EQ( refusal( longest + "x" ),
      longest + "x: a socket's path has 1 to 107 characters; choose a shorter one" );
}

TEST_F( SmbusdSocketFile, MayHaveARelativePath ) {
   auto before = fs::current_path();
   fs::current_path( directory );
   EXPECT_EQ( refusal( "smbus.sock" ), "accepted" );
   fs::current_path( before );
}
