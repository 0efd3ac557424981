#include "Board.h"

#include "Check.h"
#include "JsonFile.h"
#include "Schema.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <tuple>

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/** @throw InputError when a document can't be read */
void requireDocuments( const fs::path& folder ) {
   std::vector<std::string> sentences;
   for ( auto name : { "topology.json", "objects.json" } ) {
      auto file = folder / name;
      std::error_code ignored;
      if ( fs::is_directory( file, ignored ) ) {
         sentences.push_back( fmt::format(
            "cannot read {}: it is a folder; put the document there, or name another board with --board",
            file.string() ) );
      } else if ( access( file.c_str(), R_OK ) != 0 ) {
         auto reason = errno;
         sentences.push_back(
            fmt::format( "cannot read {}: {}; {} with --board", file.string(), strerror( reason ),
               reason == EACCES ? "make it readable, or name another board"
                                : "name a folder that holds topology.json and objects.json" ) );
      }
   }
   if ( !sentences.empty() ) {
      throw InputError( sentences );
   }
}

/** A document that keeps its schema, or null with findings. */
std::unique_ptr<JsonFile> loadDocument(
   const fs::path& folder, const std::string& name, std::vector<Finding>& findings ) {
   auto before = findings.size();
   auto file = JsonFile::load( folder / ( name + ".json" ), findings );
   if ( findings.size() > before ) {
      return nullptr;
   }
   if ( auto breach = Schema::check( name, *file ) ) {
      findings.push_back( *breach );
      return nullptr;
   }
   return file;
}

[[noreturn]] void refuse( std::vector<Finding>& findings ) {
   std::stable_sort( findings.begin(), findings.end(), []( auto& a, auto& b ) {
      // Topology first, as it was read first; within a file from top to bottom.
      return a.file == b.file
                ? std::tie( a.place.line, a.place.column ) < std::tie( b.place.line, b.place.column )
                : a.file > b.file;
   } );
   std::vector<std::string> sentences;
   for ( auto& finding : findings ) {
      sentences.push_back( finding.text() );
   }
   throw InputError( sentences );
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

/** The device with the CPLD's label, which a checked topology has. */
uint32_t cpldOf( const Inventory& topology ) {
   auto label = std::find_if( topology.labels.begin(), topology.labels.end(),
      []( auto& candidate ) { return candidate.text == cpldLabel; } );
   return topology.at( label->pointer )->did;
}

} // namespace

std::string boardName( const std::string& folder ) {
   std::error_code error;
   auto whole = fs::weakly_canonical( folder, error );
   return error ? folder : whole.filename().string();
}

Board Board::load( const std::string& folder ) {
   std::error_code error;
   if ( !fs::is_directory( folder, error ) ) {
      auto reason = error ? error.message() : "it is no folder";
      throw InputError( { fmt::format(
         "no board at {}: {}; name a folder that holds topology.json and objects.json with --board", folder,
         reason ) } );
   }
   requireDocuments( folder );
   std::vector<Finding> findings;
   auto topology = loadDocument( folder, "topology", findings );
   auto objects = loadDocument( folder, "objects", findings );
   if ( topology ) {
      auto inventory = takeInventory( topology->document() );
      Check::topology( *topology, inventory, findings );
      if ( objects ) {
         Check::objects( *objects, inventory, findings );
      }
   }
   if ( !findings.empty() ) {
      refuse( findings );
   }
   Board board { boardName( folder ), topology->text(), cpldOf( takeInventory( topology->document() ) ), {} };
   for ( auto& object : objects->document()["objects"].GetArray() ) {
      board.objects.push_back( entryOf( object ) );
   }
   return board;
}
