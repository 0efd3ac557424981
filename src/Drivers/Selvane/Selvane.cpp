// What this library can drive: its drivers, and its ways to registers.

#include "Drivers/BCM59121.h"
#include "Drivers/Drivers.h"
#include "Drivers/Dummy.h"
#include "Drivers/EMC2305.h"
#include "Drivers/PCT2075.h"
#include "Drivers/Selvane/SelvanePortLed.h"
#include "Drivers/Selvane/SelvaneSystemLed.h"
#include "Drivers/Selvane/SelvaneXcvr.h"
#include "Ham/Ham.h"
#include "Ham/QuillonSmbusHam.h"
#include "Ham/SimHam.h"

namespace Drivers {

std::map<std::string, DriverFactory> drivers = {
   { "BCM59121", BCM59121::create },
   { "Dummy", Dummy::create },
   { "EMC2305", EMC2305::create },
   { "GpioDriver", Dummy::create },
   { "PCT2075", PCT2075::create },
   { "SelvanePortLed", SelvanePortLed::create },
   { "SelvaneSystemLed", SelvaneSystemLed::create },
   { "SelvaneXcvr", SelvaneXcvr::create },
};

} // namespace Drivers

namespace Ham {

std::map<std::string, HamFactory> hams = {
   { "QuillonSmbus", QuillonSmbusHam::create },
   { "SimHam", SimHam::create },
};

std::map<std::string, std::shared_ptr<IpmiHam> ( * )()> ipmiHams;

} // namespace Ham
