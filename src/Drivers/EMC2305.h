#ifndef DRIVERS_EMC2305_H
#define DRIVERS_EMC2305_H

#include "Components/Fan.h"
#include "Components/HardwareDevice.h"
#include "Components/Slot.h"

#include <cstdint>
#include <map>
#include <string>

namespace Drivers {

/** EMC2305 fan controller: up to five fans, driven open loop and read by their tachometers, and their trays.
 */
class EMC2305 : public Component::HardwareDevice {
public:
   /** One fan. Its tachometer range is read from the chip once, when the object is made. */
   class Fan : public Component::LogicalDevice::Fan {
   public:
      /**
       * @param id counted from 0
       * @param maxRpm speed at the full drive level of 255
       * @param driverArgs "registerOffset": distance of the fan's registers from the first one's, in blocks
       * of 16; text that is no number throws
       */
      Fan( EMC2305* device, uint8_t id, int32_t maxRpm, std::map<std::string, std::string> driverArgs );
      ql_status getRpm( int* rpm ) override;
      ql_status setRpm( int rpm ) override;

      EMC2305* device;
      uint8_t id;
      int32_t maxRpm;
      uint8_t settingReg;
      uint8_t config1Reg;
      uint8_t tachLowReg;
      uint8_t tachHighReg;
      /** 1, 2, 4 or 8. */
      uint8_t tachMultiplier;
   };

   /** What is known about a fan tray, which can't be asked: what its arguments say. */
   class FanSlot : public Component::LogicalDevice::Slot {
   public:
      FanSlot( uint8_t id, const DriverArgs& args, float p, uint32_t maxRpm, const std::string& modelName,
         const std::string& serialNum, const std::string& airflowDirection );
      /** The identification text that the host evaluates. */
      ql_status getPresence( char** text ) override;

      float p;
      uint32_t maxRpm;
      std::string modelName;
      std::string serialNum;
      std::string airflowDirection;
   };

   /** Writes the chip's configuration; a chip that refuses is traced and used all the same. */
   static Component::HardwareDevice* create( const DriverArgs& args, Ham::Ham* ham );
   /** Null, after a trace line, without a "fanId". */
   Component::LogicalDevice::Slot* newSlot( const DriverArgs& args ) override;
   Component::LogicalDevice::Fan* newFan( const DriverArgs& args ) override;
   std::map<uint32_t, Utils::ExpectedVal>* expectedValues() override;

   /** A count of 0, a fan that stands still, gives QL_STATUS_DEVICE_ERROR and a speed of 0. */
   ql_status getFanRpm( Fan* fan, int* rpm );
   /** A speed outside 0 to the fan's top speed is not clamped: the low 8 bits of its level go out. */
   ql_status setFanRpm( Fan* fan, int rpm );

   static std::map<uint32_t, Utils::ExpectedVal> values;
};

} // namespace Drivers

#endif
