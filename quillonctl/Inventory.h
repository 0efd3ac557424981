#ifndef INVENTORY_H
#define INVENTORY_H

#include <rapidjson/document.h>

#include <cstdint>
#include <string>
#include <vector>

/** The label of the device that is the platform's CPLD. */
constexpr const char* cpldLabel = "CpuCpld";

/** What lies in a topology document, in document order, and where. */
struct Inventory {
   struct Device {
      uint32_t did;
      std::string pointer;
      const rapidjson::Value* json;
      /** The devices that switch the multiplexers on the way to this one, from the outermost. */
      std::vector<uint32_t> switches;
   };

   struct Component {
      uint32_t uid;
      std::string pointer;
   };

   struct Mux {
      /** The device that switches. */
      uint32_t did;
      std::string pointer;
   };

   struct Label {
      std::string text;
      /** Of the object that has the label. */
      std::string pointer;
   };

   /** Busses or accelerators of one parent that must not share an id. */
   struct Siblings {
      std::string pointer;
      const rapidjson::Value* array;
   };

   std::vector<Device> devices;
   std::vector<Component> components;
   std::vector<Mux> muxes;
   std::vector<Label> labels;
   std::vector<Siblings> siblings;

   /** The first device with an id, or null. */
   const Device* find( uint32_t did ) const;
   /** The device at a place in the document, or null. */
   const Device* at( const std::string& pointer ) const;
   bool hasComponent( uint32_t uid ) const;
};

/** Takes stock of a topology that keeps its schema. */
Inventory takeInventory( const rapidjson::Value& topology );

#endif
