#ifndef MOCK_DEVICES_H
#define MOCK_DEVICES_H

#include "Components/Fan.h"
#include "Components/Gpio.h"
#include "Components/Led.h"
#include "Components/PoePort.h"
#include "Components/Psu.h"
#include "Components/Slot.h"
#include "Components/TempSensor.h"
#include "Components/Xcvr.h"

#include <gmock/gmock.h>

/** What a driver makes for the host, with every virtual operation under a test's control. */

/** A status that no code of ours makes: it can only have been passed on. */
constexpr auto oddStatus = static_cast<ql_status>( 0x5EED );

struct MockTempSensor : Component::LogicalDevice::TempSensor {
   MOCK_METHOD( void, alertThresholdIs, ( float value ), ( override ) );
   MOCK_METHOD( void, criticalThresholdIs, ( float value ), ( override ) );
   MOCK_METHOD( ql_status, getTemperature, ( float* value ), ( override ) );
};

struct MockFan : Component::LogicalDevice::Fan {
   MOCK_METHOD( ql_status, debugInfo, ( char** text ), ( const, override ) );
   MOCK_METHOD( ql_status, getRpm, ( int* rpm ), ( override ) );
   MOCK_METHOD( ql_status, setRpm, ( int rpm ), ( override ) );
};

struct MockPsu : Component::LogicalDevice::Psu {
   MOCK_METHOD( ql_status, getPowerOk, ( int* ok ), ( override ) );
   MOCK_METHOD( ql_status, getInputCurrent, ( float* value ), ( override ) );
   MOCK_METHOD( ql_status, getOutputCurrent, ( float* value ), ( override ) );
   MOCK_METHOD( ql_status, getInputVoltage, ( float* value ), ( override ) );
   MOCK_METHOD( ql_status, getOutputVoltage, ( float* value ), ( override ) );
   MOCK_METHOD( ql_status, getInputPower, ( float* value ), ( override ) );
   MOCK_METHOD( ql_status, getOutputPower, ( float* value ), ( override ) );
};

struct MockSlot : Component::LogicalDevice::Slot {
   using Slot::Slot;
   MOCK_METHOD( ql_status, getPresence, ( char** text ), ( override ) );
};

struct MockLed : Component::LogicalDevice::Led {
   using Led::Led;
   MOCK_METHOD( bool, handleBlinkTimer, ( bool phase ), ( override ) );
   MOCK_METHOD( ql_status, setLightSetting, ( ql_led_status status ), ( override ) );
};

struct MockSfpXcvr : Component::LogicalDevice::SfpXcvr {
   using SfpXcvr::SfpXcvr;
   MOCK_METHOD( ql_status, getPresence, (), ( override ) );
   MOCK_METHOD( ql_status, getTxFault, ( int* value ), ( override ) );
   MOCK_METHOD( ql_status, getRxLos, ( int* value ), ( override ) );
   MOCK_METHOD( ql_status, getTxDisable, ( int* value ), ( override ) );
   MOCK_METHOD( ql_status, setTxDisable, ( int value ), ( override ) );
};

/** Base is QsfpXcvr or CmisXcvr. */
template <typename Base>
struct MockQsfpSignals : Base {
   using Base::Base;
   MOCK_METHOD( ql_status, getPresence, (), ( override ) );
   MOCK_METHOD( ql_status, getModSel, ( int* value ), ( override ) );
   MOCK_METHOD( ql_status, setModSel, ( int value ), ( override ) );
   MOCK_METHOD( ql_status, getLpMode, ( int* value ), ( override ) );
   MOCK_METHOD( ql_status, setLpMode, ( int value ), ( override ) );
   MOCK_METHOD( ql_status, getReset, ( int* value ), ( override ) );
   MOCK_METHOD( ql_status, setReset, ( int value ), ( override ) );
   MOCK_METHOD( ql_status, getInterrupt, ( int* value ), ( override ) );
};

using MockQsfpXcvr = MockQsfpSignals<Component::LogicalDevice::QsfpXcvr>;
using MockCmisXcvr = MockQsfpSignals<Component::LogicalDevice::CmisXcvr>;

struct MockGpio : Component::LogicalDevice::Gpio {
   MOCK_METHOD( ql_status, bitClear, (), ( override ) );
   MOCK_METHOD( ql_status, bitSet, (), ( override ) );
   MOCK_METHOD( ql_status, bitRead, ( uint32_t * value ), ( override ) );
};

struct MockPoePort : Component::LogicalDevice::PoePort {
   using State = ql_poe_port_state;
   using PairState = ql_poe_port_pair_state;
   using Class = ql_poe_device_class;
   MOCK_METHOD( size_t, debugInfo, ( char** text, bool raw ), ( override ) );
   MOCK_METHOD( ql_status, poePortInit, (), ( override ) );
   MOCK_METHOD( ql_status, reprogramPoeFirmware, ( bool skip, char** revision ), ( override ) );
   MOCK_METHOD( ql_status, setPoePortPse, ( bool enable ), ( override ) );
   MOCK_METHOD( ql_status, setPoePortLimit, ( ql_poe_power_limit_mode mode, float watts ), ( override ) );
   MOCK_METHOD( ql_status, setPoePortShutOffWithPsu, ( uint8_t psu, bool shutOff ), ( override ) );
   MOCK_METHOD( ql_status, poePortPowerOn, ( bool on ), ( override ) );
   MOCK_METHOD( ql_status, setPoePortLegacyDetect, ( bool legacy ), ( override ) );
   MOCK_METHOD( ql_status, getPoePortPowerState,
      ( State * state, State* primary, State* alternative, PairState* pairState ), ( override ) );
   MOCK_METHOD(
      ql_status, getPoeDeviceClass, ( Class * cls, Class* primary, Class* alternative ), ( override ) );
   MOCK_METHOD(
      ql_status, getPoePortPower, ( float* total, float* primary, float* alternative ), ( override ) );
   MOCK_METHOD( ql_status, getPoePortVoltage, ( float* volts ), ( override ) );
   MOCK_METHOD( ql_status, getPoePortCurrent, ( float* amps ), ( override ) );
   MOCK_METHOD( ql_status, getPoePortTemperature, ( float* degrees ), ( override ) );
   MOCK_METHOD( ql_status, getPoePortCrcStatus, ( bool* ok ), ( override ) );
   MOCK_METHOD( size_t, getPoePortInformation, ( char** text ), ( override ) );
};

#endif
