#include "Check.h"
#include "Nearest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

namespace Check {

namespace {

/** The hams of the library, as JSON. */
const std::vector<std::string> hams = { "\"QuillonSmbus\"", "\"SimHam\"" };

/** A "uid" that stands for none. */
constexpr uint32_t noUid = 0xFFFFFFFF;

/** Bits of a bus number and of an accelerator number in the address word. */
constexpr uint32_t fieldMask = 0x7F;

bool isHam( const std::string& name ) {
   return std::find( hams.begin(), hams.end(), '"' + name + '"' ) != hams.end();
}

std::string otherHam( const std::string& name ) {
   auto meant = didYouMean( '"' + name + '"', hams );
   return meant.empty() ? fmt::format( "use {}", fmt::join( hams, " or " ) ) : meant;
}

class TopologyCheck {
public:
   TopologyCheck( const Subject& subject, const Inventory& inventory )
      : subject_( subject ), inventory_( inventory ) {}

   void run() {
      media();
      siblings();
      devices();
      components();
      muxes();
      labels();
      cpld();
   }

private:
   void media() {
      std::map<std::pair<std::string, int64_t>, std::string> busses;
      for ( auto& medium : inventory_.media ) {
         if ( medium.ham && medium.type != "LinuxFs" && !isHam( *medium.ham ) ) {
            subject_.warning( under( medium.pointer, "ham" ),
               fmt::format( "there is no ham \"{}\"", *medium.ham ), otherHam( *medium.ham ) );
         }
         if ( medium.busId ) {
            bus( medium, *medium.busId, busses );
         }
      }
   }

   /** A medium that is a bus at once. */
   void bus( const Inventory::Medium& medium, int64_t id,
      std::map<std::pair<std::string, int64_t>, std::string>& busses ) {
      auto place = under( medium.pointer, "id" );
      auto field = id & fieldMask;
      auto& first = busses.emplace( std::pair( medium.type, field ), medium.pointer ).first->second;
      if ( field != id ) {
         subject_.warning( place, fmt::format( "{} is cut to 7 bits and becomes {}", id, field ) );
      }
      if ( first != medium.pointer ) {
         subject_.warning( place, fmt::format( "{} is the {} bus {} too", first, medium.type, field ) );
      }
   }

   void siblings() {
      for ( auto& [pointer, array, isBehindMux] : inventory_.siblings ) {
         std::map<int64_t, int64_t> idsByField;
         std::set<int64_t> ids;
         for ( rapidjson::SizeType i = 0; i < array->Size(); ++i ) {
            auto place = under( pointer, i );
            auto id = ( *array )[i].IsObject() ? member( ( *array )[i], "id" ) : nullptr;
            if ( !id || !id->IsInt64() || !subject_.isSound( place + "/id" ) ) {
               continue;
            }
            sibling( place + "/id", id->GetInt64(), isBehindMux, ids, idsByField );
         }
      }
   }

   void sibling( const std::string& place, int64_t id, bool isBehindMux, std::set<int64_t>& ids,
      std::map<int64_t, int64_t>& idsByField ) {
      auto isNew = ids.insert( id ).second;
      if ( isBehindMux ) {
         if ( !isNew ) {
            subject_.warning( place, fmt::format( "takes the place of the bus {} before", id ) );
         }
         return; // the number of a channel, of which all 32 bits count
      }
      if ( !isNew ) {
         subject_.error( place, fmt::format( "one before has the id {}", id ) );
         return;
      }
      auto field = id & fieldMask;
      auto other = idsByField.emplace( field, id ).first->second;
      if ( other != id ) {
         subject_.warning(
            place, fmt::format( "{} is cut to 7 bits, and is the same as the {} before then", id, other ) );
      } else if ( field != id ) {
         subject_.warning( place, fmt::format( "{} is cut to 7 bits and becomes {}", id, field ) );
      }
   }

   void devices() {
      std::set<uint32_t> dids;
      for ( auto& device : inventory_.devices ) {
         if ( !dids.insert( device.did ).second ) {
            subject_.error(
               under( device.pointer, "did" ), fmt::format( "a device before has the did {}", device.did ) );
         }
         if ( device.json->HasMember( "driver" ) ) {
            arguments( subject_, device.pointer, *device.json );
            sameChip( device );
         }
      }
   }

