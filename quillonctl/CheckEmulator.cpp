#include "Check.h"
#include "Schema.h"

#include "emulator/BoardFile.h"

namespace Check {

void emulator( const JsonFile& file, Findings& findings ) {
   Schema::check( "emulator", file, findings );
   Subject subject( file, findings );
   if ( !subject.isSound() ) {
      return;
   }
   for ( auto& [place, reason] : Emulator::checkBoard( file.document() ) ) {
      subject.error( place, reason );
   }
}

} // namespace Check
