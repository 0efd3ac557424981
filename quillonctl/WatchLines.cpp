#include "Watch.h"

#include "JsonWriting.h"
#include "TextCells.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <map>

namespace {

bool isSame( const std::optional<Failure>& one, const std::optional<Failure>& other ) {
   return one.has_value() == other.has_value() &&
          ( !one || ( one->status == other->status && one->message == other->message ) );
}

/** In UTC: "2026-01-31T23:59:59.123Z". */
std::string timeOf( const Round& round ) {
   using namespace std::chrono;
   auto whole = floor<seconds>( round.time );
   auto milliseconds = duration_cast<std::chrono::milliseconds>( round.time - whole ).count();
   return fmt::format(
      "{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime( system_clock::to_time_t( whole ) ), milliseconds );
}

class JsonLines : public WatchView {
public:
   explicit JsonLines( const std::string& board ) : board_( board ) {}

   void show( const Round& round ) override {
      auto isFirst = round.before.empty();
      std::string text;
      for ( size_t i = 0; i < round.lines.size(); ++i ) {
         auto changes = changesOf( round, i );
         if ( isFirst || !changes.empty() ) {
            text += lineOf( round, i, changes );
         }
      }
      write( text );
   }

private:
   std::string lineOf( const Round& round, size_t index, const std::vector<std::string>& changes ) const {
      return Json::lineOf( [&]( auto& json ) {
         Json::writeMember( json, "board", board_ );
         Json::writeMember( json, "time", timeOf( round ) );
         Json::writeMember( json, "event", round.before.empty() ? "initial" : "change" );
         Json::writeKey( json, "changed" );
         json.StartArray();
         for ( auto& key : changes ) {
            Json::writeText( json, key );
         }
         json.EndArray();
         Json::writeKey( json, "object" );
         Json::writeObject( json, round.lines[index] );
      } );
   }

   const std::string board_;
};

class TextLines : public WatchView {
public:
   explicit TextLines( bool isBrief ) : isBrief_( isBrief ) {}

   void show( const Round& round ) override {
      std::string text;
      for ( size_t i = 0; i < round.lines.size(); ++i ) {
         auto isSummed = isBrief_ && round.lines[i].object->kind->summary;
         auto words = isSummed ? "" : wordsOf( round, i );
         if ( !words.empty() ) {
            text += fmt::format( "{} {}: {}\n", timeOf( round ), round.lines[i].object->name, words );
         }
      }
      if ( isBrief_ ) {
         text += summariesOf( round );
      }
      write( text );
   }

private:
   /** The values of the first round, and later those that have changed. */
   static std::string wordsOf( const Round& round, size_t index ) {
      auto& line = round.lines[index];
      auto changes = changesOf( round, index );
      auto isNews = [&]( std::string_view key ) {
         return round.before.empty() || std::find( changes.begin(), changes.end(), key ) != changes.end();
      };
      std::vector<std::string> words;
      for ( size_t i = 0; i < line.fields.size(); ++i ) {
         auto& field = line.fields[i];
         if ( !field.heading.empty() && isNews( field.key ) ) {
            std::string name( field.heading );
            std::transform( name.begin(), name.end(), name.begin(),
               []( unsigned char c ) { return static_cast<char>( std::tolower( c ) ); } );
            words.push_back(
               fmt::format( "{} {}", name, TextCells::textOf( line.reading.values[i], field ) ) );
         }
      }
      if ( isNews( "state" ) || isNews( "error" ) ) {
         words.push_back( "status " + TextCells::statusOf( line.reading ) );
      }
      return fmt::format( "{}", fmt::join( words, ", " ) );
   }

   std::string summariesOf( const Round& round ) {
      std::string text;
      for ( auto kind : kinds() ) {
         auto summary = summaryOf( *kind, round.lines );
         if ( summary != told_[kind] ) {
            text += fmt::format( "{} {}: {}", timeOf( round ), kind->title, summary );
            told_[kind] = summary;
         }
      }
      return text;
   }

   const bool isBrief_;
   std::map<const Kind*, std::string> told_;
};

} // namespace

std::vector<std::string> changesOf( const Round& round, size_t index ) {
   std::vector<std::string> changes;
   if ( round.before.empty() ) {
      return changes;
   }
   auto& [object, fields, now] = round.lines[index];
   auto& before = round.before[index];
   for ( size_t i = 0; i < fields.size(); ++i ) {
      if ( now.values[i] != before.values[i] ) {
         changes.emplace_back( fields[i].key );
      }
   }
   if ( now.state != before.state ) {
      changes.emplace_back( "state" );
   }
   if ( !isSame( now.failure, before.failure ) ) {
      changes.emplace_back( "error" );
   }
   return changes;
}

std::unique_ptr<WatchView> watchAsJson( const std::string& board ) {
   return std::make_unique<JsonLines>( board );
}

std::unique_ptr<WatchView> watchAsText( bool isBrief ) { return std::make_unique<TextLines>( isBrief ); }
