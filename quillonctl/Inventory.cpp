#include "Inventory.h"

#include "JsonFile.h"

#include <algorithm>

using rapidjson::Value;

namespace {

class Walk {
public:
   explicit Walk( Inventory& inventory ) : inventory_( inventory ) {}

   void medium( const std::string& pointer, const Value& json ) {
      auto type = textIn( json, "type" ).value_or( "" );
      auto isBus = type == "I2C" || type == "IOPort" || type == "PLM" || type == "SccSpi";
      auto id = isBus ? member( json, "id" ) : nullptr;
      medium_ = { type, textIn( json, "ham" ), pointer,
         id && id->IsInt() ? std::optional<int64_t>( id->GetInt() ) : std::nullopt };
      inventory_.media.push_back( medium_ );
      if ( type == "SCD" || type == "Celestica" ) {
         label( pointer, json );
         accelerators( pointer, json );
      } else if ( type == "FbDomFpga" ) {
         label( pointer, json );
         busses( pointer, json );
      } else if ( type == "LinuxFs" ) {
         label( pointer, json );
         each( pointer, json, "devices", &Walk::device );
      } else if ( isBus ) {
         bus( pointer, json );
      }
   }

private:
   using Visit = void ( Walk::* )( const std::string& pointer, const Value& json );

   void each( const std::string& pointer, const Value& json, const char* key, Visit visit ) {
      auto array = member( json, key );
      if ( !array || !array->IsArray() ) {
         return;
      }
      size_t index = 0;
      for ( auto& element : array->GetArray() ) {
         auto place = under( under( pointer, key ), index++ );
         if ( element.IsObject() ) {
            ( this->*visit )( place, element );
         }
      }
   }

   void label( const std::string& pointer, const Value& json ) {
      if ( auto text = textIn( json, "label" ) ) {
         inventory_.labels.push_back( { *text, pointer } );
      }
   }

   void siblings( const std::string& pointer, const Value& json, const char* key, bool isBehindMux ) {
      auto array = member( json, key );
      if ( array && array->IsArray() ) {
         inventory_.siblings.push_back( { under( pointer, key ), array, isBehindMux } );
      }
   }

   void accelerators( const std::string& pointer, const Value& json ) {
      siblings( pointer, json, "accelerators", false );
      each( pointer, json, "accelerators", &Walk::accelerator );
   }

   void accelerator( const std::string& pointer, const Value& json ) {
      label( pointer, json );
      busses( pointer, json );
   }

   void busses( const std::string& pointer, const Value& json ) {
      siblings( pointer, json, "busses", false );
      each( pointer, json, "busses", &Walk::bus );
   }

   void bus( const std::string& pointer, const Value& json ) {
      label( pointer, json );
      each( pointer, json, "devices", &Walk::device );
      each( pointer, json, "muxes", &Walk::mux );
   }

   void mux( const std::string& pointer, const Value& json ) {
      label( pointer, json );
      auto did = unsignedIn( json, "did" );
      if ( !did ) {
         return;
      }
      inventory_.muxes.push_back( { *did, pointer } );
      switches_.push_back( *did );
      siblings( pointer, json, "busses", true );
      each( pointer, json, "busses", &Walk::bus );
      switches_.pop_back();
   }

   void device( const std::string& pointer, const Value& json ) {
      label( pointer, json );
      if ( auto did = unsignedIn( json, "did" ) ) {
         inventory_.devices.push_back( { *did, pointer, &json, medium_, switches_ } );
      }
      device_ = pointer;
      each( pointer, json, "components", &Walk::component );
   }

   void component( const std::string& pointer, const Value& json ) {
      label( pointer, json );
      if ( auto uid = unsignedIn( json, "uid" ) ) {
         inventory_.components.push_back( { *uid, pointer, device_ } );
      }
   }

   Inventory& inventory_;
   // Where the walk is.
   Inventory::Medium medium_;
   std::vector<uint32_t> switches_;
   std::string device_;
};

} // namespace

const Inventory::Device* Inventory::find( uint32_t did ) const {
   auto found =
      std::find_if( devices.begin(), devices.end(), [=]( auto& device ) { return device.did == did; } );
   return found == devices.end() ? nullptr : &*found;
}

const Inventory::Device* Inventory::at( const std::string& pointer ) const {
   auto found = std::find_if(
      devices.begin(), devices.end(), [&]( auto& device ) { return device.pointer == pointer; } );
   return found == devices.end() ? nullptr : &*found;
}

const Inventory::Device* Inventory::holderOf( uint32_t uid ) const {
   auto found = std::find_if(
      components.begin(), components.end(), [=]( auto& component ) { return component.uid == uid; } );
   return found == components.end() ? nullptr : at( found->device );
}

const Inventory::Device* Inventory::cpld() const {
   auto found =
      std::find_if( labels.begin(), labels.end(), []( auto& label ) { return label.text == cpldLabel; } );
   return found == labels.end() ? nullptr : at( found->pointer );
}

Inventory takeInventory( const Value& topology ) {
   Inventory inventory;
   if ( !topology.IsArray() ) {
      return inventory;
   }
   Walk walk( inventory );
   size_t index = 0;
   for ( auto& medium : topology.GetArray() ) {
      auto pointer = under( "", index++ );
      if ( medium.IsObject() ) {
         walk.medium( pointer, medium );
      }
   }
   return inventory;
}
