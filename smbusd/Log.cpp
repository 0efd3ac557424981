#include "Log.h"

#include <systemd/sd-daemon.h>

#include <cstdio>
#include <cstdlib>

namespace Smbusd::Log {

Level threshold = Level::Info;

namespace {

const char* journalPrefix( Level level ) {
   static const bool underJournal = std::getenv( "JOURNAL_STREAM" ) != nullptr;
   if ( !underJournal ) {
      return "";
   }
   switch ( level ) {
   case Level::Error:
      return SD_ERR;
   case Level::Warning:
      return SD_WARNING;
   case Level::Info:
      return SD_INFO;
   case Level::Debug:
      return SD_DEBUG;
   }
   return "";
}

} // namespace

void write( Level level, std::string_view text ) {
   auto line = fmt::format( "{}quillon-smbusd: {}\n", journalPrefix( level ), text );
   std::fwrite( line.data(), 1, line.size(), stderr );
}

} // namespace Smbusd::Log
