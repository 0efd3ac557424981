#ifndef COMPONENTS_HARDWARE_DEVICE_H
#define COMPONENTS_HARDWARE_DEVICE_H

#include "Drivers/Drivers.h"
#include "Ham/ExpectedVal.h"

#include "quillon/ql.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Component {

namespace LogicalDevice {
class CmisXcvr;
class Fan;
class Gpio;
class Led;
class Mux;
class PoePort;
class Psu;
class QsfpXcvr;
class SfpXcvr;
class Slot;
class SmbusProxy;
class TempSensor;
} // namespace LogicalDevice

/**
 * A device of the board, made once for each did and kept until the process ends. It makes the logical objects
 * that the host holds; a kind that a driver does not offer throws NotImplementedException.
 */
class DeviceBase {
public:
   /** Runs once, when the device is wired up; it is not yet in the cache then. */
   virtual void init();
   virtual LogicalDevice::PoePort* newPoePort( const Drivers::DriverArgs& args );
   virtual LogicalDevice::TempSensor* newTempSensor( const Drivers::DriverArgs& args );
   virtual LogicalDevice::Slot* newSlot( const Drivers::DriverArgs& args );
   virtual LogicalDevice::SfpXcvr* newSfpXcvr( uint32_t id, const Drivers::DriverArgs& args );
   virtual LogicalDevice::QsfpXcvr* newQsfpXcvr( uint32_t id, const Drivers::DriverArgs& args );
   virtual LogicalDevice::CmisXcvr* newCmisXcvr( uint32_t id, const Drivers::DriverArgs& args );
   virtual LogicalDevice::Led* newLed( const Drivers::DriverArgs& args );
   virtual LogicalDevice::Fan* newFan( const Drivers::DriverArgs& args );
   virtual LogicalDevice::Mux* newMux( const Drivers::DriverArgs& args, uint32_t value );
   virtual LogicalDevice::Psu* newPsu( const Drivers::DriverArgs& args );
   virtual LogicalDevice::SmbusProxy* newSmbusProxy( const Drivers::DriverArgs& args );
   virtual ~DeviceBase() = default;

   /**
    * The device of an argument text, new or from the cache.
    * @param args an empty record, filled from the text, for the call of a new operation
    * @return null, after a trace line, for a text that is no JSON, an unknown driver or a Ham that can't be
    * made
    */
   static DeviceBase* create( const char* devArgs, Drivers::DriverArgs& args );
   /** The cached device of args.did, whatever its driver, or null. */
   static DeviceBase* findDevice( Drivers::DriverArgs& args );
   /** A new device from the factory of args.driver, or null. */
   static DeviceBase* callDriverFactoryFunc( Drivers::DriverArgs& args, Ham::Ham* ham );

   /** The device cache by did. */
   static std::map<uint32_t, DeviceBase*> devices;
};

/** A device that is reached through a Ham. */
class HardwareDevice : public DeviceBase {
public:
   /** By default one bit of an 8-bit register of this device. */
   virtual LogicalDevice::Gpio* newGpio( const Drivers::DriverArgs& args );
   /** Registers and starting values in simulation; by default none. */
   virtual std::map<uint32_t, Utils::ExpectedVal>* expectedValues();

   /** @param ham null to make one as args.provideHam says; unused when the device is cached */
   static DeviceBase* create( Drivers::DriverArgs& args, Ham::Ham* ham );

   static std::map<uint32_t, Utils::ExpectedVal> emptyExpectedValues;

   /** Set after the factory has returned. Null for a device without register access. */
   Ham::Ham* ham = nullptr;
};

/** A device made of several parts, each a device in its own right with its own argument text. */
class MultiDevice : public DeviceBase {
public:
   static DeviceBase* create( Drivers::DriverArgs& args );

   void deviceDriverArgsIs( const std::map<std::string, std::string>& args );
   /** The argument text of a part, or null after a trace line. */
   const char* getDeviceDriverArg( const std::string& key );

   /* Each makes the part of a key as the host would; null for an unknown key or a part that can't be made. */
   ql_slot* addSlot( const std::string& key );
   ql_led* addLed( const std::string& key );
   ql_psu* addPsu( const std::string& key );
   ql_fan* addFan( const std::string& key );
   ql_xcvr* addXcvr( const std::string& key );
   ql_gpio* addGpio( const std::string& key );

   std::vector<ql_slot*> slots;
   std::vector<ql_led*> leds;
   std::vector<ql_psu*> psus;
   std::vector<ql_fan*> fans;
   std::vector<ql_xcvr*> xcvrs;
   std::vector<ql_gpio*> gpios;
   /** Argument text of each part by its key. */
   std::map<std::string, std::string> deviceDriverArgs;
};

/**
 * Adds a poll at a regular interval to a device. The host's timer fires once for each setting and is set
 * again when the poll's work is done, so a period lasts the interval plus that work.
 */
template <typename Base>
class PollingDevice : public Base {
public:
   PollingDevice() {
      ql_trace( 0, "creating timer" );
      pollTimer = ql_timer_add( handlePollTimerCallback, this );
   }

   ~PollingDevice() override {
      ql_trace( 0, "destroying timer" );
      ql_timer_delete( pollTimer );
   }

   virtual void pollCallback() = 0;

   /** @param context the device */
   static void handlePollTimerCallback( void* context ) {
      ql_trace( 6, "pollCallbackWrapper" );
      auto device = static_cast<PollingDevice*>( context );
      device->pollCallback();
      device->setTimer();
   }

   /** Arms the timer for the first time. False when the host refuses. */
   bool pollStart() {
      if ( pollStarted ) {
         return true;
      }
      ql_trace( 0, "setting polling interval to %ums", pollInterval );
      return setTimer();
   }

   bool pollStarted = false;
   ql_timer* pollTimer = nullptr;
   /** Milliseconds; a derived class sets it in its init. */
   uint32_t pollInterval = 0;

private:
   bool setTimer() {
      if ( ql_timer_set( pollTimer, pollInterval ) != 0 ) {
         ql_trace( 0, "failed to set timer interval" );
         return false;
      }
      pollStarted = true;
      return true;
   }
};

} // namespace Component

#endif
