#include "Components/Led.h"

#include "Assertion.h"
#include "FakeDriver.h"
#include "HostServices.h"
#include "MockDevices.h"
#include "ObjectLayout.h"

#include <fmt/format.h>

#include <deque>

using Component::LogicalDevice::Led;
using Host::TraceLine;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Return;

namespace {

const auto timerAtLoad = Led::blinkTimer_;
const auto periodAtLoad = Led::blinkPeriod_;
const auto phaseAtLoad = Led::blinkStatus_;
const auto ledsAtLoad = Led::notifyList_.size();

class LogicalLed : public Host::Test {
protected:
   LogicalLed() { forget(); }

   ~LogicalLed() override { forget(); }

   static void forget() {
      Led::blinkTimer_ = nullptr;
      Led::blinkStatus_ = false;
      Led::notifyList_.clear();
   }
};

/** Writes down each tick with its phase, and leaves when told to. */
class BlinkingLed : public Led {
public:
   BlinkingLed( char letter, std::string& log ) : Led( true ), letter_( letter ), log_( log ) {}

   bool handleBlinkTimer( bool phase ) override {
      log_ += letter_;
      log_ += phase ? '1' : '0';
      if ( answers.empty() ) {
         return true;
      }
      auto stays = answers.front();
      answers.pop_front();
      return stays;
   }

   ql_status setLightSetting( ql_led_status ) override { return QL_STATUS_OK; }

   /** Answers to the next ticks; true when it is empty. */
   std::deque<bool> answers;

private:
   char letter_;
   std::string& log_;
};

class BlinkTimer : public LogicalLed {
protected:
   BlinkTimer() {
      Led::createBlinkTimer();
      Host::traces.clear();
   }

   /** Lets LEDs join in this order. */
   void join( std::initializer_list<BlinkingLed*> leds ) {
      for ( auto led : leds ) {
         Led::notifyOnBlink( led );
      }
      Host::traces.clear();
   }

   static void tick() { Led::blinkTimer_->fire(); }

   static auto& settings() { return Led::blinkTimer_->settings; }

   /** LEDs told, each with the phase. */
   std::string told;
   BlinkingLed a { 'A', told };
   BlinkingLed b { 'B', told };
   BlinkingLed c { 'C', told };
};

} // namespace

TEST_F( LogicalLed, IsLaidOutAsHostsAndDriversKnowIt ) {
   MockLed led { true };
   Led& base = led;
   EXPECT_EQ( Layout::offsetOf( base, base.record ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.reserved ), 0U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.ops ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.owner ), 16U );
   EXPECT_EQ( Layout::offsetOf( base, base.usesBlinkTimer ), 32U );
   EXPECT_EQ( sizeof( base.usesBlinkTimer ), 1U );
   EXPECT_EQ( sizeof( Led ), 40U );
}

TEST_F( LogicalLed, LeavesTheFirstWordOfItsRecordAlone ) {
   Layout::InFilledMemory<MockLed> led( true );
   EXPECT_EQ( led->record.reserved, led.pattern );
   EXPECT_EQ( led->record.ops, &Led::ops_ );
   EXPECT_EQ( led->record.owner, static_cast<Led*>( &*led ) );
}

TEST_F( LogicalLed, HasOneTableForAllObjects ) {
   MockLed one { true }, other { false };
   EXPECT_EQ( one.record.ops, other.record.ops );
   EXPECT_THAT( Layout::wordsOf( Led::ops_ ), ElementsAre( 16, Led::setLightSettingCallback ) );
}

TEST_F( LogicalLed, HasItsOperationsInTheirSlots ) {
   EXPECT_EQ( Layout::slotOf( &Led::handleBlinkTimer ), 2U );
   EXPECT_EQ( Layout::slotOf( &Led::setLightSetting ), 3U );
}

TEST_F( LogicalLed, KnowsWhetherItUsesTheBlinkTimer ) {
   EXPECT_TRUE( MockLed( true ).usesBlinkTimer );
   EXPECT_FALSE( MockLed( false ).usesBlinkTimer );
}

