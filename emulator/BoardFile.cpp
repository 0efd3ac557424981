#include "BoardFile.h"

#include "BoardSchema.h"
#include "ChipFactory.h"
#include "Text.h"

#include "common/TextFile.h"

#include <fmt/format.h>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include <algorithm>

namespace Emulator {

namespace {

std::string readFile( const std::string& file ) {
   try {
      return Common::readTextFile( file );
   } catch ( const Common::TextFileError& error ) {
      throw BoardFileError( fmt::format( "{}: cannot be read: {}", file, error.what() ) );
   }
}

BoardFileError syntaxError(
   const std::string& file, std::string_view text, const rapidjson::Document& document ) {
   auto before = text.substr( 0, document.GetErrorOffset() );
   auto line = 1 + std::ranges::count( before, '\n' );
   // npos + 1 is 0: the first line starts there.
   auto column = 1 + before.size() - ( before.rfind( '\n' ) + 1 );
   return BoardFileError( fmt::format(
      "{}:{}:{}: {}", file, line, column, rapidjson::GetParseError_En( document.GetParseError() ) ) );
}

std::string textOf( const rapidjson::Value& value ) {
   if ( value.IsString() ) {
      return { value.GetString(), value.GetStringLength() };
   }
   return format( value.GetDouble() );
}

Board::Place makePlace( const rapidjson::Value& json ) {
   Options options;
   if ( json.HasMember( "options" ) ) {
      for ( auto& member : json["options"].GetObject() ) {
         options[textOf( member.name )] = textOf( member.value );
      }
   }
   auto chip = makeChip( textOf( json["part"] ), options );
   if ( json.HasMember( "set" ) ) {
      for ( auto& member : json["set"].GetObject() ) {
         chip->set( textOf( member.name ), textOf( member.value ) );
      }
   }
   return { textOf( json["name"] ), json["bus"].GetUint(), static_cast<uint8_t>( json["address"].GetUint() ),
      std::move( chip ) };
}

/** Builds what it can of a board. */
class Builder {
public:
   explicit Builder( const rapidjson::Document& document, Board::Clock clock = Board::machineTime )
      : board( std::move( clock ) ) {
      auto chips = document["chips"].GetArray();
      for ( rapidjson::SizeType i = 0; i < chips.Size(); ++i ) {
         at( fmt::format( "/chips/{}", i ), [&] { board.add( makePlace( chips[i] ) ); } );
      }
      if ( document.HasMember( "wires" ) && failures.empty() ) {
         auto wires = document["wires"].GetArray();
         for ( rapidjson::SizeType i = 0; i < wires.Size(); ++i ) {
            connect( fmt::format( "/wires/{}", i ), wires[i] );
         }
      }
   }

   Board board;
   std::vector<BoardFailure> failures;

private:
   /** @return whether it was done */
   template <typename Action>
   bool at( const std::string& place, Action action ) {
      try {
         action();
         return true;
      } catch ( const std::invalid_argument& error ) {
         failures.push_back( { place, error.what() } );
         return false;
      }
   }

   void connect( const std::string& place, const rapidjson::Value& json ) {
      Board::Pin from {};
      Board::Pin to {};
      auto hasFrom = at( place + "/from", [&] { from = board.pin( textOf( json["from"] ) ); } );
      auto hasTo = at( place + "/to", [&] { to = board.pin( textOf( json["to"] ) ); } );
      if ( hasFrom && hasTo ) {
         at( place + "/to", [&] { board.connect( from, to ); } );
      }
   }
};

} // namespace

Board loadBoard( const std::string& file, Board::Clock clock ) {
   return parseBoard( file, readFile( file ), std::move( clock ) );
}

Board parseBoard( const std::string& file, std::string_view text, Board::Clock clock ) {
   // Iterative, so that deep nesting does not overflow the stack. Not with full precision: rapidjson
   // normalises the significand of "0e-66" then, and counts the leading zeros of 0.
   constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
   rapidjson::Document document;
   document.Parse<flags>( text.data(), text.size() );
   if ( document.HasParseError() ) {
      throw syntaxError( file, text, document );
   }
   if ( auto failure = checkBoardSchema( document ) ) {
      throw BoardFileError( fmt::format( "{}: {}: {}", file, failure->place, failure->reason ) );
   }
   Builder builder( document, std::move( clock ) );
   if ( !builder.failures.empty() ) {
      auto& [place, reason] = builder.failures.front();
      throw BoardFileError( fmt::format( "{}: {}: {}", file, place, reason ) );
   }
   return std::move( builder.board );
}

std::vector<BoardFailure> checkBoard( const rapidjson::Document& document ) {
   return Builder( document ).failures;
}

} // namespace Emulator
