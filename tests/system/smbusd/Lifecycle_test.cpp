#include "Server.h"

#include <fmt/format.h>

#include <csignal>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

namespace fs = std::filesystem;

/** Leaves a socket that nobody serves. */
void leaveSocket( const std::string& path ) {
   auto fd = socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 );
   sockaddr_un address {};
   address.sun_family = AF_UNIX;
   path.copy( address.sun_path, sizeof( address.sun_path ) - 1 );
   ASSERT_EQ( bind( fd, reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ), 0 );
   close( fd );
}

void expectCleanEnd( int signal, const char* log ) {
   Server server;
   auto idle = server.client();
   auto begin = std::chrono::steady_clock::now();
   auto result = server.stop( signal );
   EXPECT_LT( std::chrono::steady_clock::now() - begin, 1s );
   EXPECT_EQ( result.exitStatus, 0 );
   EXPECT_EQ(
      result.err, "quillon-smbusd: serving " + server.socket + "\nquillon-smbusd: " + log + ", ending\n" );
   EXPECT_FALSE( fs::exists( server.socket ) );
   EXPECT_FALSE( fs::exists( server.controlSocket ) );
   EXPECT_TRUE( idle.isDropped() );
}

} // namespace

TEST( SmbusServer, EndsCleanlyOnSigterm ) { expectCleanEnd( SIGTERM, "SIGTERM" ); }

TEST( SmbusServer, EndsCleanlyOnSigint ) { expectCleanEnd( SIGINT, "SIGINT" ); }

TEST( SmbusServer, EndsInTheMiddleOfATransaction ) {
   Server server;
   EXPECT_EQ( server.control( "fault 3 hang 10s" ), "ok" );
   auto client = server.client();
   client.send( frame( reading( 3, 0x48, 0, 2 ) ) );
   EXPECT_FALSE( client.hasAnswer( 50ms ) );
   auto begin = std::chrono::steady_clock::now();
   EXPECT_EQ( server.stop( SIGTERM ).exitStatus, 0 );
   EXPECT_LT( std::chrono::steady_clock::now() - begin, 1s );
   EXPECT_TRUE( client.isDropped() );
}

TEST( SmbusServer, TellsTheServiceManagerWhenItServesAndWhenItEnds ) {
   Directory directory;
   directory.write( "emulator.json", Server::board );
   Manager manager( directory / "notify.sock" );
   auto socket = directory / "smbus.sock";
   Process process(
      { QUILLON_SMBUSD, "--emulate", directory / "", "--socket", socket }, environmentWith( manager ) );
   EXPECT_EQ( manager.next(), "READY=1\nSTATUS=Serving " + socket );
   EXPECT_FALSE( Client( socket ).ask( reading( 3, 0x48, 0, 2 ) ).failed() );
   process.send( SIGTERM );
   EXPECT_EQ( manager.next(), "STOPPING=1" );
   EXPECT_EQ( process.wait().exitStatus, 0 );
}

TEST( SmbusServer, ServesItsUserAndGroupAlone ) {
   Server server;
   for ( auto& path : { server.socket, server.controlSocket } ) {
      struct stat file {};

      ASSERT_EQ( stat( path.c_str(), &file ), 0 );
      EXPECT_EQ( file.st_mode & 07777, 0660U ) << path;
   }
}

TEST( SmbusServer, TakesOverTheSocketOfOneThatWasKilled ) {
   Server server;
   EXPECT_EQ( server.stop( SIGKILL ).signal, SIGKILL );
   ASSERT_TRUE( fs::is_socket( server.socket ) );
   Manager manager( server.directory / "notify2.sock" );
   Process next( { QUILLON_SMBUSD, "--emulate", server.directory / "", "--socket", server.socket, "--control",
                    server.controlSocket },
      environmentWith( manager ) );
   ASSERT_TRUE( manager.next().starts_with( "READY=1" ) );
   EXPECT_FALSE( server.client().ask( reading( 3, 0x48, 0, 2 ) ).failed() );
   next.send( SIGTERM );
   EXPECT_EQ( next.wait().exitStatus, 0 );
   EXPECT_FALSE( fs::exists( server.socket ) );
}

TEST( SmbusServer, DoesNotTakeTheSocketOfOneThatServes ) {
   Server server;
   Process second( { QUILLON_SMBUSD, "--emulate", server.directory / "", "--socket", server.socket },
      { { "JOURNAL_STREAM", std::nullopt } } );
   auto result = second.wait();
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_EQ( result.err, "quillon-smbusd: " + server.socket +
                             ": already served; stop the other server, or choose another socket\n" );
   EXPECT_FALSE( server.client().ask( reading( 3, 0x48, 0, 2 ) ).failed() );
}

TEST( SmbusServer, IsOneEvenWhenManyStartTogether ) {
   Directory directory;
   directory.write( "emulator.json", Server::board );
   auto socket = directory / "smbus.sock";
   leaveSocket( socket );
   Manager manager( directory / "notify.sock" );
   std::vector<std::unique_ptr<Process>> servers;
   for ( int i = 0; i < 8; ++i ) {
      servers.push_back( std::make_unique<Process>(
         Process::Arguments { QUILLON_SMBUSD, "--emulate", directory / "", "--socket", socket },
         environmentWith( manager ) ) );
   }
   EXPECT_TRUE( manager.next().starts_with( "READY=1" ) );
   EXPECT_EQ( manager.next( 1000ms ), "" );
   kill( Client( socket ).server(), SIGTERM );
   int served = 0;
   for ( auto& server : servers ) {
      served += server->wait().exitStatus == 0;
   }
   EXPECT_EQ( served, 1 );
   EXPECT_FALSE( fs::exists( socket ) );
}

TEST( SmbusServer, TakesNoSocketForAStandardStreamThatIsClosed ) {
   Server server( Server::board, { "/bin/sh", "-c", "exec \"$0\" \"$@\" <&- >&- 2>&-" } );
   auto client = server.client();

   for ( auto stream : { "0", "1", "2" } ) {
      EXPECT_EQ( fs::read_symlink( fmt::format( "/proc/{}/fd/{}", client.server(), stream ) ), "/dev/null" );
   }
   EXPECT_FALSE( client.ask( reading( 3, 0x48, 0, 2 ) ).failed() );
}

TEST( SmbusServer, SurvivesTheEndOfItsLog ) {
   Server server( Server::board, { "/bin/sh", "-c", "exec \"$0\" \"$@\" 2>&1 | true" } );
   auto client = server.client();
   for ( int i = 0; i < 3; ++i ) {
      auto misuser = server.client();
      misuser.send( "nonsense" );
      EXPECT_TRUE( misuser.isDropped() );
   }
   EXPECT_FALSE( client.ask( reading( 3, 0x48, 0, 2 ) ).failed() );
   kill( client.server(), SIGTERM );
   EXPECT_TRUE( client.isDropped() );
}