TEST_F( LogicalLed, PassesTheSettingCallbackOn ) {
   testing::StrictMock<MockLed> led { true };
   EXPECT_CALL( led, setLightSetting( QL_LED_BEACON ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( led.record.ops->set_light_setting( &led.record, QL_LED_BEACON ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, fmt::format( "setLightSettingCallback({}, 6)",
                                                             fmt::ptr( &led.record ) ) } ) );
}

TEST_F( LogicalLed, PassesASettingOutsideTheEnumerationOn ) {
   testing::StrictMock<MockLed> led { true };
   EXPECT_CALL( led, setLightSetting( ql_led_status( 0xFFFFFFFF ) ) ).WillOnce( Return( QL_STATUS_OK ) );
   EXPECT_EQ( led.record.ops->set_light_setting( &led.record, ql_led_status( 0xFFFFFFFF ) ), QL_STATUS_OK );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, fmt::format( "setLightSettingCallback({}, -1)",
                                                             fmt::ptr( &led.record ) ) } ) );
}

TEST_F( LogicalLed, HasATextForEachStatusBelowRelease ) {
   struct {
      ql_led_status status;
      unsigned number;
      const char* text;
   } const rows[] = {
      { QL_LED_OFF, 0, "Off" },
      { QL_LED_GOOD, 1, "Good" },
      { QL_LED_WARNING, 2, "Warning" },
      { QL_LED_BAD, 3, "Bad" },
      { QL_LED_INACTIVE, 4, "Inactive" },
      { QL_LED_UNKNOWN, 5, "Unknown" },
      { QL_LED_BEACON, 6, "Beacon" },
   };

   for ( auto& [status, number, text] : rows ) {
      EXPECT_EQ( status, number ) << text;
      EXPECT_STREQ( Led::getLedStatusString( status ), text );
   }
   EXPECT_EQ( QL_LED_RELEASE, 7U );
   EXPECT_EQ( sizeof( ql_led_status ), 4U );
}

TEST_F( LogicalLed, HasNoTextForReleaseAndBeyond ) {
   auto outside = assertionFailed( "( unsigned )status < sizeof ( strs ) / sizeof ( *strs )" );
   EXPECT_DEATH( Led::getLedStatusString( QL_LED_RELEASE ), outside );
   EXPECT_DEATH( Led::getLedStatusString( ql_led_status( 0xFFFFFFFF ) ), outside );
}

TEST_F( LogicalLed, StartsWithoutATimerInPhaseZeroAtOneTickASecond ) {
   EXPECT_EQ( timerAtLoad, nullptr );
   EXPECT_EQ( periodAtLoad, 1000U );
   EXPECT_FALSE( phaseAtLoad );
   EXPECT_EQ( ledsAtLoad, 0U );
}

TEST_F( LogicalLed, CreatesTheBlinkTimerOnceAndDoesNotStartIt ) {
   Led::createBlinkTimer();
   ASSERT_EQ( Host::timers.size(), 1U );
   auto timer = Host::timers[0].get();
   EXPECT_EQ( Led::blinkTimer_, timer );
   EXPECT_EQ( timer->function, Led::handleBlinkTimerCallback );
   EXPECT_EQ( timer->argument, nullptr );
   EXPECT_THAT( timer->settings, IsEmpty() );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "creating unique led blink timer" } ) );

   Host::traces.clear();
   Led::createBlinkTimer();
   EXPECT_EQ( Host::timers.size(), 1U );
   EXPECT_THAT( Host::traces, IsEmpty() );
}

TEST_F( LogicalLed, EndsTheProcessWhenTheHostHasNoTimer ) {
   Host::timerAddFails = true;
   Host::echoTraces = true;
   EXPECT_DEATH( Led::createBlinkTimer(),
      AllOf( HasSubstr( "0: creating unique led blink timer\n0: failed to create blink timer\n" ),
         assertionFailed( "blinkTimer_" ) ) );
}

