#include "Assertion.h"
#include "Components/HardwareDevice.h"
#include "FreshLibrary.h"
#include "MockDevices.h"
#include "ScriptedHam.h"
#include "TestRow.h"

#include <fmt/format.h>

#include <gmock/gmock.h>

using Component::DeviceBase;
using Component::HardwareDevice;
using Component::MultiDevice;
using Drivers::DriverArgs;
using Host::TraceLine;
using testing::ElementsAre;
using testing::Pair;
using Utils::ExpectedVal;

namespace {

/** A device of the driver "Test". It writes into the log of its Ham. */
class TestDevice : public HardwareDevice {
public:
   void init() override {
      isCachedInInit = devices.contains( 7 );
      if ( auto scripted = dynamic_cast<ScriptedHam*>( ham ) ) {
         scripted->log.push_back( "init" );
      }
   }

   std::map<uint32_t, ExpectedVal>* expectedValues() override { return &values; }

   Component::LogicalDevice::Fan* newFan( const DriverArgs& ) override { return new MockFan; }

   std::map<uint32_t, ExpectedVal> values { { 1, ExpectedVal( 0x2A, 1 ) } };
   bool isCachedInInit = true;
};

/** A Ham with the base's own behaviour. */
class BareHam : public Ham::Ham {
public:
   void prepare() override {}

   ql_status execute() override { return QL_STATUS_OK; }
};

std::string argsText( const std::string& driver, const std::string& more = "" ) {
   return fmt::format( R"({{ "did": 7, "driver": "{}", "address": {{ "address": 72 }}{} }})", driver, more );
}

/** Device 7 on a medium whose Ham is "Scripted", and the driver "Test" beside those of the library. */
class DeviceCreation : public FreshLibrary {
protected:
   DeviceCreation() {
      currentHam = &ham;
      factoryResult = nullptr;
      load( "Scripted" );
   }

   static void load( const std::string& hamName ) {
      Topology::loadTopology( fmt::format(
         R"([ {{ "type": "I2C", "ham": "{}", "id": 5, "devices": [ {{ "did": 7 }} ] }} ])", hamName )
                                 .c_str() );
      Host::traces.clear();
   }

   DeviceBase* create( const std::string& given ) {
      text = given;
      args = {};
      return DeviceBase::create( text.c_str(), args );
   }

   TestDevice* createTest( const std::string& more = "" ) {
      return dynamic_cast<TestDevice*>( create( argsText( "Test", more ) ) );
   }

   DeviceBase* makeTest( Ham::Ham* given ) {
      factoryHam = given;
      ham.log.push_back( "factory" );
      factoryResult = new TestDevice;
      return factoryResult;
   }

   std::string text;
   DriverArgs args;
   ScriptedHam ham;
   Ham::Ham* factoryHam = nullptr;
   TestDevice* factoryResult;
   static inline Ham::Ham* currentHam;
   TestRow<decltype( Ham::hams )> hamRow { Ham::hams, "Scripted",
      []( const Topology::Topology&, const DriverArgs& ) { return currentHam; } };
   TestRow<decltype( Drivers::drivers )> testRow { Drivers::drivers, "Test",
      [this]( const DriverArgs&, Ham::Ham* given ) { return makeTest( given ); } };
   TestRow<decltype( Drivers::drivers )> nullRow { Drivers::drivers, "Null",
      []( const DriverArgs&, Ham::Ham* ) { return nullptr; } };
};

using DeviceCreationDeathTest = DeviceCreation;

} // namespace

TEST_F( DeviceCreation, TracesEveryStepToANewDevice ) {
   create( argsText( "Test" ) );
   auto lookingUp = fmt::format(
      "looking up for Scripted in {} with {}", fmt::ptr( Topology::_topology ), fmt::ptr( &args ) );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 0, "parsing devArgs = " + text },
         TraceLine { 0, "looking for already existing device 7" }, TraceLine { 0, "creating Ham" },
         TraceLine { 0, "looking for component 4294967295 of device 7 in topology" },
         TraceLine { 2, "Device 7 contain the component" }, TraceLine { 2, "BusId 5" },
         TraceLine { 2, "I2C bus 5" }, TraceLine { 0, "creating Scripted HAM using topology information" },
         TraceLine { 3, lookingUp }, TraceLine { 3, "calling Scripted factory function" },
         TraceLine { 3, "ham initialisation" }, TraceLine { 0, "creating HardwareDevice Test" },
         TraceLine { 0, "calling factory function for Test" }, TraceLine { 0, "Test device created" } ) );
}

TEST_F( DeviceCreation, LeavesTheTracesOfAHamWithoutSimulation ) {
   BareHam bare;
   currentHam = &bare;
   create( argsText( "Dummy" ) );
   std::vector last( Host::traces.end() - 5, Host::traces.end() );
   EXPECT_THAT( last, ElementsAre( TraceLine { 0, "creating HardwareDevice Dummy" },
                         TraceLine { 0, "calling factory function for Dummy" },
                         TraceLine { 0, "virtual Ham::setDriverName() invoked!!!" },
                         TraceLine { 0, "virtual Ham::setExpected() invoked!!!" },
                         TraceLine { 0, "Dummy device created" } ) );
}

