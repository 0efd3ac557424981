#include "Server.h"

#include <csignal>

#include <unistd.h>

namespace {

const Process::Environment plain { { "JOURNAL_STREAM", std::nullopt },
   { "QUILLON_SMBUS_SOCKET", std::nullopt } };

Result run( Process::Arguments arguments, const Process::Environment& environment = plain ) {
   arguments.emplace( arguments.begin(), QUILLON_SMBUSD );
   return Process( arguments, environment ).wait();
}

struct Row {
   Process::Arguments arguments;
   const char* message;
};

const Row usageErrors[] = {
   { {}, "give --emulate DIR or --i2c MAP.json; see quillon-smbusd --help" },
   { { "--emulate", "a", "--i2c", "b" }, "--emulate excludes --i2c; see quillon-smbusd --help" },
   { { "--emulate" }, "--emulate: 1 required DIR missing; see quillon-smbusd --help" },
   { { "--emulate", "" }, "--emulate: must not be empty; see quillon-smbusd --help" },
   { { "--i2c", "a", "--control", "b" }, "--control requires --emulate; see quillon-smbusd --help" },
   { { "--i2c", "a", "--socket", "" }, "--socket: must not be empty; see quillon-smbusd --help" },
   { { "--i2c", "a", "--log-level", "loud" },
      "--log-level: loud not in {debug,error,info,warning}; see quillon-smbusd --help" },
   { { "--i2c", "a", "b" }, "The following argument was not expected: b; see quillon-smbusd --help" },
   { { "--bogus" }, "The following argument was not expected: --bogus; see quillon-smbusd --help" },
   { { "--emulate", "/nonexistent" }, "/nonexistent/emulator.json: No such file or directory; name a folder "
                                      "with a readable emulator.json with "
                                      "--emulate" },
   { { "--i2c", "/nonexistent" },
      "/nonexistent: No such file or directory; name a readable map of adapters with --i2c" },
};

} // namespace

TEST( SmbusServerCommandLine, ThatIsWrongIsRefusedInOneLine ) {
   for ( auto& row : usageErrors ) {
      auto result = run( row.arguments );
      EXPECT_EQ( result.err, std::string( "quillon-smbusd: " ) + row.message + "\n" );
      EXPECT_EQ( result.out, "" );
      EXPECT_EQ( result.exitStatus, 2 ) << row.message;
   }
}

TEST( SmbusServerCommandLine, NamesAWrongPlaceInADocument ) {
   Directory directory;
   auto board = directory.write( "emulator.json", "{ \"chips\": 3 }" );
   auto result = run( { "--emulate", directory / "" } );
   EXPECT_TRUE(
      result.err.starts_with( "quillon-smbusd: " + ( directory / "emulator.json" ) + ": /chips: " ) )
      << result.err;
   EXPECT_EQ( result.exitStatus, 2 );

   auto map = directory.write( "map.json", "{ \"busses\": 3 }" );
   result = run( { "--i2c", map } );
   EXPECT_EQ( result.err, "quillon-smbusd: " + map + ": /busses: must be an array\n" );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST( SmbusServerCommandLine, WithASocketThatCannotBeMadeFails ) {
   Directory directory;
   directory.write( "emulator.json", Server::board );
   auto socket = directory / "missing/smbus.sock";
   auto result = run( { "--emulate", directory / "", "--socket", socket } );
   EXPECT_EQ( result.err, "quillon-smbusd: " + socket + ": directory " + ( directory / "missing" ) +
                             ": No such file or directory; make it, or choose another socket\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST( SmbusServerCommandLine, WithOneSocketForBothPurposesFails ) {
   Directory directory;
   directory.write( "emulator.json", Server::board );
   auto socket = directory / "smbus.sock";
   auto result = run( { "--emulate", directory / "", "--socket", socket, "--control", socket } );
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_FALSE( std::filesystem::exists( socket ) );
}

TEST( SmbusServerCommandLine, TakesTheSocketFromTheEnvironment ) {
   Directory directory;
   directory.write( "emulator.json", Server::board );
   Manager manager( directory / "notify.sock" );
   auto socket = directory / "smbus.sock";
   Process process( { QUILLON_SMBUSD, "--emulate", directory / "" },
      { { "NOTIFY_SOCKET", manager.path() }, { "QUILLON_SMBUS_SOCKET", socket } } );
   EXPECT_EQ( manager.next(), "READY=1\nSTATUS=Serving " + socket );
   EXPECT_FALSE( Client( socket ).ask( reading( 3, 0x48, 0, 2 ) ).failed() );
}

TEST( SmbusServerCommandLine, LogsNoMoreThanItsLevel ) {
   Directory directory;
   directory.write( "emulator.json", Server::board );
   Manager manager( directory / "notify.sock" );
   Process process( { QUILLON_SMBUSD, "--emulate", directory / "", "--socket", directory / "smbus.sock",
                       "--log-level", "warning" },
      environmentWith( manager ) );
   ASSERT_TRUE( manager.next().starts_with( "READY=1" ) );
   Client client( directory / "smbus.sock" );
   client.send( std::string( "\0\0\0\x01\xFF", 5 ) );
   EXPECT_TRUE( client.isDropped() );
   process.send( SIGTERM );
   EXPECT_EQ( process.wait().err, "quillon-smbusd: client pid " + std::to_string( getpid() ) +
                                     ": sent a message that can't be parsed; connection dropped\n" );
}

TEST( SmbusServerCommandLine, MarksItsLogForTheJournal ) {
   auto result = run( { "--i2c", "/nonexistent" }, { { "JOURNAL_STREAM", "8:1" } } );
   EXPECT_EQ( result.err,
      "<3>quillon-smbusd: /nonexistent: No such file or directory; name a readable map of "
      "adapters with --i2c\n" );
}

TEST( SmbusServerCommandLine, TellsTheVersion ) {
   auto result = run( { "--version" } );
   EXPECT_EQ( result.out, "quillon-smbusd 0.1.0\n" );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST( SmbusServerCommandLine, TellsTheUsage ) {
   auto result = run( { "--help" } );
   EXPECT_THAT( result.out, testing::HasSubstr( "Usage: quillon-smbusd" ) );
   EXPECT_EQ( result.exitStatus, 0 );
}

TEST( SmbusServerCommandLine, FailsWhereNobodyTakesWhatItTells ) {
   for ( auto option : { "--help", "--version" } ) {
      auto result =
         Process( { "/bin/sh", "-c", "exec \"$0\" \"$1\" >/dev/full", QUILLON_SMBUSD, option }, plain )
            .wait();
      EXPECT_EQ( result.err, "quillon-smbusd: cannot write the output: No space left on device\n" ) << option;
      EXPECT_EQ( result.exitStatus, 1 ) << option;
   }
}
