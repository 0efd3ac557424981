#include "Terminal.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace {

// Alternate screen, no cursor, and no wrapping at the right edge, where a line may be wider than it seems.
constexpr const char* begin = "\033[?1049h\033[?25l\033[?7l\033[2J";
constexpr const char* end = "\033[0m\033[?7h\033[?25h\033[?1049l";

} // namespace

Terminal::Terminal() { enter(); }

Terminal::~Terminal() { leave(); }

bool Terminal::isThere() {
   auto type = getenv( "TERM" );
   return isatty( STDOUT_FILENO ) && type && *type && std::string_view( type ) != "dumb";
}

bool Terminal::isUnicode() {
   for ( auto variable : { "LC_ALL", "LC_CTYPE", "LANG" } ) {
      auto value = getenv( variable );
      if ( value && *value ) {
         std::string locale = value;
         std::transform( locale.begin(), locale.end(), locale.begin(),
            []( unsigned char c ) { return static_cast<char>( std::tolower( c ) ); } );
         return locale.find( "utf-8" ) != locale.npos || locale.find( "utf8" ) != locale.npos;
      }
   }
   return false;
}

Terminal::Size Terminal::size() const {
   winsize size {};
   ioctl( STDOUT_FILENO, TIOCGWINSZ, &size );
   return size.ws_col && size.ws_row ? Size { size.ws_col, size.ws_row } : Size { 80, 24 };
}

void Terminal::draw( const std::string& frame ) const {
   for ( size_t done = 0; done < frame.size(); ) {
      auto count = write( STDOUT_FILENO, frame.data() + done, frame.size() - done );
      if ( count < 0 && errno != EINTR ) {
         return; // nobody is there any more; a signal tells
      }
      done += static_cast<size_t>( std::max<ssize_t>( count, 0 ) );
   }
}

void Terminal::leave() {
   if ( before_ ) {
      tcsetattr( STDIN_FILENO, TCSANOW, &*before_ );
   }
   draw( end );
}

void Terminal::enter() {
   termios mode {};
   if ( tcgetattr( STDIN_FILENO, &mode ) == 0 ) {
      before_ = mode;
      mode.c_lflag &= ~static_cast<tcflag_t>( ECHO | ICANON );
      tcsetattr( STDIN_FILENO, TCSANOW, &mode );
   }
   draw( begin );
}
