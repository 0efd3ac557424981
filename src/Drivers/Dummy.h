#ifndef DRIVERS_DUMMY_H
#define DRIVERS_DUMMY_H

#include "Components/HardwareDevice.h"

namespace Drivers {

/** A device with nothing of its own, used through its Ham or for its register bits. */
class Dummy : public Component::HardwareDevice {
public:
   static Component::HardwareDevice* create( const DriverArgs& args, Ham::Ham* ham );
};

} // namespace Drivers

#endif
