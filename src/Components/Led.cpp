#include "Components/Led.h"

#include <cassert>
#include <iterator>

namespace Component::LogicalDevice {

const ql_led_ops Led::ops_ = {
   .size = sizeof( ql_led_ops ),
   .set_light_setting = setLightSettingCallback,
};
static_assert( sizeof( ql_led_ops ) == 16 );

ql_timer* Led::blinkTimer_ = nullptr;
uint64_t Led::blinkPeriod_ = 1000;
bool Led::blinkStatus_ = false;
std::list<Led*> Led::notifyList_;

Led::Led( bool blinks ) : usesBlinkTimer( blinks ) {
   record.ops = &ops_;
   record.owner = this;
}

ql_status Led::setLightSettingCallback( ql_led* record, ql_led_status status ) {
   ql_trace(
      4, "%s(%p, %d)", "setLightSettingCallback", static_cast<void*>( record ), static_cast<int>( status ) );
   return static_cast<Led*>( record->owner )->setLightSetting( status );
}

const char* Led::getLedStatusString( ql_led_status status ) {
   static const char* const strs[] = { "Off", "Good", "Warning", "Bad", "Inactive", "Unknown", "Beacon" };
   // clang-format off
   assert( ( unsigned )status < sizeof ( strs ) / sizeof ( *strs ) );
   // clang-format on
   return strs[status];
}

namespace {

/** The host's timer fires once for each setting. */
void armBlinkTimer() { ql_timer_set( Led::blinkTimer_, static_cast<uint32_t>( Led::blinkPeriod_ ) ); }

} // namespace

void Led::createBlinkTimer() {
   if ( blinkTimer_ ) {
      return;
   }
   ql_trace( 0, "creating unique led blink timer" );
   blinkTimer_ = ql_timer_add( handleBlinkTimerCallback, nullptr );
   if ( !blinkTimer_ ) {
      ql_trace( 0, "failed to create blink timer" );
   }
   assert( blinkTimer_ );
}

void Led::notifyOnBlink( Led* led ) {
   ql_trace( 4, "%s() adding led to blink notification list", "notifyOnBlink" );
   assert( blinkTimer_ );
   notifyList_.push_back( led );
   if ( notifyList_.size() == 1 ) {
      armBlinkTimer();
   }
}

void Led::handleBlinkTimerCallback( void* ) {
   ql_trace(
      4, "%s() led blink timer hit notifying %zu leds", "handleBlinkTimerCallback", notifyList_.size() );
   auto cursor = notifyList_.begin();
   while ( cursor != notifyList_.end() ) {
      if ( ( *cursor )->handleBlinkTimer( blinkStatus_ ) ) {
         ++cursor;
         continue;
      }
      // A leaving LED takes its successor's turn in this tick. The list is a ring: behind the last LED comes
      // the end marker, and behind that the first LED again.
      cursor = notifyList_.erase( cursor );
      cursor = cursor == notifyList_.end() ? notifyList_.begin() : std::next( cursor );
   }
   if ( !notifyList_.empty() ) {
      armBlinkTimer();
   }
   blinkStatus_ = !blinkStatus_;
}

} // namespace Component::LogicalDevice
