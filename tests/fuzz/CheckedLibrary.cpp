#include "CheckedLibrary.h"

#include "Check.h"
#include "Components/HardwareDevice.h"
#include "Ham/Ham.h"

#include <algorithm>
#include <cassert>

namespace {

bool liesIn( const std::string& text, const Place& place ) {
   auto lines = static_cast<size_t>( std::count( text.begin(), text.end(), '\n' ) ) + 1;
   return place.line >= 1 && place.line <= lines && place.column >= 1 && place.column <= text.size() + 1;
}

} // namespace

bool checkPasses( const std::string& topology, const std::string& objects ) {
   Findings findings;
   auto topologyFile = JsonFile::parse( "topology.json", topology, findings );
   auto objectsFile = JsonFile::parse( "objects.json", objects, findings );
   Check::documents( topologyFile.get(), objectsFile.get(), findings );
   Check::sort( findings );
   for ( auto& finding : findings ) {
      auto& text = finding.file == "topology.json" ? topology : objects;
      assert( !finding.reason.empty() && finding.place && liesIn( text, *finding.place ) );
      assert( finding.textWithSeverity().starts_with( finding.file ) );
   }
   return !hasErrors( findings );
}

bool isNestedShallowly( const std::string& text ) {
   constexpr int deepest = 500;
   return std::count( text.begin(), text.end(), '[' ) + std::count( text.begin(), text.end(), '{' ) < deepest;
}

void forgetDevices() {
   Ham::hams.at( "SimHam" ) = Ham::hams.at( "QuillonSmbus" );
   Component::DeviceBase::devices.clear();
}
