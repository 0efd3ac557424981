#include "CheckCommand.h"

#include "Board.h"
#include "Check.h"
#include "JsonWriting.h"
#include "Output.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

Findings findingsOf( const std::string& folder ) {
   auto findings = missingFolder( folder );
   if ( !findings.empty() ) {
      return findings;
   }
   auto load = [&]( const char* name ) { return JsonFile::load( fs::path( folder ) / name, findings ); };
   auto topology = load( "topology.json" );
   auto objects = load( "objects.json" );
   Check::documents( topology.get(), objects.get(), findings );
   // What is for the emulated board and for the server need not be there.
   auto further = [&]( const char* name, auto check ) {
      if ( !fs::exists( fs::path( folder ) / name ) ) {
         return;
      }
      if ( auto file = load( name ) ) {
         check( *file, findings );
      }
   };
   further( "emulator.json", Check::emulator );
   further( "i2c-map.json", Check::adapters );
   Check::sort( findings );
   return findings;
}

std::string counted( const Findings& findings, Severity severity ) {
   auto count = std::count_if(
      findings.begin(), findings.end(), [=]( auto& finding ) { return finding.severity == severity; } );
   return fmt::format(
      "{} {}{}", count == 0 ? "no" : std::to_string( count ), wordFor( severity ), count == 1 ? "" : "s" );
}

std::string asText( const std::string& board, const Findings& findings ) {
   std::string text;
   for ( auto& finding : findings ) {
      text += forTerminal( finding.textWithSeverity() ) + '\n';
   }
   auto subject = board.empty() ? "" : forTerminal( board ) + ": ";
   return text + fmt::format( "{}{}, {}\n", subject, counted( findings, Severity::Error ),
                    counted( findings, Severity::Warning ) );
}

void writeNumber( Json::Writer& json, const char* key, std::optional<uint64_t> number ) {
   json.Key( key );
   number ? json.Uint64( *number ) : json.Null();
}

void writeFinding( Json::Writer& json, const Finding& finding ) {
   auto& place = finding.place;
   json.StartObject();
   Json::writeMember( json, "severity", wordFor( finding.severity ) );
   Json::writeMember( json, "file", finding.file );
   writeNumber( json, "line", place ? std::optional<uint64_t>( place->line ) : std::nullopt );
   writeNumber( json, "column", place ? std::optional<uint64_t>( place->column ) : std::nullopt );
   Json::writeMember( json, "pointer", finding.pointer );
   Json::writeMember( json, "reason", finding.reason );
   if ( finding.repair.empty() ) {
      json.Key( "repair" );
      json.Null();
   } else {
      Json::writeMember( json, "repair", finding.repair );
   }
   json.EndObject();
}

std::string asJson( const std::string& board, const Findings& findings ) {
   return Json::lineOf( [&]( Json::Writer& json ) {
      Json::writeMember( json, "board", board );
      json.Key( "findings" );
      json.StartArray();
      for ( auto& finding : findings ) {
         writeFinding( json, finding );
      }
      json.EndArray();
   } );
}

} // namespace

int checkCommand( const Options& options ) {
   auto findings = findingsOf( options.board );
   auto board = boardName( options.board );
   write( options.json ? asJson( board, findings ) : asText( board, findings ) );
   return hasErrors( findings ) ? exitUsage : exitGood;
}
