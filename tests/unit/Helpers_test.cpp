#include "Drivers/Helpers.h"

#include "Alarms.h"
#include "Assertion.h"
#include "Components/Gpio.h"
#include "Drivers/Dummy.h"
#include "FreshLibrary.h"
#include "ScriptedHam.h"
#include "TemporaryDirectory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

#include <sys/resource.h>

namespace {

using Drivers::FormatFdl;
using Host::TraceLine;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

using Helpers = FreshLibrary;
using HelpersDeathTest = FreshLibrary;

TEST_F( Helpers, FillEveryPlaceholderOfAKeyAtOnce ) {
   FormatFdl fdl( "a = {serial}, b = {serial}, {model}{serial}" );
   fdl.start();
   EXPECT_TRUE( fdl.set( "serial", "S1" ) );
   EXPECT_TRUE( fdl.set( "model", "{M}" ) );
   EXPECT_EQ( fdl.str(), "a = S1, b = S1, {M}S1" );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 5, "FormatFdl::set( 'serial', 'S1' )" },
                                 TraceLine { 5, "FormatFdl::set( 'model', '{M}' )" } ) );
}

TEST_F( Helpers, KeepAPlaceholderThatIsNotFilled ) {
   FormatFdl fdl( "{serial}" );
   fdl.start();
   EXPECT_EQ( fdl.str(), "{serial}" );
}

TEST_F( Helpers, BeginATemplateAnewWithEachStart ) {
   FormatFdl fdl( "{serial}" );
   fdl.start();
   fdl.set( "serial", "one" );
   fdl.start();
   fdl.set( "serial", "two" );
   EXPECT_STREQ( fdl.charPtr(), "two" );
}

constexpr char setNeedsStart[] = "active_ && \"FormatFdl: Must call start() before set(...)\"";
constexpr char strNeedsStart[] = "active_ && \"FormatFdl: Must call start() before str()\"";
constexpr char charPtrNeedsStart[] = "active_ && \"FormatFdl: Must call start() before charPtr()\"";

TEST_F( HelpersDeathTest, FillATemplateOnlyAfterStart ) {
   FormatFdl fdl( "{serial}" );
   Host::echoTraces = true;
   EXPECT_DEATH( fdl.set( "serial", "S" ),
      AllOf( assertionFailed( setNeedsStart ), HasSubstr( "5: FormatFdl::set( 'serial', 'S' )" ) ) );
   EXPECT_DEATH( fdl.str(), assertionFailed( strNeedsStart ) );
   EXPECT_DEATH( fdl.charPtr(), assertionFailed( charPtrNeedsStart ) );
}

TEST_F( HelpersDeathTest, GiveTheTextOnceForEachStart ) {
   FormatFdl fdl( "{serial}" );
   fdl.start();
   fdl.str();
   EXPECT_DEATH( fdl.str(), assertionFailed( strNeedsStart ) );
   EXPECT_DEATH( fdl.charPtr(), assertionFailed( charPtrNeedsStart ) );
   EXPECT_DEATH( fdl.set( "serial", "S" ), assertionFailed( setNeedsStart ) );
   fdl.start();
   fdl.charPtr();
   EXPECT_DEATH( fdl.charPtr(), assertionFailed( charPtrNeedsStart ) );
   EXPECT_DEATH( fdl.str(), assertionFailed( strNeedsStart ) );
}

TEST_F( HelpersDeathTest, KnowOnlyTheKeysOfTheirTemplate ) {
   Host::echoTraces = true;
   auto complaint = AllOf( assertionFailed( "0 && \"Invalid key in FormatFdl::set\"" ),
      HasSubstr( "0: Error: FormatFdl::set -- invalid key '{serial}'" ) );
   FormatFdl other( "{model}" );
   other.start();
   EXPECT_DEATH( other.set( "serial", "S" ), complaint );
   FormatFdl fdl( "{serial}" );
   fdl.start();
   fdl.set( "serial", "S" );
   EXPECT_DEATH( fdl.set( "serial", "S" ), complaint ) << "a key is set once";
}

