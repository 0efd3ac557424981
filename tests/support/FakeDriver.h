#ifndef FAKE_DRIVER_H
#define FAKE_DRIVER_H

#include "Components/HardwareDevice.h"
#include "TestRow.h"

#include <fmt/format.h>

#include <string>
#include <vector>

/** A device that gives what a test has put there for each kind; null before. */
class FakeDevice : public Component::HardwareDevice {
public:
   Component::LogicalDevice::PoePort* poePort = nullptr;
   Component::LogicalDevice::TempSensor* tempSensor = nullptr;
   Component::LogicalDevice::Slot* slot = nullptr;
   Component::LogicalDevice::SfpXcvr* sfpXcvr = nullptr;
   Component::LogicalDevice::QsfpXcvr* qsfpXcvr = nullptr;
   Component::LogicalDevice::CmisXcvr* cmisXcvr = nullptr;
   Component::LogicalDevice::Led* led = nullptr;
   Component::LogicalDevice::Fan* fan = nullptr;
   Component::LogicalDevice::Psu* psu = nullptr;
   Component::LogicalDevice::Gpio* gpio = nullptr;

   /** One line a call, such as "newFan" or "newSfpXcvr 12". */
   std::vector<std::string> calls;
   /** The arguments of the last call. */
   Drivers::DriverArgs args;

   Component::LogicalDevice::PoePort* newPoePort( const Drivers::DriverArgs& given ) override {
      return give( "newPoePort", given, poePort );
   }

   Component::LogicalDevice::TempSensor* newTempSensor( const Drivers::DriverArgs& given ) override {
      return give( "newTempSensor", given, tempSensor );
   }

   Component::LogicalDevice::Slot* newSlot( const Drivers::DriverArgs& given ) override {
      return give( "newSlot", given, slot );
   }

   Component::LogicalDevice::SfpXcvr* newSfpXcvr( uint32_t id, const Drivers::DriverArgs& given ) override {
      return give( fmt::format( "newSfpXcvr {}", id ), given, sfpXcvr );
   }

   Component::LogicalDevice::QsfpXcvr* newQsfpXcvr( uint32_t id, const Drivers::DriverArgs& given ) override {
      return give( fmt::format( "newQsfpXcvr {}", id ), given, qsfpXcvr );
   }

   Component::LogicalDevice::CmisXcvr* newCmisXcvr( uint32_t id, const Drivers::DriverArgs& given ) override {
      return give( fmt::format( "newCmisXcvr {}", id ), given, cmisXcvr );
   }

   Component::LogicalDevice::Led* newLed( const Drivers::DriverArgs& given ) override {
      return give( "newLed", given, led );
   }

   Component::LogicalDevice::Fan* newFan( const Drivers::DriverArgs& given ) override {
      return give( "newFan", given, fan );
   }

   Component::LogicalDevice::Psu* newPsu( const Drivers::DriverArgs& given ) override {
      return give( "newPsu", given, psu );
   }

   Component::LogicalDevice::Gpio* newGpio( const Drivers::DriverArgs& given ) override {
      return give( "newGpio", given, gpio );
   }

private:
   template <typename Object>
   Object* give( const std::string& call, const Drivers::DriverArgs& given, Object* object ) {
      calls.push_back( call );
      args = given;
      return object;
   }
};

/** The driver "Fake" for the length of a test. All its devices are the one FakeDevice. */
class FakeDriver {
public:
   FakeDevice device;
   /** Calls of the factory. */
   int made = 0;

   FakeDriver() = default;

   ~FakeDriver() { Component::DeviceBase::devices.clear(); }

   FakeDriver( const FakeDriver& ) = delete;
   FakeDriver& operator=( const FakeDriver& ) = delete;

private:
   TestRow<decltype( Drivers::drivers )> row_ { Drivers::drivers, "Fake",
      [this]( const Drivers::DriverArgs&, Ham::Ham* ) {
         ++made;
         return &device;
      } };
};

/** Argument text of device 7, without a Ham. `driverArgs` is a JSON object. */
inline std::string deviceText( const std::string& driver, const std::string& driverArgs = "{}" ) {
   return fmt::format( R"({{ "did": 7, "driver": "{}", "provideHam": 0, "address": {{ "address": 72 }}, )"
                       R"("driverArgs": {} }})",
      driver, driverArgs );
}

#endif
