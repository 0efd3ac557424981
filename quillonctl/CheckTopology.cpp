#include "Check.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace Check {

namespace {

class TopologyCheck {
public:
   TopologyCheck( const JsonFile& file, const Inventory& inventory, std::vector<Finding>& findings )
      : file_( file ), inventory_( inventory ), findings_( findings ) {}

   void run() {
      siblings();
      devices();
      components();
      muxes();
      cpld();
   }

private:
   void find( const std::string& pointer, const std::string& reason ) {
      findings_.push_back( file_.at( pointer, reason ) );
   }

   void siblings() {
      for ( auto& [pointer, array] : inventory_.siblings ) {
         std::set<int64_t> ids;
         size_t index = 0;
         for ( auto& element : array->GetArray() ) {
            auto id = element["id"].GetInt64();
            if ( !ids.insert( id ).second ) {
               find( under( under( pointer, index ), "id" ), fmt::format( "one before has the id {}", id ) );
            }
            ++index;
         }
      }
   }

   void devices() {
      std::set<uint32_t> dids;
      for ( auto& device : inventory_.devices ) {
         if ( !dids.insert( device.did ).second ) {
            find(
               under( device.pointer, "did" ), fmt::format( "a device before has the did {}", device.did ) );
         }
         if ( device.json->HasMember( "driver" ) ) {
            arguments( file_, device.pointer, *device.json, findings_ );
         }
      }
   }

   void components() {
      std::set<uint32_t> uids;
      for ( auto& [uid, pointer] : inventory_.components ) {
         if ( !uids.insert( uid ).second ) {
            find( under( pointer, "uid" ), fmt::format( "a component before has the uid {}", uid ) );
         }
      }
   }

   void muxes() {
      for ( auto& [did, pointer] : inventory_.muxes ) {
         auto place = under( pointer, "did" );
         auto device = inventory_.find( did );
         auto driver = device ? member( *device->json, "driver" ) : nullptr;
         if ( !device ) {
            find( place, fmt::format( "there is no device {} that could switch", did ) );
         } else if ( !driver || driver->IsNull() ) {
            find( place, fmt::format( "device {}, which switches, must have a driver", did ) );
         } else if ( liesBehindItself( did ) ) {
            find( place, fmt::format( "device {}, which switches, is reached only through itself", did ) );
         }
      }
   }

   /** Whether the way to a device leads through a multiplexer that this device has to switch first. */
   bool liesBehindItself( uint32_t did ) const {
      std::set<uint32_t> seen;
      std::vector<uint32_t> open { did };
      while ( !open.empty() ) {
         auto device = inventory_.find( open.back() );
         open.pop_back();
         for ( auto next : device ? device->switches : std::vector<uint32_t> {} ) {
            if ( seen.insert( next ).second ) {
               open.push_back( next );
            }
         }
      }
      return seen.contains( did );
   }

   /** The library reaches the platform's CPLD by this label; where a label comes twice, the last one counts.
    */
   void cpld() {
      std::vector<std::string> places;
      for ( auto& [text, pointer] : inventory_.labels ) {
         if ( text == cpldLabel ) {
            places.push_back( pointer );
         }
      }
      if ( places.empty() ) {
         find( "", "no device has the label \"CpuCpld\", by which the library finds the platform's CPLD" );
         return;
      }
      std::for_each( places.begin() + 1, places.end(),
         [&]( auto& place ) { find( under( place, "label" ), "the label \"CpuCpld\" stands before" ); } );

      auto& place = places.front();
      auto device = inventory_.at( place );
      if ( !device ) {
         find( under( place, "label" ), "the label \"CpuCpld\" is for a device" );
      } else if ( !device->json->HasMember( "driver" ) ) {
         find( place, "the device \"CpuCpld\" needs the key \"driver\", null at least" );
      } else if ( deniesHam( *device->json ) ) {
         find( under( place, "provideHam" ), "must not be 0: the library reads and writes this device" );
      }
   }

   const JsonFile& file_;
   const Inventory& inventory_;
   std::vector<Finding>& findings_;
};

} // namespace

void topology( const JsonFile& file, const Inventory& inventory, std::vector<Finding>& findings ) {
   TopologyCheck( file, inventory, findings ).run();
}

} // namespace Check
