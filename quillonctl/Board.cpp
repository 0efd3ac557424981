#include "Board.h"

#include "Check.h"
#include "JsonFile.h"

#include <fmt/format.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

/** @throw InputError with the errors, if there are any */
void refuse( Findings& findings ) {
   Check::sort( findings );
   std::vector<std::string> sentences;
   for ( auto& finding : findings ) {
      if ( finding.severity == Severity::Error ) {
         sentences.push_back( finding.text() );
      }
   }
   if ( !sentences.empty() ) {
      throw InputError( sentences );
   }
}

std::optional<double> number( const rapidjson::Value& object, const char* key ) {
   auto value = member( object, key );
   return value ? std::optional( value->GetDouble() ) : std::nullopt;
}

/** A whole number, or a text of its digits, as drivers take them. */
int wholeNumber( const rapidjson::Value& value ) {
   return value.IsString() ? std::stoi( textOf( value ) ) : value.GetInt();
}

ObjectEntry entryOf( const rapidjson::Value& object ) {
   ObjectEntry entry { findKind( textOf( object["kind"] ) ), textOf( object["name"] ),
      number( object, "alert" ), number( object, "critical" ), {}, {}, "{}" };
   auto args = member( object, "args" );
   if ( args ) {
      entry.args = compact( *args );
   }
   if ( entry.kind == &fanKind ) {
      entry.maxRpm = wholeNumber( ( *args )["driverArgs"]["maxRpm"] );
   }
   if ( entry.kind != &systemKind ) {
      entry.did = ( *args )["did"].GetUint();
   }
   return entry;
}

} // namespace

std::string boardName( const std::string& folder ) {
   std::error_code error;
   auto whole = fs::weakly_canonical( folder, error );
   return error ? folder : whole.filename().string();
}

Findings missingFolder( const std::string& folder ) {
   std::error_code error;
   if ( fs::is_directory( folder, error ) ) {
      return {};
   }
   auto why = error ? error.message() : "it is no folder";
   auto reason = folder.empty() ? "the name of the board's folder is empty"
                                : fmt::format( "no board at {}: {}", folder, why );
   return { { Severity::Error, folder, {}, "", reason,
      "name a folder that holds topology.json and objects.json with --board" } };
}

Board Board::load( const std::string& folder ) {
   auto findings = missingFolder( folder );
   refuse( findings );
   auto topology = JsonFile::load( fs::path( folder ) / "topology.json", findings );
   auto objects = JsonFile::load( fs::path( folder ) / "objects.json", findings );
   Check::documents( topology.get(), objects.get(), findings );
   refuse( findings );
   Board board { boardName( folder ), topology->text(), takeInventory( topology->document() ).cpld()->did,
      {} };
   for ( auto& object : objects->document()["objects"].GetArray() ) {
      board.objects.push_back( entryOf( object ) );
   }
   return board;
}
