#include "Inventory.h"

#include "JsonFile.h"

#include <algorithm>

using rapidjson::Value;

namespace {

class Walk {
public:
   explicit Walk( Inventory& inventory ) : inventory_( inventory ) {}

   void medium( const std::string& pointer, const Value& json ) {
      auto type = textOf( json["type"] );
      if ( type == "SCD" || type == "Celestica" ) {
         label( pointer, json );
         accelerators( pointer, json );
      } else if ( type == "FbDomFpga" ) {
         label( pointer, json );
         busses( pointer, json );
      } else if ( type == "LinuxFs" ) {
         label( pointer, json );
         each( pointer, json, "devices", &Walk::device );
      } else {
         bus( pointer, json );
      }
   }

private:
   using Visit = void ( Walk::* )( const std::string& pointer, const Value& json );

   void each( const std::string& pointer, const Value& json, const char* key, Visit visit ) {
      if ( auto array = member( json, key ) ) {
         size_t index = 0;
         for ( auto& element : array->GetArray() ) {
            ( this->*visit )( under( under( pointer, key ), index++ ), element );
         }
      }
   }

   void label( const std::string& pointer, const Value& json ) {
      if ( auto text = member( json, "label" ) ) {
         inventory_.labels.push_back( { textOf( *text ), pointer } );
      }
   }

   void siblings( const std::string& pointer, const Value& json, const char* key ) {
      if ( auto array = member( json, key ) ) {
         inventory_.siblings.push_back( { under( pointer, key ), array } );
      }
   }

   void accelerators( const std::string& pointer, const Value& json ) {
      siblings( pointer, json, "accelerators" );
      each( pointer, json, "accelerators", &Walk::accelerator );
   }

   void accelerator( const std::string& pointer, const Value& json ) {
      label( pointer, json );
      busses( pointer, json );
   }

   void busses( const std::string& pointer, const Value& json ) {
      siblings( pointer, json, "busses" );
      each( pointer, json, "busses", &Walk::bus );
   }

   void bus( const std::string& pointer, const Value& json ) {
      label( pointer, json );
      each( pointer, json, "devices", &Walk::device );
      each( pointer, json, "muxes", &Walk::mux );
   }

   void mux( const std::string& pointer, const Value& json ) {
      label( pointer, json );
      auto did = json["did"].GetUint();
      inventory_.muxes.push_back( { did, pointer } );
      switches_.push_back( did );
      // Only here may a bus repeat the id of another, and then takes its place.
      each( pointer, json, "busses", &Walk::bus );
      switches_.pop_back();
   }

   void device( const std::string& pointer, const Value& json ) {
      label( pointer, json );
      inventory_.devices.push_back( { json["did"].GetUint(), pointer, &json, switches_ } );
      each( pointer, json, "components", &Walk::component );
   }

   void component( const std::string& pointer, const Value& json ) {
      label( pointer, json );
      inventory_.components.push_back( { json["uid"].GetUint(), pointer } );
   }

   Inventory& inventory_;
   std::vector<uint32_t> switches_;
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

bool Inventory::hasComponent( uint32_t uid ) const {
   return std::any_of(
      components.begin(), components.end(), [=]( auto& component ) { return component.uid == uid; } );
}

Inventory takeInventory( const Value& topology ) {
   Inventory inventory;
   Walk walk( inventory );
   size_t index = 0;
   for ( auto& medium : topology.GetArray() ) {
      walk.medium( under( "", index++ ), medium );
   }
   return inventory;
}
