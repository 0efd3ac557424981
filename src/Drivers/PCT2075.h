#ifndef DRIVERS_PCT2075_H
#define DRIVERS_PCT2075_H

#include "Components/HardwareDevice.h"
#include "Components/TempSensor.h"

#include <cstdint>
#include <map>

namespace Drivers {

/** PCT2075 temperature sensor: one temperature and two thresholds, in degrees Celsius. */
class PCT2075 : public Component::HardwareDevice {
public:
   /** The value is the register number. The data sheet calls the registers Thyst and Tos. */
   enum Threshold : uint8_t { Alert = 2, Overheat = 3 };

   /** Selects the decoding; every value but Temperature means the threshold format. */
   enum RegisterType : uint32_t { Temperature = 0, ThresholdValue = 1 };

   class TempSensor : public Component::LogicalDevice::TempSensor {
   public:
      explicit TempSensor( PCT2075* device );
      /** The chip takes the value as well; a chip that refuses ends the process. */
      void alertThresholdIs( float value ) override;
      void criticalThresholdIs( float value ) override;
      ql_status getTemperature( float* value ) override;

      PCT2075* device_;
   };

   static Component::HardwareDevice* create( const DriverArgs& args, Ham::Ham* ham );
   Component::LogicalDevice::TempSensor* newTempSensor( const DriverArgs& args ) override;
   std::map<uint32_t, Utils::ExpectedVal>* expectedValues() override;

   /** Degrees of a register word as Ham::read16 gives it, the chip's high byte in the low bits. */
   static float registerToTemperature( uint16_t word, RegisterType type );
   /** Rounds to half degrees, halves away from zero; what lies outside -128.0 to 127.5 wraps. */
   ql_status setThreshold( Threshold which, float value );
   /** On a failure the output is not written, here and below. */
   ql_status getThreshold( Threshold which, float* value );
   ql_status getTemperature( float* value );

   static std::map<uint32_t, Utils::ExpectedVal> values;
};

} // namespace Drivers

#endif
