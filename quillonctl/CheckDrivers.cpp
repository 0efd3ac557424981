#include "Check.h"
#include "Nearest.h"
#include "Schema.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <span>

// What the drivers make of the numbers in an object's "driverArgs", which they get as texts. One beyond 32
// bits ends in an exception; the rest is cut to the width of its field, and that is what counts.

namespace Check {

using rapidjson::Value;

namespace {

struct Number {
   const char* key;
   /** What the driver keeps of it. */
   int bits;
   int64_t minimum;
   int64_t maximum;
};

constexpr int64_t lastRegister = 255;
constexpr int64_t lastBit = 7;

constexpr Number fan[] = {
   { "fanId", 8, 1, 5 },
   // The driver multiplies a speed by 255 in 32 bits.
   { "maxRpm", 32, 1, INT32_MAX / 255 },
   { "registerOffset", 32, 0, 4 },
};

constexpr Number slot[] = { { "fanId", 8, 1, 5 }, { "maxRpm", 32, 1, INT32_MAX } };

constexpr Number xcvr[] = {
   { "id", 32, 0, INT32_MAX },
   { "presenceReg", 8, 0, lastRegister },
   { "presenceBit", 8, 0, lastBit },
   { "rxLosReg", 8, 0, lastRegister },
   { "rxLosBit", 8, 0, lastBit },
   { "txFaultReg", 8, 0, lastRegister },
   { "txFaultBit", 8, 0, lastBit },
   { "txDisableReg", 8, 0, lastRegister },
   { "txDisableBit", 8, 0, lastBit },
};

constexpr Number portLed[] = { { "ledReg", 8, 0, lastRegister } };

/** The register says which LED it is. */
constexpr Number systemLed[] = { { "reg", 8, 0x40, 0x43 }, { "id", 8, 0, 255 } };

constexpr Number gpio[] = { { "register", 32, 0, lastRegister }, { "bitpos", 32, 0, lastBit } };

constexpr Number poeController[] = {
   { "numPorts", 8, 0, 255 },
   { "numAtPorts", 8, 0, 255 },
   { "firmwareDownloadSize", 8, 0, 255 },
   { "resetReg", 16, 0, lastRegister },
   { "outOfResetVal", 8, 0, 255 },
};

constexpr Number poePort[] = { { "portId", 8, 0, 255 } };

struct Row {
   const char* kind;
   /** Null for any. */
   const char* driver;
   std::span<const Number> numbers;
};

constexpr Row rows[] = {
   { "fan", "EMC2305", fan },
   { "slot", "EMC2305", slot },
   { "xcvr", "SelvaneXcvr", xcvr },
   { "led", "SelvanePortLed", portLed },
   { "led", "SelvaneSystemLed", systemLed },
   { "gpio", nullptr, gpio },
   { "gpio", "BCM59121", poeController },
   { "poe_port", "BCM59121", poeController },
   { "poe_port", "BCM59121", poePort },
};

std::optional<int64_t> integerOf( const Value& value ) {
   if ( !value.IsString() ) {
      return value.IsInt() ? std::optional<int64_t>( value.GetInt() ) : std::nullopt;
   }
   auto text = textOf( value );
   int32_t number = 0;
   auto [stop, error] = std::from_chars( text.data(), text.data() + text.size(), number );
   auto isRight = error == std::errc() && stop == text.data() + text.size();
   return isRight ? std::optional<int64_t>( number ) : std::nullopt;
}

/** The driver gets a number in six significant digits. */
bool isSinglePrecision( const Value& value ) {
   if ( value.IsNumber() && !value.IsDouble() && !value.IsInt() && !value.IsUint() ) {
      return false; // which has no text
   }
   auto text = value.IsString() ? textOf( value ) : fmt::format( "{:g}", value.GetDouble() );
   char* stop = nullptr;
   errno = 0;
   auto number = std::strtof( text.c_str(), &stop );
   return !text.empty() && !*stop && errno == 0 && std::isfinite( number );
}

class DriverCheck {
public:
   DriverCheck( const Subject& subject, const Object& object, const Value& values )
      : subject_( subject )
      , object_( object )
      , pointer_( under( under( object.pointer, "args" ), "driverArgs" ) )
      , values_( values ) {}

   void run() {
      for ( auto& row : rows ) {
         if ( row.kind == object_.kind && ( !row.driver || row.driver == object_.driver ) ) {
            std::for_each( row.numbers.begin(), row.numbers.end(), [this]( auto& each ) { number( each ); } );
         }
      }
      if ( object_.kind == "slot" ) {
         gain();
      }
      if ( object_.driver == "BCM59121" ) {
         poe();
      }
      unknownKeys();
   }

private:
   void error( const char* key, const std::string& reason ) {
      subject_.error( under( pointer_, key ), reason );
   }

