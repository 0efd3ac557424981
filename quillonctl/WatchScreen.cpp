#include "WatchScreen.h"

#include "WatchFrame.h"

#include <fmt/format.h>

#include <csignal>

namespace {

/** More lines of others than a screen has room for. */
constexpr size_t mostTold = 20;

} // namespace

WatchScreen::WatchScreen( const std::string& board, double interval, bool isBrief )
   : board_( board ), interval_( interval ), isBrief_( isBrief ) {
   draw();
}

void WatchScreen::show( const Round& round ) {
   round_ = round;
   histories_.resize( round.lines.size() );
   for ( size_t i = 0; i < round.lines.size(); ++i ) {
      auto& [object, fields, reading] = round.lines[i];
      if ( auto field = historyField( *object->kind ) ) {
         auto number = std::get_if<double>( &reading.values[*field] );
         histories_[i].add( number ? std::optional( *number ) : std::nullopt );
      }
   }
   draw();
}

void WatchScreen::tell( const std::string& line ) {
   told_.push_back( line );
   if ( told_.size() > mostTold ) {
      told_.pop_front();
   }
}

void WatchScreen::draw() const {
   auto [columns, rows] = terminal_.size();
   WatchContent content { board_, fmt::format( "every {} s", interval_ ), ageOfRound(),
      round_.lines.empty() ? nullptr : &round_, histories_, isBrief_, messages() };
   terminal_.draw( frameOf( content, { columns, rows, Terminal::isUnicode(), colourIsWelcome() } ) );
}

void WatchScreen::suspend() {
   terminal_.leave();
   raise( SIGSTOP );
   terminal_.enter();
   draw();
}

/** Nothing for a round that is as young as it should be. */
std::string WatchScreen::ageOfRound() const {
   std::chrono::duration<double> age = std::chrono::system_clock::now() - round_.time;
   auto isLate = !round_.lines.empty() && age.count() > interval_ + 1;
   return isLate ? fmt::format( "{:.0f} s old", age.count() ) : "";
}

/** Why objects fail now, and behind that the last lines of others. */
std::vector<std::string> WatchScreen::messages() const {
   std::vector<const StatusLine*> failed;
   for ( auto& line : round_.lines ) {
      if ( line.reading.failure ) {
         failed.push_back( &line );
      }
   }
   auto messages = complaintsOf( failed );
   messages.insert( messages.end(), told_.rbegin(), told_.rend() );
   return messages;
}