TEST_F( DeviceCreation, FillsTheRecordOfTheCaller ) {
   create( argsText( "Test", R"(, "driverArgs": { "fan": 3 })" ) );
   EXPECT_EQ( args.did, 7U );
   EXPECT_EQ( args.driver, "Test" );
   EXPECT_EQ( args.jsonText, text.c_str() );
   EXPECT_THAT( args.driverArgs, ElementsAre( Pair( "fan", "3" ) ) );
}

TEST_F( DeviceCreation, NamesTheFileThenGivesTheExpectedValuesThenInitialises ) {
   auto device = createTest();
   EXPECT_THAT( ham.log, ElementsAre( "factory", "setDriverName Test ''", "setExpected", "init" ) );
   EXPECT_EQ( ham.expected, &device->values );
   EXPECT_EQ( device->ham, &ham );
}

TEST_F( DeviceCreation, BindsTheHamToTheDeviceBeforeItNamesTheFile ) {
   struct ObservingHam : BareHam {
      void setDriverName( std::string, std::string ) override { boundTo = ( *device )->ham; }

      TestDevice** device;
      Ham* boundTo = nullptr;
   };

   ObservingHam observing;
   observing.device = &factoryResult;
   args.did = 7;
   args.driver = "Test";
   HardwareDevice::create( args, &observing );
   EXPECT_EQ( observing.boundTo, &observing );
}

TEST_F( DeviceCreation, HandsTheHamToTheFactory ) {
   createTest();
   EXPECT_EQ( factoryHam, &ham );
}

TEST_F( DeviceCreation, CachesTheDeviceAfterItsInit ) {
   auto device = createTest();
   EXPECT_FALSE( device->isCachedInInit );
   EXPECT_THAT( DeviceBase::devices, ElementsAre( Pair( 7, device ) ) );
}

TEST_F( DeviceCreation, GivesTheCachedDeviceForItsDid ) {
   auto device = createTest();
   ham.log.clear();
   Host::traces.clear();
   EXPECT_EQ( createTest(), device );
   EXPECT_THAT( ham.log, ElementsAre() );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "parsing devArgs = " + text },
                                 TraceLine { 0, "looking for already existing device 7" },
                                 TraceLine { 0, "using previously instanciated HardwareDevice Test" } ) );
}

TEST_F( DeviceCreation, GivesTheCachedDeviceWhateverDriverIsAskedFor ) {
   auto device = createTest();
   EXPECT_EQ( create( argsText( "Nonsense" ) ), device );
   EXPECT_TRUE( Host::hasTraced( 0, "using previously instanciated HardwareDevice Nonsense" ) );
}

TEST_F( DeviceCreation, GivesNullForATextThatIsNoJson ) {
   EXPECT_EQ( create( "{" ), nullptr );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 0, "parsing devArgs = {" },
         TraceLine { 0, "failed to load device from json: Missing a name for object member. offset 1" },
         TraceLine { 0, "failed to parse json object as a device" } ) );
   EXPECT_TRUE( DeviceBase::devices.empty() );
}

TEST_F( DeviceCreation, GivesNullForAnUnknownDriver ) {
   EXPECT_EQ( create( argsText( "dummy", R"(, "provideHam": 0)" ) ), nullptr );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 0, "parsing devArgs = " + text },
         TraceLine { 0, "looking for already existing device 7" },
         TraceLine { 0, "creating HardwareDevice dummy" }, TraceLine { 0, "driver dummy not found" },
         TraceLine { 0, "factory function returned a null object" } ) );
   EXPECT_TRUE( DeviceBase::devices.empty() );
}

TEST_F( DeviceCreation, GivesNullForADriverThatMakesNothing ) {
   EXPECT_EQ( create( argsText( "Null", R"(, "provideHam": 0)" ) ), nullptr );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "parsing devArgs = " + text },
                                 TraceLine { 0, "looking for already existing device 7" },
                                 TraceLine { 0, "creating HardwareDevice Null" },
                                 TraceLine { 0, "calling factory function for Null" },
                                 TraceLine { 0, "factory function returned a null object" } ) );
   EXPECT_TRUE( DeviceBase::devices.empty() );
}

TEST_F( DeviceCreation, AbandonsTheHamOfADriverThatMakesNothing ) {
   EXPECT_EQ( create( argsText( "Null" ) ), nullptr );
   EXPECT_TRUE( Host::hasTraced( 3, "ham initialisation" ) );
   EXPECT_THAT( ham.log, ElementsAre() );
}

