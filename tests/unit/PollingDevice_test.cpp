#include "Components/HardwareDevice.h"
#include "FieldOrder.h"
#include "HostServices.h"
#include "ObjectLayout.h"

#include <gmock/gmock.h>

#include <memory>
#include <new>
#include <type_traits>

using Component::HardwareDevice;
using Host::TraceLine;
using testing::ElementsAre;

namespace {

using Polling = Component::PollingDevice<HardwareDevice>;

/** Polls every 250 ms, and tells in each poll how often its timer had been set. */
class Poller : public Polling {
public:
   Poller() { pollInterval = 250; }

   void pollCallback() override {
      settingsAtPoll.push_back( pollTimer->settings.size() );
      wasArmedInPoll = wasArmedInPoll || pollTimer->armed;
   }

   std::vector<size_t> settingsAtPoll;
   bool wasArmedInPoll = false;
};

class PollingDevice : public Host::Test {
protected:
   PollingDevice() { Host::traces.clear(); }

   ql_timer& timer() { return *Host::timers.at( 0 ); }

   Poller device;
};

} // namespace

TEST_F( PollingDevice, AddsOneOperationBehindThoseOfTheDevice ) {
   static_assert( std::is_base_of_v<HardwareDevice, Polling> );
   static_assert( std::is_abstract_v<Polling> );
   EXPECT_EQ(
      Layout::slotOf( &Polling::pollCallback ), Layout::slotOf( &HardwareDevice::expectedValues ) + 1 );
}

TEST_F( PollingDevice, AddsItsFieldsInTheAgreedOrder ) {
   EXPECT_TRUE( inOrder( device.ham, device.pollStarted, device.pollTimer, device.pollInterval ) );
}

TEST_F( PollingDevice, MakesATimerThatStandsStill ) {
   Poller another;
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "creating timer" } ) );
   ASSERT_EQ( Host::timers.size(), 2U );
   auto& added = *Host::timers.back();
   EXPECT_EQ( another.pollTimer, &added );
   EXPECT_EQ( added.function, &Polling::handlePollTimerCallback );
   EXPECT_EQ( added.argument, static_cast<Polling*>( &another ) );
   EXPECT_THAT( added.settings, ElementsAre() );
   EXPECT_FALSE( another.pollStarted );
}

TEST_F( PollingDevice, DoesNotTestTheTimerThatItGets ) {
   Host::timerAddFails = true;
   Poller without;
   EXPECT_EQ( without.pollTimer, nullptr );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "creating timer" } ) );
   // The host of these tests can't delete what it has not added.
   without.pollTimer = device.pollTimer;
}

TEST_F( PollingDevice, DeletesItsTimer ) {
   std::unique_ptr<HardwareDevice> another = std::make_unique<Poller>();
   auto& added = *Host::timers.back();
   Host::traces.clear();
   another.reset();
   EXPECT_TRUE( added.deleted );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "destroying timer" } ) );
}

TEST_F( PollingDevice, ArmsItsTimerWhenItStarts ) {
   EXPECT_TRUE( device.pollStart() );
   EXPECT_TRUE( device.pollStarted );
   EXPECT_THAT( timer().settings, ElementsAre( 250 ) );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "setting polling interval to 250ms" } ) );
   EXPECT_THAT( device.settingsAtPoll, ElementsAre() );
}

TEST_F( PollingDevice, HasAnIntervalOf32Bits ) {
   device.pollInterval = 0xFFFFFFFF;
   EXPECT_TRUE( device.pollStart() );
   EXPECT_THAT( timer().settings, ElementsAre( 0xFFFFFFFF ) );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "setting polling interval to 4294967295ms" } ) );
}

TEST_F( PollingDevice, StartsOnce ) {
   device.pollStart();
   Host::traces.clear();
   EXPECT_TRUE( device.pollStart() );
   EXPECT_THAT( timer().settings, ElementsAre( 250 ) );
   EXPECT_THAT( Host::traces, ElementsAre() );
}

TEST_F( PollingDevice, TellsWhenItCannotStartAndTriesAgain ) {
   for ( int refusal : { -1, 1 } ) {
      SCOPED_TRACE( refusal );
      Host::traces.clear();
      Host::timerSetResult = refusal;
      EXPECT_FALSE( device.pollStart() );
      EXPECT_FALSE( device.pollStarted );
      EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "setting polling interval to 250ms" },
                                    TraceLine { 0, "failed to set timer interval" } ) );
   }
   Host::timerSetResult = 0;
   EXPECT_TRUE( device.pollStart() );
   EXPECT_TRUE( device.pollStarted );
}

TEST_F( PollingDevice, PollsAndThenArmsItsTimerAnew ) {
   device.pollStart();
   Host::traces.clear();
   timer().fire();
   EXPECT_THAT( device.settingsAtPoll, ElementsAre( 1 ) );
   EXPECT_FALSE( device.wasArmedInPoll );
   EXPECT_THAT( timer().settings, ElementsAre( 250, 250 ) );
   EXPECT_TRUE( timer().armed );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 6, "pollCallbackWrapper" } ) );
}

TEST_F( PollingDevice, TakesANewIntervalWithTheNextPoll ) {
   device.pollStart();
   device.pollInterval = 500;
   timer().fire();
   EXPECT_THAT( timer().settings, ElementsAre( 250, 500 ) );
}

TEST_F( PollingDevice, CountsAsStartedWhenATickHasArmedItsTimer ) {
   Polling::handlePollTimerCallback( static_cast<Polling*>( &device ) );
   EXPECT_TRUE( device.pollStarted );
}

TEST_F( PollingDevice, StaysAsItWasWhenATickCannotArmItsTimer ) {
   for ( bool started : { true, false } ) {
      SCOPED_TRACE( started );
      device.pollStarted = started;
      device.settingsAtPoll.clear();
      Host::traces.clear();
      Host::timerSetResult = 1;
      timer().fire();
      EXPECT_EQ( device.pollStarted, started );
      EXPECT_EQ( device.settingsAtPoll.size(), 1U );
      EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 6, "pollCallbackWrapper" },
                                    TraceLine { 0, "failed to set timer interval" } ) );
   }
}
