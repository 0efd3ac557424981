#include "WatchReader.h"

#include "Statuses.h"

#include <rapidjson/document.h>

#include <set>

namespace {

Value valueOf( const rapidjson::Value& json ) {
   if ( json.IsNumber() ) {
      return json.GetDouble();
   }
   if ( json.IsBool() ) {
      return json.GetBool();
   }
   return json.IsString() ? Value( json.GetString() ) : Value();
}

/** States are a few words, which stay. */
std::string_view stateOf( const rapidjson::Value& json ) {
   static std::set<std::string> words;
   return *words.insert( json.GetString() ).first;
}

} // namespace

std::optional<std::vector<Reading>> readingsOf(
   const std::string& line, const std::vector<const ObjectEntry*>& objects ) {
   rapidjson::Document document;
   if ( document.Parse( line.c_str(), line.size() ).HasParseError() || !document.IsObject() ) {
      return {};
   }
   std::vector<Reading> readings;
   for ( rapidjson::SizeType i = 0; i < objects.size(); ++i ) {
      auto& json = document["objects"][i];
      Reading reading { {}, stateOf( json["state"] ), {} };
      for ( auto& field : objects[i]->kind->fields ) {
         reading.values.push_back( valueOf( json[std::string( field.key ).c_str()] ) );
      }
      auto& error = json["error"];
      if ( error.IsObject() ) {
         reading.failure =
            Failure { static_cast<ql_status>( error["code"].GetUint() ), error["message"].GetString() };
      }
      readings.push_back( std::move( reading ) );
   }
   return readings;
}
