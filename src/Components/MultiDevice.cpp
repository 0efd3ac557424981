#include "Components/HardwareDevice.h"

#include <cassert>

namespace Component {

DeviceBase* MultiDevice::create( Drivers::DriverArgs& args ) {
   if ( auto cached = findDevice( args ) ) {
      return cached;
   }
   auto made = callDriverFactoryFunc( args, nullptr );
   if ( !made ) {
      ql_trace( 0, "factory function returned a null object" );
      return nullptr;
   }
   auto device = dynamic_cast<MultiDevice*>( made );
   assert( device );
   device->deviceDriverArgsIs( args.multiDeviceArgs );
   device->init();
   ql_trace( 0, "%s MultiDevice created", args.driver.c_str() );
   devices[args.did] = device;
   return device;
}

void MultiDevice::deviceDriverArgsIs( const std::map<std::string, std::string>& args ) {
   deviceDriverArgs = args;
}

const char* MultiDevice::getDeviceDriverArg( const std::string& key ) {
   auto entry = deviceDriverArgs.find( key );
   if ( entry == deviceDriverArgs.end() ) {
      ql_trace( 0, "Failed to find driverArgs for driver key '%s'", key.c_str() );
      return nullptr;
   }
   return entry->second.c_str();
}

namespace {

/** Makes a part through the host's own entry function; what that gave is kept, null too. */
template <typename Part>
Part* addPart( const char* args, Part* ( *add )(const char*), std::vector<Part*>& parts ) {
   auto part = add( args );
   parts.push_back( part );
   return part;
}

} // namespace

ql_slot* MultiDevice::addSlot( const std::string& key ) {
   auto args = getDeviceDriverArg( key );
   return args ? addPart( args, ql_slot_add, slots ) : nullptr;
}

ql_led* MultiDevice::addLed( const std::string& key ) {
   auto args = getDeviceDriverArg( key );
   return args ? addPart( args, ql_led_add, leds ) : nullptr;
}

ql_psu* MultiDevice::addPsu( const std::string& key ) {
   auto args = getDeviceDriverArg( key );
   return args ? addPart( args, ql_psu_add, psus ) : nullptr;
}

ql_fan* MultiDevice::addFan( const std::string& key ) {
   auto args = getDeviceDriverArg( key );
   if ( !args ) {
      return nullptr;
   }
   ql_trace( 6, "MultiDevice::addFan driver args = %s", args );
   return addPart( args, ql_fan_add, fans );
}

ql_xcvr* MultiDevice::addXcvr( const std::string& key ) {
   auto args = getDeviceDriverArg( key );
   if ( !args ) {
      return nullptr;
   }
   ql_trace( 6, "MultiDevice::addXcvr driver args = %s", args );
   return addPart( args, ql_xcvr_add, xcvrs );
}

ql_gpio* MultiDevice::addGpio( const std::string& key ) {
   auto args = getDeviceDriverArg( key );
   if ( !args ) {
      return nullptr;
   }
   ql_trace( 6, "MultiDevice::addGpio driver args = %s", args );
   return addPart( args, ql_gpio_add, gpios );
}

} // namespace Component
