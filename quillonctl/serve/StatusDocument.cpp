#include "StatusDocument.h"

#include "JsonWriting.h"

namespace Serve {

namespace {

using Json::Writer;

/** Since when the library is at something, or nothing. */
void writeBusy( Writer& json, const Snapshot& snapshot ) {
   auto& busy = snapshot.busy();
   if ( !busy ) {
      json.Null();
      return;
   }
   json.StartObject();
   Json::writeMember( json, "object", snapshot.objects()[busy->object].entry->name );
   json.Key( "seconds" );
   json.Double( secondsSince( busy->since ) );
   json.EndObject();
}

void writeAges( Writer& json, const Snapshot& snapshot ) {
   json.StartArray();
   for ( auto& object : snapshot.objects() ) {
      if ( object.answeredAt ) {
         json.Double( secondsSince( *object.answeredAt ) );
      } else {
         json.Null();
      }
   }
   json.EndArray();
}

/** What LEDs are set to, by name; of those that are not there it is not known. */
void writeLedSettings( Writer& json, const Snapshot& snapshot ) {
   json.StartObject();
   for ( auto& object : snapshot.objects() ) {
      auto setting = snapshot.settingOf( object );
      if ( !setting.empty() ) {
         Json::writeMember( json, object.entry->name.c_str(), setting );
      }
   }
   json.EndObject();
}

} // namespace

std::string statusDocument(
   const Snapshot& snapshot, const std::string& board, std::chrono::duration<double> interval ) {
   std::vector<StatusLine> lines;
   for ( auto& object : snapshot.objects() ) {
      lines.push_back( snapshot.lineOf( object ) );
   }
   auto status = asJson( board, lines, {} );
   return Json::lineOf( [&]( Writer& json ) {
      json.SetMaxDecimalPlaces( 3 );
      Json::writeMember( json, "version", QUILLON_VERSION );
      json.Key( "interval_seconds" );
      json.Double( interval.count() );
      json.Key( "old_after_seconds" );
      json.Double( std::chrono::duration<double>( snapshot.oldAfter() ).count() );
      json.Key( "busy" );
      writeBusy( json, snapshot );
      json.Key( "ages_seconds" );
      writeAges( json, snapshot );
      json.Key( "led_settings" );
      writeLedSettings( json, snapshot );
      json.Key( "status" );
      json.RawValue( status.data(), status.size(), rapidjson::kObjectType );
   } );
}

} // namespace Serve