TEST_F( Helpers, SumBytesToZero ) {
   const std::pair<std::string, bool> rows[] = { { "", true }, { std::string( 1, '\0' ), true },
      { "\x80\x80", true }, { "\x01", false }, { "\x01\xFF", true }, { "\x7F\x80", false } };
   for ( auto& [bytes, expected] : rows ) {
      auto data = bytes;
      EXPECT_EQ( Drivers::zeroChecksum( data ), expected ) << testing::PrintToString( bytes );
   }
}

TEST_F( Helpers, TrimBlanksAndTabsAndNothingElse ) {
   const std::pair<const char*, const char*> rows[] = { { " \ta\n", "a\n" }, { "a b", "a b" }, { "", "" },
      { " \t ", "" }, { "\t a\t b \t", "a\t b" }, { "\n ", "\n" } };
   for ( auto& [text, expected] : rows ) {
      EXPECT_EQ( Drivers::trim( text ), expected );
   }
}

void load( const char* text ) { ASSERT_EQ( Topology::loadTopology( text ), QL_STATUS_OK ); }

constexpr char withCpld[] = R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5, "devices": [
   { "did": 20, "label": "CpuCpld", "driver": null, "provideHam": 0, "address": { "address": 48 } },
   { "did": 21, "label": "Named", "driver": "GpioDriver", "provideHam": 0, "address": { "address": 48 } },
   { "did": 22, "label": "Bare" } ] } ])";

TEST_F( Helpers, MakeTheDeviceOfALabelOnceWithTheFirstDriverName ) {
   load( withCpld );
   auto device = Drivers::getHardwareDeviceByLabel( "CpuCpld", "Dummy" );
   ASSERT_TRUE( device );
   EXPECT_EQ( Topology::getDeviceByLabel( "CpuCpld" )->args->driver, "Dummy" );
   EXPECT_EQ( Drivers::getHardwareDeviceByLabel( "CpuCpld", "PCT2075" ), device );
   EXPECT_EQ( Topology::getDeviceByLabel( "CpuCpld" )->args->driver, "Dummy" );
}

TEST_F( Helpers, KeepADriverNameThatTheTopologyGives ) {
   load( withCpld );
   Drivers::getHardwareDeviceByLabel( "Named", "PCT2075" );
   EXPECT_EQ( Topology::getDeviceByLabel( "Named" )->args->driver, "GpioDriver" );
}

TEST_F( HelpersDeathTest, NeedALabelThatIsADevicesAndADriverThatExists ) {
   load( withCpld );
   Host::echoTraces = true;
   EXPECT_DEATH( Drivers::getHardwareDeviceByLabel( "Nowhere", "Dummy" ),
      AllOf( assertionFailed( "device" ), HasSubstr( "0: Unable to locate device Nowhere" ) ) );
   EXPECT_DEATH( Drivers::getHardwareDeviceByLabel( "CpuCpld", "NoDriver" ), assertionFailed( "dev" ) );
   EXPECT_DEATH( Drivers::getHardwareDeviceByLabel( "Bare", "Dummy" ), assertionFailed( "device->args" ) );
}

TEST_F( Helpers, MakeARegisterBitOfADeviceAndOfALabel ) {
   Drivers::Dummy device;
   std::unique_ptr<Component::LogicalDevice::Gpio> gpio(
      Drivers::getRegGpioForDevice( &device, 4294967, 6 ) );
   auto bit = dynamic_cast<Component::LogicalDevice::RegGpio*>( gpio.get() );
   ASSERT_TRUE( bit );
   EXPECT_EQ( bit->device, &device );
   EXPECT_EQ( bit->reg, 4294967 );
   EXPECT_EQ( bit->bitpos, 6 );
   load( withCpld );
   std::unique_ptr<Component::LogicalDevice::Gpio> other( Drivers::getRegGpioForDevice( "CpuCpld", 6, 1 ) );
   bit = dynamic_cast<Component::LogicalDevice::RegGpio*>( other.get() );
   ASSERT_TRUE( bit );
   EXPECT_EQ( bit->reg, 6 );
   EXPECT_EQ( bit->bitpos, 1 );
   EXPECT_EQ( bit->device, Drivers::getHardwareDeviceByLabel( "CpuCpld", "Other" ) );
   EXPECT_EQ( Topology::getDeviceByLabel( "CpuCpld" )->args->driver, "Dummy" );
}

