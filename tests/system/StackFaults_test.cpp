// A host that goes on while chips fail and the server comes and goes: one quillonctl that reads again and
// again.

#include "EmulatedBoard.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <csignal>

#include <chrono>
#include <functional>

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

/** What a JSON line says of its only object. */
struct Reading {
   std::string state;
   /** The temperature or the speed. */
   double value = 0;
   std::string status;
   std::string message;
};

Reading readingOf( const std::string& line ) {
   rapidjson::Document document;
   document.Parse( line.c_str() );
   if ( document.HasParseError() ) {
      ADD_FAILURE() << "no JSON: " << line;
      return {};
   }
   auto& object = document["objects"][0];
   Reading reading;
   reading.state = object["state"].GetString();
   for ( auto key : { "temperature_celsius", "rpm" } ) {
      if ( object.HasMember( key ) && object[key].IsNumber() ) {
         reading.value = object[key].GetDouble();
      }
   }
   if ( object["error"].IsObject() ) {
      reading.status = object["error"]["status"].GetString();
      reading.message = object["error"]["message"].GetString();
   }
   return reading;
}

bool isGood( const Reading& reading ) { return reading.state == "ok"; }

bool hasFailed( const Reading& reading ) { return reading.state == "failed"; }

/** Watches one object, with little patience. */
class StackFaults : public EmulatedBoardTest {
protected:
   StackFaults() {
      environment["QUILLON_BOARD"] = BOARDS "/selvane";
      environment["QUILLON_SMBUS_TIMEOUT_MS"] = "200";
   }

   ~StackFaults() override { stopWatch(); }

   void startWatch( const std::string& object, const std::string& interval = "0.02" ) {
      watch.reset(
         new Process( { QUILLONCTL, "--json", "status", object, "--interval", interval }, environment ) );
   }

   void stopWatch() {
      if ( watch ) {
         watch->send( SIGINT );
         EXPECT_EQ( watch->wait().signal, 0 );
         watch.reset();
      }
   }

   /** The next reading that fits; fails the test when none of 200 does. */
   Reading await( const std::function<bool( const Reading& )>& fits ) {
      for ( int i = 0; i < 200; ++i ) {
         auto line = watch->readLine();
         if ( !line ) {
            break;
         }
         auto reading = readingOf( *line );
         if ( fits( reading ) ) {
            return reading;
         }
      }
      ADD_FAILURE() << "no such reading came";
      return {};
   }

   void stopServer( int signal ) {
      server->send( signal );
      server->wait();
   }

   std::unique_ptr<Process> watch;
};

} // namespace

TEST_F( StackFaults, AreToldByStatusAndWordsWhileTheyLast ) {
   const struct {
      const char* fault;
      const char* status;
      const char* words;
   } rows[] = {
      { "nack", "QL_STATUS_FAILED", "request 1: i2c-3 0x48 reg 0x00: no acknowledge" },
      { "busy", "QL_STATUS_FAILED", "request 1: i2c-3 0x48 reg 0x00: bus busy" },
      { "arbitration", "QL_STATUS_FAILED", "request 1: i2c-3 0x48 reg 0x00: arbitration lost" },
      { "hang 10ms", "QL_STATUS_FAILED", "request 1: i2c-3 0x48 reg 0x00: timed out" },
      { "slow 600ms 1", "QL_STATUS_IO_ERROR", "Connection timed out" },
   };

   startWatch( "inlet" );
   for ( auto& row : rows ) {
      SCOPED_TRACE( row.fault );
      await( isGood );
      emu( { "fault", "inlet", row.fault } );
      auto failed = await( hasFailed );
      EXPECT_EQ( failed.status, row.status );
      EXPECT_THAT( failed.message, testing::EndsWith( row.words ) );
      emu( { "fault", "inlet", "clear" } );
   }
   // The answer that came too late belongs to a connection that is gone.
   EXPECT_EQ( await( isGood ).value, 24.5 );
}