TEST_F( LogicalLed, ThatIsAddedFirstCreatesTheTimer ) {
   FakeDriver driver;
   MockLed led { true };
   driver.device.led = &led;
   EXPECT_EQ( ql_led_add( deviceText( "Fake" ).c_str() ), &led.record );
   EXPECT_EQ( Host::traces.back(), ( TraceLine { 0, "creating unique led blink timer" } ) );

   Host::traces.clear();
   EXPECT_EQ( ql_led_add( deviceText( "Fake" ).c_str() ), &led.record );
   EXPECT_FALSE( Host::hasTraced( 0, "creating unique led blink timer" ) );
   EXPECT_EQ( Host::timers.size(), 1U );
   EXPECT_THAT( Host::timers[0]->settings, IsEmpty() );
}

TEST_F( LogicalLed, ThatDoesNotBlinkCreatesNoTimer ) {
   FakeDriver driver;
   MockLed led { false };
   driver.device.led = &led;
   EXPECT_EQ( ql_led_add( deviceText( "Fake" ).c_str() ), &led.record );
   EXPECT_THAT( Host::timers, IsEmpty() );
}

TEST_F( LogicalLed, ThatIsAddedToAHostWithoutTimersEndsTheProcess ) {
   FakeDriver driver;
   MockLed led { true };
   driver.device.led = &led;
   Host::timerAddFails = true;
   EXPECT_DEATH( ql_led_add( deviceText( "Fake" ).c_str() ), assertionFailed( "blinkTimer_" ) );
}

TEST_F( LogicalLed, CannotJoinTheBlinkListBeforeTheTimerExists ) {
   MockLed led { true };
   Host::echoTraces = true;
   EXPECT_DEATH( Led::notifyOnBlink( &led ),
      AllOf( HasSubstr( "4: notifyOnBlink() adding led to blink notification list\n" ),
         assertionFailed( "blinkTimer_" ) ) );
}

TEST_F( BlinkTimer, IsArmedByTheFirstLedThatJoins ) {
   Led::notifyOnBlink( &a );
   EXPECT_THAT( settings(), ElementsAre( 1000 ) );
   EXPECT_THAT( Led::notifyList_, ElementsAre( &a ) );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 4, "notifyOnBlink() adding led to blink notification list" } ) );
}

TEST_F( BlinkTimer, IsNotArmedAgainByTheNextLed ) {
   Led::notifyOnBlink( &a );
   Led::notifyOnBlink( &b );
   EXPECT_THAT( settings(), ElementsAre( 1000 ) );
   EXPECT_THAT( Led::notifyList_, ElementsAre( &a, &b ) );
}

TEST_F( BlinkTimer, TakesTheLow32BitsOfThePeriod ) {
   auto period = Led::blinkPeriod_;
   Led::blinkPeriod_ = 0x1'0000'0000 + 250;
   Led::notifyOnBlink( &a );
   Led::blinkPeriod_ = period;
   EXPECT_THAT( settings(), ElementsAre( 250 ) );
}

TEST_F( BlinkTimer, MayRefuseToBeArmed ) {
   Host::timerSetResult = -1;
   Led::notifyOnBlink( &a );
   tick();
   EXPECT_EQ( told, "A0" );
   EXPECT_THAT( Led::notifyList_, ElementsAre( &a ) );
   EXPECT_TRUE( Led::blinkStatus_ );
   EXPECT_THAT( Host::tracesOf( 0 ), IsEmpty() );
}

TEST_F( BlinkTimer, TellsAllLedsInOrderAndGoesOn ) {
   join( { &a, &b, &c } );
   tick();
   EXPECT_EQ( told, "A0B0C0" );
   EXPECT_THAT( settings(), ElementsAre( 1000, 1000 ) );
   EXPECT_TRUE( Led::blinkTimer_->armed );
}