TEST_F( Helpers, ThrowForARegisterOrBitBeyondWhatANumberHolds ) {
   Drivers::Dummy device;
   EXPECT_THROW( Drivers::getRegGpioForDevice( &device, 0x80000000, 1 ), std::out_of_range );
   EXPECT_THROW( Drivers::getRegGpioForDevice( &device, 1, 0x80000000 ), std::out_of_range );
}

class NoGpioDevice : public Component::HardwareDevice {
   Component::LogicalDevice::Gpio* newGpio( const Drivers::DriverArgs& ) override { return nullptr; }
};

TEST_F( HelpersDeathTest, NeedADeviceThatHasRegisterBits ) {
   NoGpioDevice device;
   EXPECT_DEATH( Drivers::getRegGpioForDevice( &device, 1, 1 ), assertionFailed( "gpio" ) );
}

struct CommandRow {
   const char* command;
   ql_status status;
   const char* output;
};

TEST_F( Helpers, RunACommandAndTellHowItEnded ) {
   const CommandRow rows[] = {
      { "echo one; echo two", QL_STATUS_OK, "one\ntwo\n" },
      { "true", QL_STATUS_OK, "" },
      { "false", QL_STATUS_FAILED, "" },
      { "printf part; exit 3", QL_STATUS_FAILED, "part" },
      { "sh -c 'exit 124'", QL_STATUS_IO_ERROR, "" },
      { "sh -c 'kill -9 $$'", QL_STATUS_FAILED, "" },
      { "no-such-command-anywhere 2>/dev/null", QL_STATUS_FAILED, "" },
   };
   for ( auto& row : rows ) {
      std::string output = "before";
      EXPECT_EQ( Drivers::runCmd( row.command, output, 5 ), row.status ) << row.command;
      EXPECT_EQ( output, row.output ) << row.command;
   }
}

