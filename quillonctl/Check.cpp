#include "Check.h"

#include "Schema.h"

#include <algorithm>
#include <utility>

namespace Check {

Subject::Subject( const JsonFile& file, Findings& findings ) : file_( file ), findings_( findings ) {
   for ( auto& finding : findings ) {
      if ( finding.file == file.name() ) {
         broken_.push_back( finding.pointer );
      }
   }
}

bool Subject::isSound( const std::string& pointer ) const {
   return std::none_of( broken_.begin(), broken_.end(),
      [&]( auto& broken ) { return broken == pointer || broken.starts_with( pointer + '/' ); } );
}

void Subject::error(
   const std::string& pointer, const std::string& reason, const std::string& repair ) const {
   findings_.push_back( file_.error( pointer, reason, repair ) );
}

void Subject::warning(
   const std::string& pointer, const std::string& reason, const std::string& repair ) const {
   findings_.push_back( file_.warning( pointer, reason, repair ) );
}

void Subject::warningAtKey(
   const std::string& pointer, const std::string& reason, const std::string& repair ) const {
   findings_.push_back( file_.warningAtKey( pointer, reason, repair ) );
}

void Subject::unread(
   const std::string& place, const rapidjson::Value& value, const std::string& pointer ) const {
   Schema::findUnread( place, file_, value, pointer, findings_ );
}

void documents( const JsonFile* topologyFile, const JsonFile* objectsFile, Findings& findings ) {
   Inventory inventory;
   bool isWhole = false;
   if ( topologyFile ) {
      Schema::check( "topology", *topologyFile, findings );
      Subject subject( *topologyFile, findings );
      inventory = takeInventory( topologyFile->document() );
      isWhole = subject.isSound();
      topology( subject, inventory );
      subject.unread( "/definitions/topology", topologyFile->document(), "" );
   }
   if ( objectsFile ) {
      Schema::check( "objects", *objectsFile, findings );
      Subject subject( *objectsFile, findings );
      // What breaks the topology's schema may be the very device that an object names.
      auto found = objects( subject, isWhole ? &inventory : nullptr );
      neighbours( subject, found );
   }
}

void sort( Findings& findings ) {
   // The names of the files come in reverse order of the alphabet.
   std::stable_sort( findings.begin(), findings.end(), []( auto& a, auto& b ) {
      auto place = []( auto& finding ) { return finding.place.value_or( Place { 0, 0 } ); };
      return a.file == b.file ? std::pair( place( a ).line, place( a ).column ) <
                                   std::pair( place( b ).line, place( b ).column )
                              : a.file > b.file;
   } );
}

} // namespace Check
