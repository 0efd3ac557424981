#ifndef DRIVERS_SELVANE_SELVANE_SYSTEM_LED_H
#define DRIVERS_SELVANE_SELVANE_SYSTEM_LED_H

#include "Components/HardwareDevice.h"
#include "Components/Led.h"

#include "Drivers/Selvane/LedCodes.h"

#include <cstdint>
#include <map>

namespace Drivers {

/** LEDs of the switch as a whole: status, power, cloud and fan, each one register of the CPLD that takes a
 * code. */
class SelvaneSystemLed : public Component::HardwareDevice {
public:
   /** What the LEDs have in common: all but their codes and their trace text. */
   class SystemLed : public Component::LogicalDevice::Led {
   public:
      SystemLed( SelvaneSystemLed* device, uint8_t id, uint8_t reg );
      /** False: no LED here blinks in software. */
      bool handleBlinkTimer( bool phase ) override;

      SelvaneSystemLed* device;
      uint8_t id;
      uint8_t reg;

   protected:
      /** QL_STATUS_INVALID_ARGUMENT for a status without a code; nothing is written then. */
      ql_status set( ql_led_status status, const LedCodes& codes );
   };

   class StatusLed : public SystemLed {
   public:
      using SystemLed::SystemLed;
      ql_status setLightSetting( ql_led_status status ) override;
   };

   class CloudAndFanLed : public SystemLed {
   public:
      using SystemLed::SystemLed;
      ql_status setLightSetting( ql_led_status status ) override;
   };

   class PowerLed : public SystemLed {
   public:
      using SystemLed::SystemLed;
      ql_status setLightSetting( ql_led_status status ) override;
   };

   static Component::HardwareDevice* create( const DriverArgs& args, Ham::Ham* ham );
   /** Driver arguments "reg", which selects the class, and "id". Null, after a trace line, for another
    * register. */
   Component::LogicalDevice::Led* newLed( const DriverArgs& args ) override;
   std::map<uint32_t, Utils::ExpectedVal>* expectedValues() override;

   static std::map<uint32_t, Utils::ExpectedVal> values;
};

} // namespace Drivers

#endif
