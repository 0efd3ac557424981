#include "Message.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <set>

namespace Serve {

namespace {

// A sensor may well read NaN.
using Writer = rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::UTF8<>,
   rapidjson::CrtAllocator, rapidjson::kWriteNanAndInfFlag>;
constexpr auto parseFlags = rapidjson::kParseNanAndInfFlag | rapidjson::kParseFullPrecisionFlag;

void writeText( Writer& json, std::string_view text ) {
   json.String( text.data(), static_cast<rapidjson::SizeType>( text.size() ) );
}

void write( Writer& json, const Failure& failure ) {
   json.Int( static_cast<int>( failure.status ) );
   writeText( json, failure.message );
}

void write( Writer& json, const Value& value ) {
   if ( auto text = std::get_if<std::string>( &value ) ) {
      writeText( json, *text );
   } else if ( auto number = std::get_if<double>( &value ) ) {
      json.Double( *number );
   } else if ( auto flag = std::get_if<bool>( &value ) ) {
      json.Bool( *flag );
   } else {
      json.Null();
   }
}

/** The members of each message in an array, behind its place in the variant. */
struct Encoder {
   Writer& json;

   void operator()( const Started& ) const {}

   void operator()( const Unusable& unusable ) const { write( json, unusable.failure ); }

   void operator()( const Asked& asked ) const { json.Uint64( asked.object ); }

   void operator()( const Answered& answered ) const {
      json.Uint64( answered.object );
      json.Double( answered.seconds );
      writeText( json, answered.reading.state );
      json.StartArray();
      for ( auto& value : answered.reading.values ) {
         write( json, value );
      }
      json.EndArray();
      writeText( json, answered.setting );
      if ( answered.reading.failure ) {
         write( json, *answered.reading.failure );
      }
   }
};

using Json = rapidjson::Value;

std::string textOf( const Json& json ) { return { json.GetString(), json.GetStringLength() }; }

Failure failureOf( const Json& status, const Json& message ) {
   return { static_cast<ql_status>( status.GetInt() ), textOf( message ) };
}

Value valueOf( const Json& json ) {
   return json.IsString()   ? Value( textOf( json ) )
          : json.IsNumber() ? Value( json.GetDouble() )
          : json.IsBool()   ? Value( json.GetBool() )
                            : Value();
}

/** States are few words, which readings point to. */
std::string_view stateOf( const Json& json ) {
   static std::set<std::string> words;
   return *words.insert( textOf( json ) ).first;
}

Answered answeredOf( const Json& json ) {
   Answered answered { json[1].GetUint64(), json[2].GetDouble(), { {}, stateOf( json[3] ), {} },
      textOf( json[5] ) };
   for ( auto& value : json[4].GetArray() ) {
      answered.reading.values.push_back( valueOf( value ) );
   }
   if ( json.Size() > 6 ) {
      answered.reading.failure = failureOf( json[6], json[7] );
   }
   return answered;
}

} // namespace

std::string encode( const Message& message ) {
   rapidjson::StringBuffer bytes;
   Writer json( bytes );
   json.StartArray();
   json.Uint64( message.index() );
   std::visit( Encoder { json }, message );
   json.EndArray();
   return { bytes.GetString(), bytes.GetSize() };
}

Message decode( const std::string& bytes ) {
   rapidjson::Document json;
   json.Parse<parseFlags>( bytes.data(), bytes.size() );
   switch ( json[0].GetUint64() ) {
   case 0:
      return Started {};
   case 1:
      return Unusable { failureOf( json[1], json[2] ) };
   case 2:
      return Asked { json[1].GetUint64() };
   default:
      return answeredOf( json );
   }
}

} // namespace Serve
