#include "Callbacks.h"

#include "Components/Fan.h"
#include "Components/Gpio.h"
#include "Components/Led.h"
#include "Components/TempSensor.h"
#include "Components/Xcvr.h"

namespace {

using namespace Component::LogicalDevice;

struct IdleSensor : TempSensor {
   ql_status getTemperature( float* ) override { return QL_STATUS_OK; }
};

struct IdleFan : Fan {
   ql_status getRpm( int* ) override { return QL_STATUS_OK; }

   ql_status setRpm( int ) override { return QL_STATUS_OK; }
};

struct IdleLed : Led {
   IdleLed() : Led( false ) {}

   bool handleBlinkTimer( bool ) override { return false; }

   ql_status setLightSetting( ql_led_status ) override { return QL_STATUS_OK; }
};

struct IdleGpio : Gpio {
   ql_status bitClear() override { return QL_STATUS_OK; }

   ql_status bitSet() override { return QL_STATUS_OK; }

   ql_status bitRead( uint32_t* ) override { return QL_STATUS_OK; }
};

struct IdleXcvr : SfpXcvr {
   IdleXcvr() : SfpXcvr( 1 ) {}

   ql_status getPresence() override { return QL_STATUS_OK; }

   ql_status getTxFault( int* ) override { return QL_STATUS_OK; }

   ql_status getRxLos( int* ) override { return QL_STATUS_OK; }

   ql_status getTxDisable( int* ) override { return QL_STATUS_OK; }

   ql_status setTxDisable( int ) override { return QL_STATUS_OK; }
};

/** The object, of which the compiler does not know the class. */
template <typename Base, typename Idle>
Base* object() {
   static Idle idle;
   Base* volatile known = &idle;
   return known;
}

template <typename Call>
void repeat( int times, Call call ) {
   for ( int i = 0; i < times; ++i ) {
      call();
   }
}

void getTemperature( int times ) {
   float degrees = 0;
   auto sensor = &object<TempSensor, IdleSensor>()->record;
   repeat( times, [&] { sensor->ops->get_temperature( sensor, &degrees ); } );
}

void getTemperatureOfDriver( int times ) {
   float degrees = 0;
   auto sensor = object<TempSensor, IdleSensor>();
   repeat( times, [&] {
      ql_trace( 4, "%s(%p)", "getTemperatureCallback", static_cast<void*>( &sensor->record ) );
      sensor->getTemperature( &degrees );
   } );
}

void setRpm( int times ) {
   auto fan = &object<Fan, IdleFan>()->record;
   repeat( times, [&] { fan->ops->set_rpm( fan, 9000 ); } );
}

void setRpmOfDriver( int times ) {
   auto fan = object<Fan, IdleFan>();
   repeat( times, [&] {
      ql_trace( 4, "%s(%p, %d)", "setRpmCallback", static_cast<void*>( &fan->record ), 9000 );
      fan->setRpm( 9000 );
   } );
}

void setLight( int times ) {
   auto led = &object<Led, IdleLed>()->record;
   repeat( times, [&] { led->ops->set_light_setting( led, QL_LED_GOOD ); } );
}

void setLightOfDriver( int times ) {
   auto led = object<Led, IdleLed>();
   repeat( times, [&] {
      ql_trace( 4, "%s(%p, %d)", "setLightSettingCallback", static_cast<void*>( &led->record ), 1 );
      led->setLightSetting( QL_LED_GOOD );
   } );
}

void readBit( int times ) {
   uint32_t value = 0;
   auto gpio = &object<Gpio, IdleGpio>()->record;
   repeat( times, [&] { gpio->ops->bit_read( gpio, &value ); } );
}

void readBitOfDriver( int times ) {
   uint32_t value = 0;
   auto gpio = object<Gpio, IdleGpio>();
   repeat( times, [&] {
      ql_trace( 4, "%s", "bitReadCallback" );
      gpio->bitRead( &value );
   } );
}

void setTxDisable( int times ) {
   auto xcvr = &object<SfpXcvr, IdleXcvr>()->record;
   repeat( times, [&] { xcvr->ops->by_kind.sfp.set_tx_disable( xcvr, 1 ); } );
}

void setTxDisableOfDriver( int times ) {
   auto xcvr = object<SfpXcvr, IdleXcvr>();
   repeat( times, [&] {
      ql_trace( 4, "%s(%u, %d)", "setTxDisableCallback", xcvr->id, 1 );
      xcvr->setTxDisable( 1 );
   } );
}

} // namespace

const std::vector<Callback>& callbacks() {
   static const std::vector<Callback> all {
      { "get_temperature", getTemperature, getTemperatureOfDriver },
      { "set_rpm", setRpm, setRpmOfDriver },
      { "set_light_setting", setLight, setLightOfDriver },
      { "bit_read", readBit, readBitOfDriver },
      { "set_tx_disable", setTxDisable, setTxDisableOfDriver },
   };
   return all;
}
