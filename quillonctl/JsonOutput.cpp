#include "JsonWriting.h"

#include "Statuses.h"

#include <rapidjson/memorystream.h>

#include <cmath>

namespace Json {

namespace {

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
   writeKey( json, field.key );
   if ( auto text = std::get_if<std::string>( &value ) ) {
      writeText( json, *text );
   } else if ( auto number = std::get_if<double>( &value ) ) {
      writeNumber( json, *number, field );
   } else if ( auto flag = std::get_if<bool>( &value ) ) {
      json.Bool( *flag );
   } else {
      json.Null();
   }
}

} // namespace

void writeText( Writer& json, const std::string& text ) {
   auto valid = validUtf8( text );
   json.String( valid.data(), static_cast<rapidjson::SizeType>( valid.size() ) );
}

void writeKey( Writer& json, std::string_view key ) {
   json.Key( key.data(), static_cast<rapidjson::SizeType>( key.size() ) );
}

void writeMember( Writer& json, std::string_view key, const std::string& text ) {
   writeKey( json, key );
   writeText( json, text );
}

void writeError( Writer& json, const std::optional<Failure>& failure ) {
   writeKey( json, "error" );
   if ( !failure ) {
      json.Null();
      return;
   }
   json.StartObject();
   writeMember( json, "status", "QL_STATUS_" + wordsOf( failure->status ).name );
   writeKey( json, "code" );
   json.Uint( static_cast<unsigned>( failure->status ) );
   writeMember( json, "message", failure->message );
   json.EndObject();
}

void writeObject( Writer& json, const StatusLine& line ) {
   json.StartObject();
   writeMember( json, "kind", std::string( line.object->kind->name ) );
   writeMember( json, "name", line.object->name );
   for ( size_t i = 0; i < line.fields.size(); ++i ) {
      writeValue( json, line.fields[i], line.reading.values[i] );
   }
   writeMember( json, "state", std::string( line.reading.state ) );
   writeError( json, line.reading.failure );
   json.EndObject();
}

std::string lineOf( const std::function<void( Writer& )>& writeMembers ) {
   rapidjson::StringBuffer text;
   Writer json( text );
   json.StartObject();
   writeMembers( json );
   json.EndObject();
   return std::string( text.GetString(), text.GetSize() ) + '\n';
}

} // namespace Json

std::string asJson(
   const std::string& board, const std::vector<StatusLine>& lines, const std::vector<std::string>& errors ) {
   return Json::lineOf( [&]( auto& json ) {
      Json::writeMember( json, "board", board );
      Json::writeKey( json, "objects" );
      json.StartArray();
      for ( auto& line : lines ) {
         Json::writeObject( json, line );
      }
      json.EndArray();
      Json::writeKey( json, "errors" );
      json.StartArray();
      for ( auto& error : errors ) {
         Json::writeText( json, error );
      }
      json.EndArray();
   } );
}
