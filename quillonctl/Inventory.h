#ifndef INVENTORY_H
#define INVENTORY_H

#include <rapidjson/document.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** The label of the device that is the platform's CPLD. */
constexpr const char* cpldLabel = "CpuCpld";

/** What lies in a topology document, in document order, and where. */
struct Inventory {
   struct Medium {
      std::string type;
      std::optional<std::string> ham;
      std::string pointer;
      /** Of one that is a bus at once. */
      std::optional<int64_t> busId;
   };

   struct Device {
      uint32_t did;
      std::string pointer;
      const rapidjson::Value* json;
      Medium medium;
      /** The devices that switch the multiplexers on the way to this one, from the outermost. */
      std::vector<uint32_t> switches;
   };

   struct Component {
      uint32_t uid;
      std::string pointer;
      /** The device that it is a part of. */
      std::string device;
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

   /** Busses or accelerators of one parent, which must not share an id but behind a multiplexer. */
   struct Siblings {
      std::string pointer;
      const rapidjson::Value* array;
      bool isBehindMux;
   };

   std::vector<Medium> media;
   std::vector<Device> devices;
   std::vector<Component> components;
   std::vector<Mux> muxes;
   std::vector<Label> labels;
   std::vector<Siblings> siblings;

   /** The first device with an id, or null. */
   const Device* find( uint32_t did ) const;
   /** The device at a place in the document, or null. */
   const Device* at( const std::string& pointer ) const;
   /** The device that has a component, or null. */
   const Device* holderOf( uint32_t uid ) const;
   /** The device with the CPLD's label, or null. */
   const Device* cpld() const;
};

/** Takes stock of a topology; what breaks the schema is not in it. */
Inventory takeInventory( const rapidjson::Value& topology );

#endif