TEST_F( DeviceCreation, GivesNullWithoutAHam ) {
   currentHam = nullptr;
   EXPECT_EQ( create( argsText( "Test" ) ), nullptr );
   EXPECT_THAT(
      Host::tracesOf( 0 ), ElementsAre( "parsing devArgs = " + text, "looking for already existing device 7",
                              "creating Ham", "looking for component 4294967295 of device 7 in topology",
                              "creating Scripted HAM using topology information",
                              "Factory function returned, couldn't create HAM Scripted",
                              "failed to create HAM", "failed to create Ham" ) );
   EXPECT_EQ( factoryResult, nullptr );
   EXPECT_TRUE( DeviceBase::devices.empty() );
}

TEST_F( DeviceCreation, StartsAnewAfterAFailure ) {
   currentHam = nullptr;
   createTest();
   currentHam = &ham;
   auto device = createTest();
   ASSERT_NE( device, nullptr );
   EXPECT_EQ( device->ham, &ham );
}

TEST_F( DeviceCreation, MakesNoHamForADeviceThatWantsNone ) {
   auto device = createTest( R"(, "provideHam": 0)" );
   ASSERT_NE( device, nullptr );
   EXPECT_EQ( device->ham, nullptr );
   EXPECT_EQ( factoryHam, nullptr );
   EXPECT_THAT( ham.log, ElementsAre( "factory" ) );
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 0, "parsing devArgs = " + text },
         TraceLine { 0, "looking for already existing device 7" },
         TraceLine { 0, "creating HardwareDevice Test" },
         TraceLine { 0, "calling factory function for Test" }, TraceLine { 0, "Test device created" } ) );
}

TEST_F( DeviceCreation, TakesTheHamThatItIsGiven ) {
   for ( bool provideHam : { false, true } ) {
      SCOPED_TRACE( provideHam );
      ScriptedHam given;
      DeviceBase::devices.clear();
      args.did = 7;
      args.driver = "Test";
      args.provideHam = provideHam;
      auto device = dynamic_cast<HardwareDevice*>( HardwareDevice::create( args, &given ) );
      ASSERT_NE( device, nullptr );
      EXPECT_EQ( device->ham, &given );
      EXPECT_THAT( given.log, ElementsAre( "setDriverName Test ''", "setExpected", "init" ) );
      EXPECT_FALSE( Host::hasTraced( 0, "creating Ham" ) );
   }
}

TEST_F( DeviceCreation, LeavesTheHamThatItIsGivenUnusedWhenTheDeviceIsCached ) {
   auto device = createTest();
   ScriptedHam given;
   EXPECT_EQ( HardwareDevice::create( args, &given ), device );
   EXPECT_EQ( device->ham, &ham );
   EXPECT_THAT( given.log, ElementsAre() );
}

TEST_F( DeviceCreation, MakesASecondDeviceForAnInitThatAsksForItsOwnDid ) {
   struct AskingDevice : HardwareDevice {
      explicit AskingDevice( DeviceBase*& made ) : inner( made ) {}

      void init() override {
         DriverArgs own;
         inner = create(
            R"({ "did": 7, "driver": "Dummy", "provideHam": 0, "address": { "address": 72 } })", own );
      }

      using DeviceBase::create;
      DeviceBase*& inner;
   };

   DeviceBase* inner = nullptr;
   TestRow row(
      Drivers::drivers, "Asking", [&]( const DriverArgs&, Ham::Ham* ) { return new AskingDevice( inner ); } );
   auto outer = create( argsText( "Asking" ) );
   ASSERT_NE( inner, nullptr );
   EXPECT_NE( inner, outer );
   EXPECT_THAT( DeviceBase::devices, ElementsAre( Pair( 7, outer ) ) );
}

TEST_F( DeviceCreation, KeepsADeviceThatDoesNotOfferTheKindAskedFor ) {
   try {
      ql_fan_add( argsText( "Dummy" ).c_str() );
      FAIL() << "nothing thrown";
   } catch ( const NotImplementedException& exception ) {
      EXPECT_STREQ( exception.what(), "Not implemented newFan" );
   }
   EXPECT_TRUE( DeviceBase::devices.contains( 7 ) );
}

TEST_F( DeviceCreation, MakesOneDeviceAndTwoFansForTwoTextsOfOneDid ) {
   auto first = ql_fan_add( argsText( "Test" ).c_str() );
   auto second = ql_fan_add( argsText( "Test" ).c_str() );
   EXPECT_NE( first, second );
   EXPECT_THAT( ham.log, ElementsAre( "factory", "setDriverName Test ''", "setExpected", "init" ) );
   EXPECT_EQ( Host::tracesOf( 0 ).back(), "using previously instanciated HardwareDevice Test" );
}

TEST_F( DeviceCreationDeathTest, NeedsAHardwareDeviceForATextOfOne ) {
   TestRow row( Drivers::drivers, "Multi", []( const DriverArgs&, Ham::Ham* ) { return new MultiDevice; } );
   EXPECT_DEATH( create( argsText( "Multi" ) ), assertionFailed( "device" ) );
}
