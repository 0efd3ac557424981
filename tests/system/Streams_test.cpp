// Who starts the program may have closed a standard stream, or have nothing that takes what is written.

#include "EmulatedBoard.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <csignal>

using ::testing::HasSubstr;

namespace {

class Streams : public EmulatedBoardTest {
protected:
   /** quillonctl with streams redirected as a shell writes it. */
   Result runWith( const std::string& redirection, const Process::Arguments& arguments ) const {
      Process::Arguments command = { "/bin/sh", "-c", "exec \"$0\" \"$@\" " + redirection, QUILLONCTL };
      command.insert( command.end(), arguments.begin(), arguments.end() );
      return Process( command, environment ).wait();
   }
};

struct Row {
   const char* name;
   Process::Arguments arguments;
   int exitStatus;
};

} // namespace

TEST_F( Streams, ThatTakeNoErrorsLeaveOutputAndExitStatusAsTheyAre ) {
   const Row rows[] = {
      { "a wrong usage", { "status", "nosuch" }, 2 },
      { "an unreachable server", { "--socket", ( folder / "nobody.sock" ).string(), "status", "inlet" }, 1 },
      { "trace lines", { "--sim", "--trace", "6", "status", "inlet" }, 0 },
   };
   for ( auto& row : rows ) {
      for ( auto json : { false, true } ) {
         auto arguments = row.arguments;
         if ( json ) {
            arguments.insert( arguments.begin(), "--json" );
         }
         auto undisturbed = run( arguments );
         EXPECT_NE( undisturbed.err, "" ) << row.name;
         for ( auto redirection : { "2>/dev/full", "2>&-" } ) {
            auto name = fmt::format( "{} {} {}", row.name, redirection, json ? "--json" : "" );

            auto result = runWith( redirection, arguments );

            EXPECT_EQ( result.signal, 0 ) << name;
            EXPECT_EQ( result.exitStatus, row.exitStatus ) << name;
            EXPECT_EQ( result.out, undisturbed.out ) << name;
            EXPECT_EQ( rapidjson::Document().Parse( result.out.c_str() ).HasParseError(), !json ) << name;
         }
      }
   }
}

TEST_F( Streams, ThatAreClosedAreNoConnectionsToTheServer ) {
   auto result = runWith( "<&- >&-", { "status", "inlet" } );

   EXPECT_EQ( result.err, "quillonctl: cannot write the output: Bad file descriptor\n" );
   EXPECT_EQ( result.exitStatus, 1 );
   // Of what it cannot parse it says so.
   server->send( SIGTERM );
   EXPECT_THAT( server->wait().err, ::testing::Not( HasSubstr( "connection dropped" ) ) );
}

TEST_F( Streams, ThatTakeNoOutputAreToldOfHelpAndVersionToo ) {
   for ( auto& words : { Process::Arguments { "--help" }, { "status", "--help" }, { "--version" } } ) {
      auto result = runWith( ">/dev/full", words );
      EXPECT_EQ( result.err, "quillonctl: cannot write the output: No space left on device\n" )
         << words.back();
      EXPECT_EQ( result.exitStatus, 1 ) << words.back();

      result = runWith( ">&-", words );
      EXPECT_EQ( result.err, "quillonctl: cannot write the output: Bad file descriptor\n" ) << words.back();
      EXPECT_EQ( result.exitStatus, 1 ) << words.back();
   }
}
