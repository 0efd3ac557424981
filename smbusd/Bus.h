#ifndef SMBUSD_BUS_H
#define SMBUSD_BUS_H

#include "Operation.h"

#include <smbus.pb.h>

#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace Smbusd {

/** How an operation ended, with more words where the result alone would not help. */
struct Outcome {
   I2c::Result result = I2c::Result::Ok;
   std::string detail {};
};

/** The words of an outcome, such as "no such bus (/dev/i2c-7: No such file or directory)". */
std::string describe( const Outcome& outcome );

/** What carries operations to chips, one at a time. */
class Bus {
public:
   using Done = std::function<void( Outcome )>;

   virtual ~Bus() = default;

   /** "i2c-3". Not to be asked during an operation. */
   virtual std::string name() const = 0;

   /**
    * Carries out an operation, which must stay until that is done.
    *
    * @return how it ended; or nothing, and `done` is called later from the event loop
    */
   virtual std::optional<Outcome> transfer( Operation& operation, Done done ) = 0;
};

/** How a request names its bus. */
struct BusKey {
   Smbus::MasterType master;
   uint32_t pci;
   uint8_t accelerator;
   uint8_t bus;
   auto operator<=>( const BusKey& ) const = default;
};

BusKey busOf( const Smbus::Request& request );

/** "bus 3 (I2C, pci 0x0, accelerator 0)". */
std::string describe( const BusKey& key );

/** The busses that can be reached. */
class Backend {
public:
   virtual ~Backend() = default;

   /** The bus, which stays the backend's, or null. */
   virtual Bus* find( const BusKey& key ) = 0;
};

} // namespace Smbusd

#endif
