#ifndef COMPONENTS_GPIO_H
#define COMPONENTS_GPIO_H

#include "Drivers/Drivers.h"

#include "quillon/ql.h"

#include <cstdint>

namespace Component {

class HardwareDevice;

namespace LogicalDevice {

/** A single bit as the host sees it. */
class Gpio {
public:
   Gpio();
   virtual ~Gpio() = default;
   virtual ql_status bitClear() = 0;
   virtual ql_status bitSet() = 0;
   virtual ql_status bitRead( uint32_t* value ) = 0;

   static ql_status bitSetCallback( ql_gpio* record );
   static ql_status bitClearCallback( ql_gpio* record );
   static ql_status bitReadCallback( ql_gpio* record, uint32_t* value );
   static const ql_gpio_ops ops_;

   ql_gpio record;
};

/**
 * One bit of an 8-bit register of a device. It holds no value: setting and clearing read the register, change
 * the bit and write it back, which is not atomic against other writers on the bus.
 */
class RegGpio : public Gpio {
public:
   /** Driver arguments "register" and "bitpos", decimal; text that is no number throws. */
   RegGpio( HardwareDevice* device, const Drivers::DriverArgs& args );
   ql_status bitClear() override;
   ql_status bitSet() override;
   ql_status bitRead( uint32_t* value ) override;

   HardwareDevice* device;
   /** Writes without reading first, as if all other bits were clear for a set and set for a clear. */
   bool writeWithoutRead = false;
   int32_t reg;
   int32_t bitpos;

private:
   Ham::Ham* ham() const;
   uint32_t mask() const;
   ql_status write( uint32_t content );
   ql_status readUnlessWriteOnly( uint8_t* content );
};

} // namespace LogicalDevice
} // namespace Component

#endif
