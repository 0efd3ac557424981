#include "Drivers/Dummy.h"

namespace Drivers {

Component::HardwareDevice* Dummy::create( const DriverArgs&, Ham::Ham* ) { return new Dummy; }

} // namespace Drivers
