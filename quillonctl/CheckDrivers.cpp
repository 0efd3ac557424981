#include "Check.h"
#include "Schema.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <span>

// What the drivers make of an object's "driverArgs", which they get as texts. A key that they miss, or a
// number that is none, ends in an exception; a number that is too large is cut to the width of its register.

namespace Check {

using rapidjson::Value;

namespace {

enum class Form { Text, Integer, Decimal, Flag, SfpType };

struct Want {
   const char* key;
   Form form;
   int64_t minimum = 0;
   int64_t maximum = INT32_MAX;
   bool isRequired = true;
};

constexpr int64_t lastRegister = 255;
constexpr int64_t lastBit = 7;

constexpr Want fan[] = {
   { "fanId", Form::Integer, 1, 5 },
   // The driver multiplies a speed by 255 in 32 bits.
   { "maxRpm", Form::Integer, 1, INT32_MAX / 255 },
   { "registerOffset", Form::Integer, 0, 4 },
};

constexpr Want slot[] = {
   { "fanId", Form::Integer, 1, 5 },
   { "maxRpm", Form::Integer, 1 },
   { "prop", Form::Decimal, 0, 0, false },
   { "modelName", Form::Text },
   { "serialNum", Form::Text },
   { "airflowDirection", Form::Text },
};

constexpr Want xcvr[] = {
   { "id", Form::Integer },
   { "type", Form::SfpType },
   { "presenceReg", Form::Integer, 0, lastRegister },
   { "presenceBit", Form::Integer, 0, lastBit },
   { "presenceActiveHigh", Form::Flag },
   { "rxLosReg", Form::Integer, 0, lastRegister },
   { "rxLosBit", Form::Integer, 0, lastBit },
   { "rxLosActiveHigh", Form::Flag },
   { "txFaultReg", Form::Integer, 0, lastRegister },
   { "txFaultBit", Form::Integer, 0, lastBit },
   { "txFaultActiveHigh", Form::Flag },
   { "txDisableReg", Form::Integer, 0, lastRegister },
   { "txDisableBit", Form::Integer, 0, lastBit },
   { "txDisableActiveHigh", Form::Flag },
};

constexpr Want portLed[] = {
   { "ledName", Form::Text },
   { "ledReg", Form::Integer, 0, lastRegister },
   { "portType", Form::Text },
};

/** The register says which LED it is. */
constexpr Want systemLed[] = {
   { "reg", Form::Integer, 0x40, 0x43 },
   { "id", Form::Integer, 0, 255 },
};

constexpr Want gpio[] = {
   { "register", Form::Integer, 0, lastRegister },
   { "bitpos", Form::Integer, 0, lastBit },
};

/** Numbers of one byte are the schema's affair; the driver cuts the rest to a register of the CPLD. */
constexpr Want poePort[] = {
   { "resetReg", Form::Integer, 0, lastRegister, false },
   { "mpssValueZero", Form::Flag, 0, 0, false },
};

struct Maker {
   const char* kind;
   const char* driver;
   std::span<const Want> wants;
};

/** Which driver makes which kind. All make GPIOs, and none makes power supplies. */
constexpr Maker makers[] = {
   { "temp_sensor", "PCT2075", {} },
   { "fan", "EMC2305", fan },
   { "slot", "EMC2305", slot },
   { "xcvr", "SelvaneXcvr", xcvr },
   { "led", "SelvanePortLed", portLed },
   { "led", "SelvaneSystemLed", systemLed },
   { "poe_port", "BCM59121", poePort },
};

std::optional<int64_t> integerOf( const Value& value ) {
   if ( !value.IsString() ) {
      return value.IsInt64() ? std::optional( value.GetInt64() ) : std::nullopt;
   }
   auto text = textOf( value );
   int64_t number = 0;
   auto [stop, error] = std::from_chars( text.data(), text.data() + text.size(), number );
   auto isRight = error == std::errc() && stop == text.data() + text.size();
   return isRight ? std::optional( number ) : std::nullopt;
}

bool isDecimal( const Value& value ) {
   if ( !value.IsString() ) {
      return value.IsNumber();
   }
   auto text = textOf( value );
   char* stop = nullptr;
   auto number = std::strtof( text.c_str(), &stop );
   return !text.empty() && !*stop && std::isfinite( number );
}

/** The driver takes every text but "true" for false. */
bool isFlag( const Value& value ) {
   return value.IsBool() ||
          ( value.IsString() && ( textOf( value ) == "true" || textOf( value ) == "false" ) );
}

bool isSfpType( const Value& value ) {
   return value.IsString() && ( textOf( value ) == "sfp" || textOf( value ) == "sfp+" );
}

/** What a value must be if it is not, in words. */
std::optional<std::string> missed( const Want& want, const Value& value ) {
   switch ( want.form ) {
   case Form::Text:
      return value.IsString() ? std::nullopt : std::optional<std::string>( "a string" );
   case Form::Integer: {
      auto number = integerOf( value );
      if ( number && *number >= want.minimum && *number <= want.maximum ) {
         return {};
      }
      return fmt::format( "an integer from {} to {}, or a text of its digits", want.minimum, want.maximum );
   }
   case Form::Decimal:
      return isDecimal( value ) ? std::nullopt : std::optional<std::string>( "a number, or a text of one" );
   case Form::Flag:
      return isFlag( value ) ? std::nullopt : std::optional<std::string>( "true or false" );
   case Form::SfpType:
      return isSfpType( value ) ? std::nullopt : std::optional( Schema::oneOf( { "\"sfp\"", "\"sfp+\"" } ) );
   }
   return {};
}

/** What the driver of an object wants, or nothing behind the finding that it makes no such object. */
std::optional<std::span<const Want>> wantsOf( const JsonFile& file, const std::string& pointer,
   const std::string& kind, const std::string& driver, std::vector<Finding>& findings ) {
   if ( kind == "gpio" ) {
      return gpio;
   }
   std::vector<std::string> drivers;
   for ( auto& maker : makers ) {
      if ( maker.kind == kind ) {
         if ( maker.driver == driver ) {
            return maker.wants;
         }
         drivers.emplace_back( maker.driver );
      }
   }
   if ( !drivers.empty() ) {
      findings.push_back( file.at( under( pointer, "driver" ),
         fmt::format( "the driver {} makes no {}; use {}", driver, kind, fmt::join( drivers, " or " ) ) ) );
   }
   return {};
}

/** The named values, an object without members where the document has none. */
const Value& valuesOf( const Value& args ) {
   static const Value none( rapidjson::kObjectType );
   auto values = member( args, "driverArgs" );
   return values && values->IsObject() ? *values : none;
}

/** What the numbers of a PoE port must be to each other, where each by itself is right. */
class PoePortCheck {
public:
   PoePortCheck(
      const JsonFile& file, const std::string& pointer, const Value& values, std::vector<Finding>& findings )
      : file_( file ), pointer_( under( pointer, "driverArgs" ) ), values_( values ), findings_( findings ) {}

