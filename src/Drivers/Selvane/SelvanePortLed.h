#ifndef DRIVERS_SELVANE_SELVANE_PORT_LED_H
#define DRIVERS_SELVANE_SELVANE_PORT_LED_H

#include "Components/HardwareDevice.h"
#include "Components/Led.h"

#include <cstdint>
#include <map>
#include <string>

namespace Drivers {

/** LEDs of the front panel ports, each one register of the CPLD that takes a code. */
class SelvanePortLed : public Component::HardwareDevice {
public:
   class PortLed : public Component::LogicalDevice::Led {
   public:
      PortLed( SelvanePortLed* device, const std::string& name, uint8_t ledReg, const std::string& portType );
      /** False: no LED here blinks in software. */
      bool handleBlinkTimer( bool phase ) override;
      /** QL_STATUS_INVALID_ARGUMENT for a status without a code; nothing is written then. */
      ql_status setLightSetting( ql_led_status status ) override;

      SelvanePortLed* device;
      std::string name;
      uint8_t ledReg;
      /** "sfp" selects one set of codes, everything else the other. */
      std::string portType;
   };

   static Component::HardwareDevice* create( const DriverArgs& args, Ham::Ham* ham );
   /** The one write that the CPLD wants at start; its outcome is not looked at. */
   void init() override;
   /** Driver arguments "ledName", "ledReg" and "portType". */
   Component::LogicalDevice::Led* newLed( const DriverArgs& args ) override;
   std::map<uint32_t, Utils::ExpectedVal>* expectedValues() override;

   static std::map<uint32_t, Utils::ExpectedVal> values;
};

} // namespace Drivers

#endif
