#ifndef COMPONENTS_LED_H
#define COMPONENTS_LED_H

#include "quillon/ql.h"

#include <cstdint>
#include <list>

namespace Component::LogicalDevice {

/**
 * An LED as the host sees it. LEDs whose blinking is done in software share one timer of the host and one
 * phase, so that they blink in step.
 */
class Led {
public:
   explicit Led( bool usesBlinkTimer );
   virtual ~Led() = default;
   /** One tick of the blink timer. @return true to stay on the blink list */
   virtual bool handleBlinkTimer( bool phase ) = 0;
   virtual ql_status setLightSetting( ql_led_status status ) = 0;

   static ql_status setLightSettingCallback( ql_led* record, ql_led_status status );
   /** The name of a status below QL_LED_RELEASE. */
   static const char* getLedStatusString( ql_led_status status );
   /** Makes the one blink timer, unless there is one. It stands still until an LED is to be notified. */
   static void createBlinkTimer();
   /** Puts an LED on the blink list, which it leaves by returning false from handleBlinkTimer. */
   static void notifyOnBlink( Led* led );
   static void handleBlinkTimerCallback( void* );

   static const ql_led_ops ops_;
   static ql_timer* blinkTimer_;
   /** Milliseconds. */
   static uint64_t blinkPeriod_;
   /** The phase that the next tick hands out. */
   static bool blinkStatus_;
   static std::list<Led*> notifyList_;

   ql_led record;
   /** Whether the LED wants the blink timer to exist. */
   bool usesBlinkTimer;
};

} // namespace Component::LogicalDevice

#endif