   /** A chip that several drivers share is no mistake, two devices of one driver are. */
   void sameChip( const Inventory::Device& device ) {
      auto driver = textIn( *device.json, "driver" );
      auto json = member( *device.json, "address" );
      auto address = json && json->IsObject() ? unsignedIn( *json, "address" ) : std::nullopt;
      if ( !driver || !address ) {
         return;
      }
      auto bus = device.pointer.substr( 0, device.pointer.rfind( '/' ) );
      auto kept = *address & fieldMask;
      auto first = chips_.emplace( std::tuple( bus, *driver, kept ), device.did ).first->second;
      if ( first != device.did ) {
         subject_.warning( under( under( device.pointer, "address" ), "address" ),
            fmt::format(
               "device {} on this bus has the address {} and the driver {} too", first, kept, *driver ) );
      }
   }

   void components() {
      std::set<uint32_t> uids;
      for ( auto& component : inventory_.components ) {
         auto place = under( component.pointer, "uid" );
         if ( component.uid == noUid ) {
            subject_.error( place, fmt::format( "must not be {}, which stands for no component", noUid ) );
         } else if ( !uids.insert( component.uid ).second ) {
            subject_.error( place, fmt::format( "a component before has the uid {}", component.uid ) );
         }
      }
   }

   void muxes() {
      for ( auto& [did, pointer] : inventory_.muxes ) {
         auto place = under( pointer, "did" );
         auto device = inventory_.find( did );
         auto driver = device ? member( *device->json, "driver" ) : nullptr;
         if ( !device ) {
            if ( subject_.isSound() ) {
               subject_.error( place, fmt::format( "there is no device {} that could switch", did ) );
            }
         } else if ( !driver || driver->IsNull() ) {
            subject_.error( place, fmt::format( "device {}, which switches, must have a driver", did ) );
         } else if ( liesBehindItself( did ) ) {
            subject_.error(
               place, fmt::format( "device {}, which switches, is reached only through itself", did ) );
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

   /** Where a label comes twice, the last one counts. */
   void labels() {
      std::set<std::string> seen;
      for ( auto& [text, pointer] : inventory_.labels ) {
         if ( !seen.insert( text ).second ) {
            auto place = under( pointer, "label" );
            auto reason = fmt::format( "the label \"{}\" stands before", text );
            text == cpldLabel ? subject_.error( place, reason )
                              : subject_.warning( place, reason, "the last one counts" );
         }
      }
   }

   /** The library reaches the platform's CPLD by this label. */
   void cpld() {
      auto label = std::find_if( inventory_.labels.begin(), inventory_.labels.end(),
         []( auto& candidate ) { return candidate.text == cpldLabel; } );
      if ( label == inventory_.labels.end() ) {
         if ( subject_.isSound() ) {
            subject_.error(
               "", "no device has the label \"CpuCpld\", by which the library finds the platform's CPLD" );
         }
         return;
      }
      auto& place = label->pointer;
      auto device = inventory_.at( place );
      if ( !device ) {
         if ( subject_.isSound() ) {
            subject_.error( under( place, "label" ), "the label \"CpuCpld\" is for a device" );
         }
         return;
      }
      if ( !device->json->HasMember( "driver" ) ) {
         subject_.error( place, "the device \"CpuCpld\" needs the key \"driver\", null at least" );
      } else if ( deniesHam( *device->json ) ) {
         subject_.error(
            under( place, "provideHam" ), "must not be 0: the library reads and writes this device" );
      }
      if ( subject_.isSound() ) {
         reach( subject_, under( place, "label" ), *device );
      }
   }

   const Subject& subject_;
   const Inventory& inventory_;
   /** The first device of each bus, driver and address. */
   std::map<std::tuple<std::string, std::string, uint32_t>, uint32_t> chips_;
};

} // namespace

void topology( const Subject& subject, const Inventory& inventory ) {
   TopologyCheck( subject, inventory ).run();
}

void reach( const Subject& subject, const std::string& pointer, const Inventory::Device& device ) {
   if ( !device.switches.empty() ) {
      subject.error( pointer,
         fmt::format(
            "device {} lies behind a multiplexer, and no driver of the library switches one", device.did ) );
   } else if ( device.medium.type == "LinuxFs" ) {
      subject.error( pointer,
         fmt::format( "device {} lies below a LinuxFs, which the library has no access to", device.did ) );
   } else if ( auto& ham = device.medium.ham; ham && !isHam( *ham ) ) {
      subject.error( pointer,
         fmt::format( "device {} lies below the medium {}, whose ham \"{}\" the library does not have",
            device.did, device.medium.pointer, *ham ),
         otherHam( *ham ) );
   }
}

} // namespace Check