TEST_F( StackFaults, ThatSpoilABitAreReadAsItIs ) {
   const struct {
      const char* object;
      const char* chip;
      const char* fault;
      double before;
      double after;
   } rows[] = {
      // Bit 7 of the first byte is the sign: 0x1880 becomes 0x9880.
      { "inlet", "inlet", "corrupt", 24.5, -103.5 },
      // Bit 0 of the last byte is none of the temperature's.
      { "inlet", "inlet", "checksum", 24.5, 24.5 },
      // The tachometer's count of 983 is read as 0x1E and 0xB8, five bits of the second. 0x9E and 0x38 make
      // 5063, 0x1F and 0xB9 make 1015; the speed is 7864320 by the count.
      { "fan1", "fans", "corrupt", 8000, 1553 },
      { "fan1", "fans", "checksum", 8000, 7748 },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( std::string( row.object ) + " " + row.fault );
      startWatch( row.object );
      EXPECT_EQ( await( isGood ).value, row.before );
      emu( { "fault", row.chip, row.fault } );
      await( [&]( auto& reading ) { return reading.value == row.after; } );
      emu( { "fault", row.chip, "clear" } );
      EXPECT_EQ( await( [&]( auto& reading ) { return reading.value == row.before; } ).value, row.before );
      stopWatch();
   }
}

TEST_F( StackFaults, OfAServerThatWasRestartedMeanwhileAreNone ) {
   startWatch( "inlet", "3" );
   await( isGood );
   stopServer( SIGTERM );
   startServer();
   EXPECT_EQ( await( []( auto& ) { return true; } ).state, "ok" );
}

TEST_F( StackFaults, OfAServerThatHasGoneAreToldAsAtTheStart ) {
   auto sentence =
      fmt::format( "no SMBus server at {}: No such file or directory; start quillon-smbusd, name "
                   "its socket with --socket, or use --sim",
         ( folder / "smbus.sock" ).string() );
   auto error =
      fmt::format( R"("error":{{"status":"QL_STATUS_IO_ERROR","code":4,"message":"{}"}})", sentence );
   for ( auto command : { "status", "watch" } ) {
      SCOPED_TRACE( command );
      startServer();
      watch.reset(
         new Process( { QUILLONCTL, "--json", command, "inlet", "--interval", "0.02" }, environment ) );
      watch->readUntil( R"("state":"ok")" );
      stopServer( SIGTERM );
      watch->readUntil( error );
      startServer();
      watch->readUntil( R"("state":"ok")" );
      watch->send( SIGINT );
      EXPECT_THAT( watch->wait().err, testing::HasSubstr( "quillonctl: inlet: " + sentence + "\n" ) );
      watch.reset();
   }
}

TEST_F( StackFaults, OfAServerThatComesAndGoesCostNoDescriptor ) {
   startWatch( "inlet" );
   await( isGood );
   auto before = watch->descriptors();
   for ( auto signal : { SIGTERM, SIGKILL, SIGTERM, SIGKILL, SIGTERM, SIGKILL } ) {
      stopServer( signal );
      for ( int i = 0; i < 5; ++i ) {
         EXPECT_EQ( await( hasFailed ).status, "QL_STATUS_IO_ERROR" );
      }
      startServer();
      EXPECT_EQ( await( isGood ).value, 24.5 );
   }
   EXPECT_EQ( watch->descriptors(), before );
}

TEST_F( StackFaults, OfAServerThatStandsStillTakeNoLongerThanTheLimit ) {
   startWatch( "inlet" );
   await( isGood );
   auto before = watch->descriptors();
   server->send( SIGSTOP );
   await( hasFailed );
   for ( int i = 0; i < 5; ++i ) {
      auto start = Clock::now();
      auto failed = await( hasFailed );
      EXPECT_LT( Clock::now() - start, 2s );
      EXPECT_EQ( failed.status, "QL_STATUS_IO_ERROR" );
      EXPECT_THAT( failed.message, testing::HasSubstr( "Connection timed out" ) );
   }
   server->send( SIGCONT );
   EXPECT_EQ( await( isGood ).value, 24.5 );
   EXPECT_EQ( watch->descriptors(), before );
}
