#include "Output.h"

#include "Statuses.h"

#include <rapidjson/memorystream.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cmath>

namespace {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

/** The text with a "?" for what is no UTF-8: paths and the library's words are not ours. */
std::string validUtf8( const std::string& text ) {
   rapidjson::MemoryStream in( text.data(), text.size() );
   std::string valid;
   while ( in.Tell() < text.size() ) {
      rapidjson::StringBuffer character;
      auto begin = in.Tell();
      if ( rapidjson::UTF8<>::Validate( in, character ) ) {
         valid += text.substr( begin, in.Tell() - begin );
      } else {
         valid += '?';
      }
   }
   return valid;
}

void writeString( Writer& json, std::string_view key, const std::string& value ) {
   json.Key( key.data(), static_cast<rapidjson::SizeType>( key.size() ) );
   json.String( validUtf8( value ).c_str() );
}

void writeNumber( Writer& json, double value, const Field& field ) {
   if ( !std::isfinite( value ) ) {
      json.Null();
   } else if ( field.decimals == 0 ) {
      json.Int64( std::llround( value ) );
   } else {
      json.Double( value );
   }
}

void writeValue( Writer& json, const Field& field, const Value& value ) {
   if ( auto text = std::get_if<std::string>( &value ) ) {
      writeString( json, field.key, *text );
      return;
   }
   json.Key( field.key.data(), static_cast<rapidjson::SizeType>( field.key.size() ) );
   if ( auto number = std::get_if<double>( &value ) ) {
      writeNumber( json, *number, field );
   } else if ( auto flag = std::get_if<bool>( &value ) ) {
      json.Bool( *flag );
   } else {
      json.Null();
   }
}

void writeFailure( Writer& json, const std::optional<Failure>& failure ) {
   json.Key( "error" );
   if ( !failure ) {
      json.Null();
      return;
   }
   json.StartObject();
   writeString( json, "status", "QL_STATUS_" + wordsOf( failure->status ).name );
   json.Key( "code" );
   json.Uint( static_cast<unsigned>( failure->status ) );
   writeString( json, "message", failure->message );
   json.EndObject();
}

void writeObject( Writer& json, const StatusLine& line ) {
   json.StartObject();
   writeString( json, "kind", std::string( line.object->kind->name ) );
   writeString( json, "name", line.object->name );
   for ( size_t i = 0; i < line.fields.size(); ++i ) {
      writeValue( json, line.fields[i], line.reading.values[i] );
   }
   writeString( json, "state", std::string( line.reading.state ) );
   writeFailure( json, line.reading.failure );
   json.EndObject();
}

} // namespace

std::string asJson(
   const std::string& board, const std::vector<StatusLine>& lines, const std::vector<std::string>& errors ) {
   rapidjson::StringBuffer text;
   Writer json( text );
   json.StartObject();
   writeString( json, "board", board );
   json.Key( "objects" );
   json.StartArray();
   for ( auto& line : lines ) {
      writeObject( json, line );
   }
   json.EndArray();
   if ( !errors.empty() ) {
      json.Key( "errors" );
      json.StartArray();
      for ( auto& error : errors ) {
         json.String( validUtf8( error ).c_str() );
      }
      json.EndArray();
   }
   json.EndObject();
   return std::string( text.GetString(), text.GetSize() ) + '\n';
}
