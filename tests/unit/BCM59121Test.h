#ifndef BCM59121_TEST_H
#define BCM59121_TEST_H

#include "Drivers/BCM59121.h"
#include "FreshLibrary.h"
#include "ScriptedPoeChip.h"
#include "VirtualTime.h"

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

/** A PoE controller of 12 ports, of which 8 to 11 are 4-pair ports, with a scripted chip and a clock of its
 * own. */
class Bcm59121Test : public FreshLibrary {
protected:
   using Arguments = std::map<std::string, std::string>;
   using Port = Drivers::BCM59121::PoePort;
   using Log = std::vector<std::string>;

   Bcm59121Test() { make(); }

   /** Makes the driver anew, with further arguments. */
   void make( const Arguments& arguments = {} ) {
      Drivers::DriverArgs args;
      args.driverArgs = arguments;
      args.driverArgs.insert( { { "numPorts", "12" }, { "numAtPorts", "8" } } );
      driver = std::make_unique<Drivers::BCM59121>( args );
      driver->ham = &chip;
   }

   Port* port( int id ) { return &ports.emplace_back( driver.get(), static_cast<uint8_t>( id ) ); }

   static std::string reply( uint8_t cmd, const ScriptedPoeChip::Bytes& bytes = {} ) {
      return ScriptedPoeChip::reply( cmd, bytes );
   }

   /** What goes over the bus for one setting or query that works; `message` is the whole request. */
   static Log exchange( const std::string& message, unsigned microseconds = 4000 ) {
      return { "write " + message, "wait " + std::to_string( microseconds ), "read FF 12 no stop" };
   }

   VirtualTime time;
   ScriptedPoeChip chip;
   std::unique_ptr<Drivers::BCM59121> driver;
   std::deque<Port> ports;
};

#endif
