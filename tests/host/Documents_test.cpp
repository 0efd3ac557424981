#include "Simulation.h"

#include <gmock/gmock.h>

#include <iterator>
#include <numeric>

using testing::ElementsAre;

namespace {

/** A text that is no JSON, and what the parser says about it. */
struct BadText {
   const char* text;
   const char* reason;
   int offset;
};

constexpr BadText badTexts[] = {
   { "", "The document is empty.", 0 },
   { "[] []", "The document root must not be followed by other values.", 3 },
   { "[ nothing ]", "Invalid value.", 3 },
   { "[ 1, // no comments\n 2 ]", "Invalid value.", 5 },
   { "[ 1, ", "Invalid value.", 5 },
   { "{ did: 1 }", "Missing a name for object member.", 2 },
   { "{ \"did\" 1 }", "Missing a colon after a name of object member.", 8 },
   { "{ \"did\": 1 \"driver\": null }", "Missing a comma or '}' after an object member.", 11 },
   { "[ 1 2 ]", "Missing a comma or ']' after an array element.", 4 },
   { "[ 1, ]", "Invalid value.", 5 },
   { "[ \"\\u12G4\" ]", "Incorrect hex digit after \\u escape in string.", 3 },
   { "[ \"\\uD800x\" ]", "The surrogate pair in string is invalid.", 3 },
   { "[ \"\\x\" ]", "Invalid escape character in string.", 3 },
   { "[ \"\n\" ]", "Invalid escape character in string.", 3 },
   { "[ \"open ]", "Missing a closing quotation mark in string.", 9 },
   { "[ 1e309 ]", "Number too big to be stored in double.", 2 },
   { "[ 1. ]", "Miss fraction part in number.", 4 },
   { "[ 1e ]", "Miss exponent in number.", 4 },
};

/** Text that is no JSON is refused, and the host goes on. */
class Documents : public SimulationTest {
protected:
   static std::string complaint( const char* about, const BadText& bad ) {
      return std::string( about ) + ": " + bad.reason + " offset " + std::to_string( bad.offset );
   }
};

TEST_F( Documents, ABadTopologyIsRefusedAtTheFirstLoad ) {
   for ( auto& bad : badTexts ) {
      SCOPED_TRACE( bad.text );
      Host::traces.clear();

      EXPECT_EQ( plugin.fan_init( bad.text ), QL_STATUS_INVALID_ARGUMENT );

      EXPECT_THAT( Host::tracesOf( 2 ),
         ElementsAre( "loading topology json", complaint( "failed to load topology from json", bad ) ) );
   }
}

TEST_F( Documents, ABadTopologyLeavesTheOldOneAnswering ) {
   // A device for each row: one that was made before would not be looked for again.
   std::vector<unsigned> dids( std::size( badTexts ) );
   std::iota( dids.begin(), dids.end(), 1 );
   load( dids );
   auto did = dids.begin();
   for ( auto& bad : badTexts ) {
      SCOPED_TRACE( bad.text );

      EXPECT_EQ( plugin.temp_sensor_init( bad.text ), QL_STATUS_INVALID_ARGUMENT );

      EXPECT_NE( plugin.temp_sensor_add( arguments( *did++, "PCT2075" ).c_str(), 65, 75 ), nullptr );
   }
}

TEST_F( Documents, TheOldTopologyIsStillTheLoadedOneAfterABadText ) {
   load( { 1 } );
   plugin.fan_init( "" );
   Host::traces.clear();

   EXPECT_EQ( plugin.fan_init( topology( { 1 } ).c_str() ), QL_STATUS_OK );

   EXPECT_THAT(
      Host::tracesOf( 2 ), ElementsAre( "topology is the same as the previously loaded one (using it)" ) );
}

TEST_F( Documents, BadArgumentsGiveNoObject ) {
   load( { 1 } );
   for ( auto& bad : badTexts ) {
      SCOPED_TRACE( bad.text );
      Host::traces.clear();

      EXPECT_EQ( plugin.fan_add( bad.text ), nullptr );

      EXPECT_THAT(
         Host::tracesOf( 0 ), ElementsAre( std::string( "parsing devArgs = " ) + bad.text,
                                 complaint( "failed to load device from json", bad ),
                                 "failed to parse json object as a device", "DeviceBase::create() failed" ) );
   }
}

TEST_F( Documents, AnEmptyTopologyIsAGoodOne ) {
   EXPECT_EQ( plugin.fan_init( "[]" ), QL_STATUS_OK );

   EXPECT_EQ( plugin.fan_add( arguments( 1, "EMC2305" ).c_str() ), nullptr );

   EXPECT_TRUE( Host::hasTraced( 0, "could not find component uid -1 in topology" ) );
}

TEST_F( Documents, UnknownKeysAreIgnored ) {
   EXPECT_EQ( plugin.fan_init( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 1, "since": 2024,
      "devices": [ { "did": 1, "place": { "rack": [ 3 ] } } ] } ])" ),
      QL_STATUS_OK );

   EXPECT_NE(
      plugin.temp_sensor_add( arguments( 1, "PCT2075", R"("colour": "red")" ).c_str(), 65, 75 ), nullptr );
}

} // namespace
