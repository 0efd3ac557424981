#ifndef DRIVERS_TMP102_H
#define DRIVERS_TMP102_H

#include "Components/HardwareDevice.h"
#include "Components/TempSensor.h"

#include <cstdint>
#include <map>

namespace Drivers {

/** TMP102 temperature sensor: one temperature and two limits, in degrees Celsius. */
class TMP102 : public Component::HardwareDevice {
public:
   /** The value is the register number. The alert ends below TLOW and begins at THIGH. */
   enum Limit : uint8_t { Low = 2, High = 3 };

   class TempSensor : public Component::LogicalDevice::TempSensor {
   public:
      explicit TempSensor( TMP102* device );
      /** The chip takes the value as its limit as well; one that refuses leaves a trace line. */
      void alertThresholdIs( float value ) override;
      void criticalThresholdIs( float value ) override;
      ql_status getTemperature( float* value ) override;

   private:
      TMP102* device_;
   };

   static Component::HardwareDevice* create( const DriverArgs& args, Ham::Ham* ham );
   Component::LogicalDevice::TempSensor* newTempSensor( const DriverArgs& args ) override;
   std::map<uint32_t, Utils::ExpectedVal>* expectedValues() override;

   /** @param value written on QL_STATUS_OK only */
   ql_status getTemperature( float* value );
   /** Rounds to sixteenths of a degree; what the chip can't hold becomes the nearest that it can. */
   ql_status setLimit( Limit which, float value );

   static std::map<uint32_t, Utils::ExpectedVal> values;
};

} // namespace Drivers

#endif