   /** Null makes no entry at all. */
   const Value* valueOf( const char* key ) const {
      auto value = member( values_, key );
      return value && !value->IsNull() ? value : nullptr;
   }

   void number( const Number& wanted ) {
      auto value = valueOf( wanted.key );
      if ( !value || !subject_.isSound( under( pointer_, wanted.key ) ) ) {
         return;
      }
      auto number = integerOf( *value );
      auto rest = kept( *value, wanted.bits );
      if ( rest != number ) {
         subject_.warning( under( pointer_, wanted.key ),
            fmt::format( "{} is cut to {} bits and becomes {}", *number, wanted.bits, *rest ) );
      }
      if ( !rest || *rest < wanted.minimum || *rest > wanted.maximum ) {
         auto range = fmt::format(
            "an integer from {} to {}, or a text of its digits", wanted.minimum, wanted.maximum );
         error( wanted.key, Schema::mismatch( range, *value ) );
      }
   }

   void gain() {
      auto value = valueOf( "prop" );
      if ( value && subject_.isSound( under( pointer_, "prop" ) ) && !isSinglePrecision( *value ) ) {
         error( "prop",
            Schema::mismatch( "a number that fits a single-precision one, or a text of it", *value ) );
      }
   }

   std::optional<int64_t> numberAt( const char* key, int bits ) const {
      auto value = valueOf( key );
      return value ? kept( *value, bits ) : std::nullopt;
   }

   /** What the numbers of a PoE controller must be to each other, where each by itself is right. */
   void poe() {
      auto ports = numberAt( "numPorts", 8 );
      auto port = object_.kind == "poe_port" ? numberAt( "portId", 8 ) : std::nullopt;
      if ( ports && port >= ports ) {
         error( "portId", fmt::format( "must be below the number of ports, {}, not {}", *ports, *port ) );
      }
      auto twoPairs = numberAt( "numAtPorts", 8 );
      if ( ports && twoPairs > ports ) {
         error( "numAtPorts",
            fmt::format( "must not be above the number of ports, {}, but is {}", *ports, *twoPairs ) );
      }
      if ( numberAt( "firmwareDownloadSize", 8 ) == 1 ) {
         error( "firmwareDownloadSize",
            Schema::mismatch( "a number from 2 to 255, or 0 for 256", values_["firmwareDownloadSize"] ) );
      }
      // With one alone the driver leaves the controller in reset.
      needsOther( "resetReg", "outOfResetVal" );
      needsOther( "outOfResetVal", "resetReg" );
   }

   void needsOther( const char* key, const char* other ) {
      if ( valueOf( key ) && !valueOf( other ) ) {
         error( key, fmt::format( "does nothing without the key \"{}\"", other ) );
      }
   }

   void unknownKeys() {
      auto isPlainGpio = object_.kind == "gpio" && object_.driver != "BCM59121";
      auto known = Schema::keysAt( fmt::format( "/definitions/driver-{}/definitions/{}",
         isPlainGpio ? "GpioDriver" : object_.driver, object_.kind ) );
      for ( auto& [name, value] : values_.GetObject() ) {
         auto key = textOf( name );
         if ( std::find( known.begin(), known.end(), key ) == known.end() ) {
            subject_.warningAtKey( under( pointer_, key ),
               fmt::format( "the driver {} does not read this for a {}", object_.driver, object_.kind ),
               didYouMeanKey( key, known ) );
         }
      }
   }

   const Subject& subject_;
   const Object& object_;
   std::string pointer_;
   const Value& values_;
};

} // namespace

std::optional<int64_t> kept( const Value& value, int bits ) {
   auto number = value.IsUint() ? std::optional<int64_t>( value.GetUint() ) : integerOf( value );
   return number && bits < 32 ? std::optional( *number & ( ( int64_t { 1 } << bits ) - 1 ) ) : number;
}

void driverArguments( const Subject& subject, const Object& object ) {
   auto values = member( *object.args, "driverArgs" );
   // A driver that is not for the kind breaks the schema.
   auto hasDriver = !object.driver.empty() && subject.isSound( under( object.pointer, "args" ) + "/driver" );
   if ( hasDriver && object.kind != "psu" && values && values->IsObject() ) {
      DriverCheck( subject, object, *values ).run();
   }
}

} // namespace Check
