#include "Drivers/Selvane/LedCodes.h"

#include "Components/Led.h"

const char* Drivers::ledStatusName( ql_led_status status ) {
   return status == QL_LED_RELEASE ? "release" : Component::LogicalDevice::Led::getLedStatusString( status );
}