   void run() {
      auto ports = number( "numPorts" );
      if ( number( "portId" ) >= ports ) {
         find( "portId",
            fmt::format( "must be below the number of ports, {}, not {}", *ports, *number( "portId" ) ) );
      }
      if ( number( "numAtPorts" ) > ports ) {
         find( "numAtPorts", fmt::format( "must not be above the number of ports, {}, but is {}", *ports,
                                *number( "numAtPorts" ) ) );
      }
      // With one alone the driver leaves the controller in reset.
      needsOther( "resetReg", "outOfResetVal" );
      needsOther( "outOfResetVal", "resetReg" );
   }

private:
   std::optional<int64_t> number( const char* key ) const {
      auto value = member( values_, key );
      return value ? integerOf( *value ) : std::nullopt;
   }

   void needsOther( const char* key, const char* other ) {
      if ( number( key ) && !number( other ) ) {
         find( key, fmt::format( "does nothing without the key \"{}\"", other ) );
      }
   }

   void find( const char* key, const std::string& reason ) {
      findings_.push_back( file_.at( under( pointer_, key ), reason ) );
   }

   const JsonFile& file_;
   std::string pointer_;
   const Value& values_;
   std::vector<Finding>& findings_;
};

} // namespace

void driverArguments( const JsonFile& file, const std::string& pointer, const std::string& kind,
   const Value& args, std::vector<Finding>& findings ) {
   auto wants = wantsOf( file, pointer, kind, textOf( args["driver"] ), findings );
   if ( !wants ) {
      return;
   }
   auto& values = valuesOf( args );
   std::vector<std::string> missing;
   for ( auto& want : *wants ) {
      auto value = member( values, want.key );
      // Null makes no entry at all.
      if ( !value || value->IsNull() ) {
         if ( want.isRequired ) {
            missing.emplace_back( want.key );
         }
      } else if ( auto wanted = missed( want, *value ) ) {
         findings.push_back( file.at(
            under( under( pointer, "driverArgs" ), want.key ), Schema::mismatch( *wanted, *value ) ) );
      }
   }
   if ( kind == "poe_port" ) {
      PoePortCheck( file, pointer, values, findings ).run();
   }
   if ( !missing.empty() ) {
      auto place = member( args, "driverArgs" ) ? under( pointer, "driverArgs" ) : pointer;
      findings.push_back( file.at( place, fmt::format( "{}, which the driver {} needs",
                                             Schema::missing( missing ), textOf( args["driver"] ) ) ) );
   }
}

} // namespace Check