TEST_F( Helpers, EndACommandWhenItsTimeIsUpAndKeepWhatItSaid ) {
   std::string output;
   EXPECT_EQ( Drivers::runCmd( "sh -c 'echo early; exec sleep 20'", output, 1 ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( output, "early\n" );
}

TEST_F( Helpers, TakeLongLinesWhole ) {
   std::string output;
   EXPECT_EQ( Drivers::runCmd( "seq -s, 1 200", output, 5 ), QL_STATUS_OK );
   EXPECT_GT( output.size(), 600U );
   EXPECT_TRUE( output.ends_with( ",199,200\n" ) );
}

TEST_F( Helpers, TakeACommandsOutputInPiecesOf127Characters ) {
   // The zero byte cuts off the first piece; the second is what is left of the line.
   std::string output;
   EXPECT_EQ( Drivers::runCmd( "printf 'x\\0%0200d\\n' 0", output, 5 ), QL_STATUS_OK );
   EXPECT_EQ( output, "x" + std::string( 75, '0' ) + "\n" );
}

TEST_F( Helpers, PutTheTimeLimitInFrontOfTheCommand ) {
   TemporaryDirectory directory;
   std::ofstream( directory.path() / "timeout" ) << "#!/bin/sh\necho \"$@\"\n";
   std::filesystem::permissions( directory.path() / "timeout", std::filesystem::perms::owner_all );
   std::string before = getenv( "PATH" );
   setenv( "PATH", ( directory.path().string() + ":" + before ).c_str(), 1 );
   std::string output;
   auto status = Drivers::runCmd( "ls -l", output, 5 );
   setenv( "PATH", before.c_str(), 1 );
   EXPECT_EQ( status, QL_STATUS_OK );
   EXPECT_EQ( output, "5s ls -l\n" );
}

TEST_F( Helpers, HearACommandOutThroughTheHostsSignals ) {
   Alarms alarms( std::chrono::milliseconds( 20 ) );
   std::string output;
   EXPECT_EQ( Drivers::runCmd( "sh -c 'echo one; sleep 0.3; echo two'", output, 5 ), QL_STATUS_OK );
   EXPECT_EQ( output, "one\ntwo\n" );
   EXPECT_GT( Alarms::count, 0 );
}

TEST_F( Helpers, DropWhatStandsBehindAZeroByteOfALine ) {
   std::string output;
   EXPECT_EQ( Drivers::runCmd( "printf 'one\\0two\\nthree'", output, 5 ), QL_STATUS_OK );
   EXPECT_EQ( output, "onethree" );
}

TEST_F( Helpers, FailWhenNoShellCanBeStarted ) {
   rlimit before;
   getrlimit( RLIMIT_NOFILE, &before );
   rlimit none = before;
   none.rlim_cur = 0;
   setrlimit( RLIMIT_NOFILE, &none );
   std::string output = "before";
   auto status = Drivers::runCmd( "echo one", output, 5 );
   setrlimit( RLIMIT_NOFILE, &before );
   EXPECT_EQ( status, QL_STATUS_FAILED );
   EXPECT_EQ( output, "" );
}

TEST_F( Helpers, RunNothingForANullCommand ) {
   std::string output;
   EXPECT_EQ( Drivers::runCmd( nullptr, output, 1 ), QL_STATUS_FAILED ) << "timeout itself complains";
}

TEST_F( Helpers, AddADriverArgumentToAText ) {
   const std::pair<const char*, const char*> rows[] = {
      { R"({"a":1,"driverArgs":{"x":"y"}})", R"({"a":1,"driverArgs":{"x":"y","k":"v"}})" },
      { R"({ "driverArgs" : { "k" : "old" } , "b" : [ 1.50, true ] })",
         R"({"driverArgs":{"k":"old","k":"v"},"b":[1.5,true]})" },
      { R"({"driverArgs":{}})", R"({"driverArgs":{"k":"v"}})" },
   };
   for ( auto& [text, expected] : rows ) {
      char* result = nullptr;
      EXPECT_TRUE( Drivers::insertDriverArg( text, &result, "k", "v" ) );
      EXPECT_STREQ( result, expected );
      free( result );
   }
}

TEST_F( Helpers, TakeNoTextBehindTheDocument ) {
   char* result = nullptr;
   EXPECT_FALSE( Drivers::insertDriverArg( R"({"driverArgs":{}} x)", &result, "k", "v" ) );
   EXPECT_EQ( result, nullptr );
}

TEST_F( Helpers, ReportATextThatIsNoJsonAndLeaveTheResultAlone ) {
   char untouched = 0;
   char* result = &untouched;
   EXPECT_FALSE( Drivers::insertDriverArg( "{", &result, "k", "v" ) );
   EXPECT_EQ( result, &untouched );
   EXPECT_THAT( Host::traces,
      ElementsAre(
         TraceLine { 0, "failed to parse psu devArgs: Missing a name for object member. offset 1" } ) );
}

TEST_F( HelpersDeathTest, NeedAnObjectWithDriverArgs ) {
   char* result = nullptr;
   EXPECT_DEATH( Drivers::insertDriverArg( "[]", &result, "k", "v" ), assertionFailed( "IsObject()" ) );
   EXPECT_DEATH( Drivers::insertDriverArg( "{}", &result, "k", "v" ),
      assertionFailed( "document.HasMember( \"driverArgs\" )" ) );
   EXPECT_DEATH(
      Drivers::insertDriverArg( "{\"driverArgs\":1}", &result, "k", "v" ), assertionFailed( "IsObject()" ) );
}

} // namespace
