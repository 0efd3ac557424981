#include "Check.h"

#include <fmt/format.h>

namespace Check {

using rapidjson::Value;

namespace {

/** A field of the address word, and how wide it is. */
struct AddressField {
   const char* key;
   int bits;
};

constexpr AddressField addressFields[] = { { "address", 7 }, { "writeDelay", 2 }, { "readDelay", 2 },
   { "busTimeout", 3 }, { "extraDelay", 1 }, { "addrSize", 2 }, { "accel", 7 } };

void address( const Subject& subject, const std::string& pointer, const Value& json ) {
   for ( auto& field : addressFields ) {
      auto value = member( json, field.key );
      if ( !value || !value->IsUint() ) {
         continue;
      }
      auto number = int64_t { value->GetUint() };
      auto rest = *kept( *value, field.bits );
      auto place = under( pointer, field.key );
      // What is kept of the number is what counts.
      if ( field.key == std::string_view( "addrSize" ) && rest != 1 && rest != 2 ) {
         subject.error( place, fmt::format( "must be 1 or 2, not {}", number ) );
      } else if ( rest != number ) {
         subject.warning(
            place, fmt::format( "{} is cut to {} bits and becomes {}", number, field.bits, rest ) );
      }
   }
}

} // namespace

void arguments( const Subject& subject, const std::string& pointer, const Value& args ) {
   auto where = member( args, "address" );
   if ( !isMultiDevice( args ) && where && where->IsObject() ) {
      address( subject, under( pointer, "address" ), *where );
   }
}

bool isMultiDevice( const Value& args ) {
   auto value = member( args, "isMultiDevice" );
   return value && value->IsTrue();
}

bool deniesHam( const Value& args ) { return unsignedIn( args, "provideHam" ) == 0U; }

} // namespace Check
