#include "LedSettings.h"

#include "JsonFile.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <iterator>

namespace Serve {

namespace {

/** LEDs that show the same with the same code. */
enum class Family { Status, Power, CloudOrFan, CloudOrFanWithBad, SfpPort, OtherPort };

struct Row {
   Family family;
   uint8_t code;
   const char* setting;
};

const Row rows[] = {
   { Family::Status, 0x00, "off" },
   { Family::Status, 0x01, "good" },
   { Family::Status, 0x02, "warning" },
   { Family::Status, 0x09, "unknown" },
   { Family::Status, 0x0C, "beacon" },
   { Family::Power, 0x07, "off" },
   { Family::Power, 0x06, "good" },
   { Family::Power, 0x05, "bad" },
   { Family::CloudOrFan, 0x07, "off" },
   { Family::CloudOrFan, 0x06, "good" },
   { Family::CloudOrFan, 0x05, "warning" },
   { Family::CloudOrFanWithBad, 0x07, "off" },
   { Family::CloudOrFanWithBad, 0x06, "good" },
   { Family::CloudOrFanWithBad, 0x05, "warning or bad" },
   { Family::SfpPort, 0xB3, "off" },
   { Family::SfpPort, 0xA3, "good" },
   { Family::SfpPort, 0x93, "warning or inactive" },
   { Family::SfpPort, 0xD3, "beacon" },
   { Family::OtherPort, 0xB3, "off" },
   { Family::OtherPort, 0x93, "good" },
   { Family::OtherPort, 0xA3, "warning or inactive" },
   { Family::OtherPort, 0xE3, "beacon" },
};

/** Where the code of an LED is, and what it means. */
struct Register {
   int number;
   Family family;
};

/** A whole number, or a text of its digits, as drivers take them. */
int wholeNumber( const rapidjson::Value& value ) {
   return value.IsString() ? std::stoi( textOf( value ) ) : value.GetInt();
}

/** The registers of the system's LEDs have their meaning from the CPLD. */
std::optional<Register> systemRegister( const rapidjson::Value& args ) {
   constexpr auto ledWithBad = 3;
   auto number = wholeNumber( args["reg"] );
   switch ( number ) {
   case 0x40:
      return Register { number, Family::Status };
   case 0x41:
      return Register { number, Family::Power };
   case 0x42:
   case 0x43:
      return Register { number,
         wholeNumber( args["id"] ) == ledWithBad ? Family::CloudOrFanWithBad : Family::CloudOrFan };
   default:
      return {};
   }
}

std::optional<Register> registerOf( const ObjectEntry& object, const rapidjson::Value& args ) {
   if ( object.kind != &ledKind ) {
      return {};
   }
   auto driver = textOf( args["driver"] );
   auto& more = args["driverArgs"];
   if ( driver == "SelvaneSystemLed" ) {
      return systemRegister( more );
   }
   if ( driver == "SelvanePortLed" ) {
      auto isSfp = textOf( more["portType"] ) == "sfp";
      return Register { wholeNumber( more["ledReg"] ), isSfp ? Family::SfpPort : Family::OtherPort };
   }
   return {};
}

rapidjson::Document argsOf( const ObjectEntry& object ) {
   rapidjson::Document args;
   args.Parse( object.args.c_str() );
   return args;
}

} // namespace

std::vector<ObjectEntry> bitsOfLed( const ObjectEntry& led ) {
   constexpr auto bitsOfRegister = 8;
   std::vector<ObjectEntry> bits;
   auto args = argsOf( led );
   auto where = registerOf( led, args );
   for ( auto i = 0; where && i < bitsOfRegister; ++i ) {
      rapidjson::Value more( rapidjson::kObjectType );
      more.AddMember( "register", where->number, args.GetAllocator() );
      more.AddMember( "bitpos", i, args.GetAllocator() );
      args["driverArgs"] = more;
      auto name = fmt::format( "{} bit {}", led.name, i );
      bits.push_back( { &gpioKind, name, {}, {}, {}, led.did, compact( args ) } );
   }
   return bits;
}

std::string settingOfLed( const ObjectEntry& led, uint8_t code ) {
   auto where = registerOf( led, argsOf( led ) );
   auto row = std::find_if( std::begin( rows ), std::end( rows ),
      [&]( auto& one ) { return where && one.family == where->family && one.code == code; } );
   return row == std::end( rows ) ? "" : row->setting;
}

} // namespace Serve
