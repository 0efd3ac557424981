#ifndef TOPOLOGY_H
#define TOPOLOGY_H

#include "Ham/HamAddress.h"

#include "quillon/ql.h"

#include <rapidjson/fwd.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Drivers {
struct DriverArgs;
}

/**
 * How every device is reached: media, accelerators, busses, multiplexers, devices, components. The tree is
 * built from a JSON document and read-only afterwards. No node knows its parent; a path is learnt by walking
 * down to a target and letting every ancestor be visited on the way back.
 */
namespace Topology {

class TopologyVisitor;

class Node {
public:
   virtual ~Node() = default;
   /**
    * Walks children first. A visit that returns false stops the walk among siblings, and every ancestor is
    * still visited, from the nearest to the root.
    */
   virtual bool accept( TopologyVisitor* visitor ) const = 0;

   /** Enters the node into the label index if the document gives it a label; the last one wins. */
   static void init( const std::shared_ptr<Node>& node, const rapidjson::Value& json );
};

class MediumNode : public Node {
public:
   /** Name of the Ham that reaches everything below this medium. */
   std::string ham;
};

/** A sub-addressable element of a device. */
class Component final : public Node {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<Component> fromJSON( const rapidjson::Value& json );

   uint32_t uid = 0;
};

class Device final : public Node {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<Device> fromJSON( const rapidjson::Value& json );

   uint32_t did = 0;
   /** Null for a device that is declared without the key "driver". */
   std::shared_ptr<Drivers::DriverArgs> args;
   std::vector<std::shared_ptr<Component>> components;
};

class Bus;

class Mux : public Node {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<Mux> fromJSON( const rapidjson::Value& json );

   /** The device that does the switching, declared elsewhere in the tree. */
   uint32_t did = 0;
   std::map<uint32_t, std::shared_ptr<Bus>> busses;
};

class Bus : public Node {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<Bus> fromJSON( const rapidjson::Value& json );
   static void init( const std::shared_ptr<Bus>& bus, const rapidjson::Value& json );

   uint32_t id = 0;
   std::vector<std::shared_ptr<Device>> devices;
   std::vector<std::shared_ptr<Mux>> muxes;
};

class Accelerator : public Node {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<Accelerator> fromJSON( const rapidjson::Value& json );

   uint32_t id = 0;
   std::map<uint32_t, std::shared_ptr<Bus>> busses;
};

class SCD : public MediumNode {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<SCD> fromJSON( const rapidjson::Value& json );

   uint32_t id = 0;
   uint32_t pci = 0;
   std::map<uint32_t, std::shared_ptr<Accelerator>> accelerators;
};

class Celestica : public MediumNode {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<Celestica> fromJSON( const rapidjson::Value& json );

   std::map<uint32_t, std::shared_ptr<Accelerator>> accelerators;
};

class LinuxFs : public MediumNode {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<LinuxFs> fromJSON( const rapidjson::Value& json );

   std::vector<std::shared_ptr<Device>> devices;
};

class FbDomFpga : public MediumNode {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<FbDomFpga> fromJSON( const rapidjson::Value& json );

   uint32_t id = 0;
   uint32_t pci = 0;
   std::map<uint32_t, std::shared_ptr<Bus>> busses;
};

/*
 * The media below are a bus at the same time and hold two Node parts. The tree refers to them through the
 * medium, the label index through the bus, so that a search for a bus finds them.
 */

class I2C : public MediumNode, public Bus {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<I2C> fromJSON( const rapidjson::Value& json );

   bool simulated = false;
};

class IOPort : public MediumNode, public Bus {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<IOPort> fromJSON( const rapidjson::Value& json );
};

class PLM : public MediumNode, public Bus {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<PLM> fromJSON( const rapidjson::Value& json );
};

class SccSpi : public MediumNode, public Bus {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   static std::shared_ptr<SccSpi> fromJSON( const rapidjson::Value& json );
};

class Topology : public Node {
public:
   bool accept( TopologyVisitor* visitor ) const override;
   /** A new tree, owned by the caller. */
   static Topology* fromJSON( const rapidjson::Value& json );

   std::vector<std::shared_ptr<MediumNode>> nodes;
};

/** True means go on. */
class TopologyVisitor {
public:
   virtual bool visit( const Component* ) { return true; }

   virtual bool visit( const Device* ) = 0;

   virtual bool visit( const Mux* ) { return true; }

   virtual bool visit( const Bus* ) { return true; }

   virtual bool visit( const Accelerator* ) { return true; }

   virtual bool visit( const SCD* ) { return true; }

   virtual bool visit( const I2C* ) { return true; }

   virtual bool visit( const IOPort* ) { return true; }

   virtual bool visit( const Celestica* ) { return true; }

   virtual bool visit( const PLM* ) { return true; }

   virtual bool visit( const LinuxFs* ) { return true; }

   virtual bool visit( const SccSpi* ) { return true; }

   virtual bool visit( const FbDomFpga* ) { return true; }

   virtual bool visit( const Topology* ) { return true; }
};

/** Finds the first device of an id in walk order. */
class SearchDeviceVisitor : public TopologyVisitor {
public:
   using TopologyVisitor::visit;
   bool visit( const Device* candidate ) override;

   uint32_t id = 0;
   bool found = false;
   const Device* device = nullptr;
};

/** The current tree; null until a load has succeeded. */
extern Topology* _topology;
/** Every node with a label. It keeps the nodes alive independently of the tree. */
extern std::map<std::string, std::shared_ptr<Node>> _topology_index;
/** The text from which the current tree was built. */
extern std::string _topology_json;

/**
 * Builds the tree from a JSON text and makes it the current one; the same text again costs nothing. Pointers
 * from the lookups below die with the old tree.
 * @retval QL_STATUS_INVALID_ARGUMENT the text is no JSON; nothing has changed
 */
ql_status loadTopology( const char* json );

/** The lookups give null on a miss, and say nothing. */
Node* getNodeByLabel( const char* label );
Device* getDeviceByLabel( const char* label );
/** Finds plain busses and the media that are busses. */
Bus* getBusByLabel( const char* label );
/** A topology must be loaded. */
Device* findDevice( uint32_t did );

/** Whether a text is a JSON object rather than a label: its first character decides. */
bool isDeviceObject( const char* text );

/** Fills the whole record from an "address" object; numbers are cut to the width of their field. */
void fillAddressFromJSON( const rapidjson::Value& value, HamAddress& addr );

} // namespace Topology

#endif
