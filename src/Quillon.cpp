#include "Quillon.h"

#include "Components/Fan.h"
#include "Components/Gpio.h"
#include "Components/HardwareDevice.h"
#include "Components/Led.h"
#include "Components/PoePort.h"
#include "Components/Psu.h"
#include "Components/Slot.h"
#include "Components/TempSensor.h"
#include "Components/Xcvr.h"
#include "Topology.h"

#include <cassert>
#include <string>

#include <unistd.h>

QuillonLibrary::QLSocket* _qlSock = nullptr;

ql_status quillonLibraryInit( const char* caller, const char* json, int retries ) {
   ql_trace( 0, "%s", caller );
   ql_trace( 5, "%s: json = %s", caller, json );
   auto status = qlSockInit( caller, retries );
   return status == QL_STATUS_OK ? Topology::loadTopology( json ) : status;
}

ql_status qlSockInit( const char* caller, int retries ) {
   if ( _qlSock ) {
      return QL_STATUS_OK;
   }
   _qlSock = new QuillonLibrary::QLSocket;
   for ( int tries = 0; tries < retries; ++tries ) {
      if ( _qlSock->setup() == 0 ) {
         return QL_STATUS_OK;
      }
      sleep( 1 );
   }
   ql_trace( 0, "%s: socket Setup failed!", caller );
   _qlSock->cleanup();
   delete _qlSock;
   _qlSock = nullptr;
   return QL_STATUS_IO_ERROR;
}

ql_status ql_temp_sensor_init( const char* topology ) {
   return quillonLibraryInit( "ql_temp_sensor_init", topology, socketTries );
}

ql_status ql_fan_init( const char* topology ) {
   return quillonLibraryInit( "ql_fan_init", topology, socketTries );
}

ql_status ql_psu_init( const char* topology ) {
   return quillonLibraryInit( "ql_psu_init", topology, socketTries );
}

ql_status ql_led_init( const char* topology ) {
   return quillonLibraryInit( "ql_led_init", topology, socketTries );
}

ql_status ql_slot_init( const char* topology ) {
   return quillonLibraryInit( "ql_slot_init", topology, socketTries );
}

ql_status ql_xcvr_init( const char* topology ) {
   return quillonLibraryInit( "ql_xcvr_init", topology, socketTries );
}

ql_status ql_gpio_init( const char* topology ) {
   return quillonLibraryInit( "ql_gpio_init", topology, socketTries );
}

ql_status ql_poe_port_init( const char* topology ) {
   return quillonLibraryInit( "ql_poe_port_init", topology, socketTries );
}

using namespace Component;
using Drivers::DriverArgs;

namespace {

/** The lines that an add function traces when it fails; some kinds fail silently. */
struct FailureLines {
   int level = 0;
   const char* newFailed = nullptr;
};

template <typename Object>
Object* orComplain( Object* object, FailureLines lines, const char* complaint ) {
   if ( !object && lines.newFailed ) {
      ql_trace( lines.level, "%s", complaint );
   }
   return object;
}

/** The device of an argument text, and the new object of one kind on it. */
template <typename Object>
Object* newObject(
   const char* json, Object* ( DeviceBase::*make )(const DriverArgs&), FailureLines lines = {} ) {
   DriverArgs args;
   auto device = orComplain( DeviceBase::create( json, args ), lines, "DeviceBase::create() failed" );
   return device ? orComplain( ( device->*make )( args ), lines, lines.newFailed ) : nullptr;
}

} // namespace

ql_temp_sensor* ql_temp_sensor_add( const char* json, float alert, float critical ) {
   auto sensor = newObject( json, &DeviceBase::newTempSensor );
   if ( !sensor ) {
      return nullptr;
   }
   ql_trace( 0, "setting alert threshold" );
   sensor->alertThresholdIs( alert );
   ql_trace( 0, "setting critical threshold" );
   sensor->criticalThresholdIs( critical );
   return &sensor->record;
}

ql_fan* ql_fan_add( const char* json ) {
   auto fan = newObject( json, &DeviceBase::newFan, { 0, "newFan() failed" } );
   return fan ? &fan->record : nullptr;
}

ql_psu* ql_psu_add( const char* json ) {
   auto psu = newObject( json, &DeviceBase::newPsu, { 2, "newPsu() failed" } );
   return psu ? &psu->record : nullptr;
}

ql_led* ql_led_add( const char* json ) {
   auto led = newObject( json, &DeviceBase::newLed, { 0, "newLed() failed" } );
   if ( !led ) {
      return nullptr;
   }
   if ( led->usesBlinkTimer ) {
      LogicalDevice::Led::createBlinkTimer();
   }
   return &led->record;
}

ql_slot* ql_slot_add( const char* json ) {
   auto slot = newObject( json, &DeviceBase::newSlot, { 0, "newSlot() failed" } );
   return slot ? &slot->record : nullptr;
}

ql_poe_port* ql_poe_port_add( const char* json ) {
   auto port = newObject( json, &DeviceBase::newPoePort );
   return port ? &port->record : nullptr;
}

ql_gpio* ql_gpio_add( const char* json ) {
   DriverArgs args;
   auto device = dynamic_cast<HardwareDevice*>( DeviceBase::create( json, args ) );
   auto gpio = device ? device->newGpio( args ) : nullptr;
   return gpio ? &gpio->record : nullptr;
}

namespace {

const std::string& requiredXcvrArg( const DriverArgs& args, const char* key, const char* complaint ) {
   auto entry = args.driverArgs.find( key );
   if ( entry == args.driverArgs.end() ) {
      ql_trace( 0, "%s", complaint );
      assert( false );
   }
   return entry->second;
}

template <typename Xcvr>
ql_xcvr* recordOf( Xcvr* xcvr, const char* complaint ) {
   return orComplain( xcvr, { 0, complaint }, complaint ) ? &xcvr->record : nullptr;
}

} // namespace

ql_xcvr* ql_xcvr_add( const char* json ) {
   DriverArgs args;
   auto device = DeviceBase::create( json, args );
   if ( !device ) {
      ql_trace( 0, "DeviceBase::create() failed" );
      return nullptr;
   }
   auto& idText = requiredXcvrArg( args, "id", "No id argument given for Xcvr" );
   auto id = static_cast<uint32_t>( std::stoi( idText ) );
   auto& type = requiredXcvrArg( args, "type", "No type argument given for Xcvr" );
   if ( type == "qsfp" || type == "qsfp+" ) {
      return recordOf( device->newQsfpXcvr( id, args ), "newQsfpXcvr() failed" );
   }
   if ( type == "sfp" || type == "sfp+" ) {
      return recordOf( device->newSfpXcvr( id, args ), "newSfpXcvr() failed" );
   }
   if ( type == "qsfpDd" || type == "qsfpCmis" ) {
      return recordOf( device->newCmisXcvr( id, args ), "newCmisXcvr() failed" );
   }
   ql_trace( 0, "Xcvr type %s not supported", type.c_str() );
   assert( false );
   return nullptr;
}