TEST_F( BlinkTimer, TracesTheNumberOfLedsBeforeTheTick ) {
   join( { &a, &b, &c } );
   a.answers = { false };
   tick();
   tick();
   EXPECT_THAT( Host::traces,
      ElementsAre( TraceLine { 4, "handleBlinkTimerCallback() led blink timer hit notifying 3 leds" },
         TraceLine { 4, "handleBlinkTimerCallback() led blink timer hit notifying 2 leds" } ) );
}

TEST_F( BlinkTimer, FlipsThePhaseAtEachTick ) {
   join( { &a, &b } );
   tick();
   tick();
   tick();
   EXPECT_EQ( told, "A0B0A1B1A0B0" );
}

TEST_F( BlinkTimer, SkipsTheLedBehindALeavingOne ) {
   join( { &a, &b, &c } );
   a.answers = { false };
   tick();
   EXPECT_EQ( told, "A0C0" );
   EXPECT_THAT( Led::notifyList_, ElementsAre( &b, &c ) );
   tick();
   EXPECT_EQ( told, "A0C0B1C1" );
}

TEST_F( BlinkTimer, EndsTheTickWhenTheLastButOneLeaves ) {
   join( { &a, &b, &c } );
   b.answers = { false };
   tick();
   EXPECT_EQ( told, "A0B0" );
   EXPECT_THAT( Led::notifyList_, ElementsAre( &a, &c ) );
   EXPECT_EQ( settings().size(), 2U );
}

TEST_F( BlinkTimer, TellsTheOthersAgainWhenTheLastLeaves ) {
   join( { &a, &b, &c } );
   c.answers = { false };
   tick();
   EXPECT_EQ( told, "A0B0C0A0B0" );
   EXPECT_THAT( Led::notifyList_, ElementsAre( &a, &b ) );
}

TEST_F( BlinkTimer, TellsTheFirstOfTwoTwiceWhenTheSecondLeaves ) {
   join( { &a, &b } );
   b.answers = { false };
   tick();
   EXPECT_EQ( told, "A0B0A0" );
   EXPECT_THAT( Led::notifyList_, ElementsAre( &a ) );
   EXPECT_TRUE( Led::blinkTimer_->armed );
}

TEST_F( BlinkTimer, LetsLedsLeaveInTheSecondRoundToo ) {
   join( { &a, &b, &c } );
   a.answers = { true, false };
   c.answers = { false };
   tick();
   EXPECT_EQ( told, "A0B0C0A0" );
   EXPECT_THAT( Led::notifyList_, ElementsAre( &b ) );
}

TEST_F( BlinkTimer, GoesOnBehindTheSkippedLedWhenSeveralLeave ) {
   join( { &a, &b, &c } );
   a.answers = { false };
   c.answers = { false };
   tick();
   EXPECT_EQ( told, "A0C0B0" );
   EXPECT_THAT( Led::notifyList_, ElementsAre( &b ) );
}

TEST_F( BlinkTimer, LapsesWhenTheOnlyLedLeaves ) {
   join( { &a } );
   a.answers = { false };
   tick();
   EXPECT_EQ( told, "A0" );
   EXPECT_THAT( Led::notifyList_, IsEmpty() );
   EXPECT_THAT( settings(), ElementsAre( 1000 ) );
   EXPECT_FALSE( Led::blinkTimer_->armed );
   EXPECT_TRUE( Led::blinkStatus_ ) << "the phase flips all the same";
}

TEST_F( BlinkTimer, IsArmedAnewByALedThatJoinsALapsedList ) {
   join( { &a } );
   a.answers = { false };
   tick();
   Led::notifyOnBlink( &b );
   EXPECT_THAT( settings(), ElementsAre( 1000, 1000 ) );
   tick();
   EXPECT_EQ( told, "A0B1" );
}

TEST_F( BlinkTimer, IsNeverDeleted ) {
   join( { &a } );
   a.answers = { false };
   tick();
   EXPECT_FALSE( Led::blinkTimer_->deleted );
}
