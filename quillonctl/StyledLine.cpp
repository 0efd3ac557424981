#include "StyledLine.h"

#include "TextCells.h"

namespace {

bool isContinuation( char c ) { return ( c & 0xC0 ) == 0x80; }

/** The first characters of a text in UTF-8. */
std::string first( const std::string& text, size_t width ) {
   size_t end = 0;
   for ( ; end < text.size(); ++end ) {
      if ( !isContinuation( text[end] ) && width-- == 0 ) {
         break;
      }
   }
   return text.substr( 0, end );
}

/** Of the characters that ASCII has not, the degree is the one that may as well be missing. */
std::string asAscii( const std::string& text ) {
   std::string ascii;
   for ( size_t i = 0; i < text.size(); ++i ) {
      auto isDegree = text.compare( i, 2, "°" ) == 0;
      if ( !( text[i] & 0x80 ) ) {
         ascii += text[i];
      } else if ( !isContinuation( text[i] ) ) {
         ascii += isDegree ? ' ' : '?';
      }
   }
   return ascii;
}

} // namespace

void StyledLine::add( const std::string& text, const std::string& style ) {
   parts_.push_back( { text, style } );
   width_ += TextCells::widthOf( text );
}

void StyledLine::moveTo( size_t column ) {
   if ( width_ < column ) {
      add( std::string( column - width_, ' ' ) );
   }
}

std::string StyledLine::rendered( const Look& look ) const {
   auto isCut = width_ > look.columns;
   auto left = look.columns - ( isCut ? 1 : 0 );
   std::string line;
   for ( auto& [text, style] : parts_ ) {
      auto shown = first( look.isUnicode ? text : asAscii( text ), left );
      left -= TextCells::widthOf( shown );
      line += style.empty() || shown.empty() ? shown : style + shown + "\033[0m";
   }
   if ( isCut ) {
      return line + ( look.isUnicode ? "…" : ">" );
   }
   // In the last column the cursor stands on the last character.
   return width_ == look.columns ? line : line + "\033[K";
}
