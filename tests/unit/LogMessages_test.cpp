#include "Drivers/Selvane/ReloadCauses.h"
#include "Gant.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include <unistd.h>

namespace {

/** A handle as the library makes it while it is loaded, before this program's own objects are made. */
struct Made {
   const Gant::LogDescriptor* descriptor;
   double seconds;
   double rate;
   unsigned first;
   unsigned second;
};

Made made[8];
size_t count;
int destroyed;

class LogMessages : public testing::Test {
protected:
   LogMessages() {
      // A program that uses nothing of the library is not linked with it.
      EXPECT_FALSE( resetEvents.empty() );
   }
};

} // namespace

// In front of the logging library's own.
Gant::LogHandle::LogHandle(
   const LogDescriptor* message, double interval, double ratio, unsigned a, unsigned b ) {
   made[count++] = { message, interval, ratio, a, b };
}

Gant::LogHandle::~LogHandle() {
   if ( ++destroyed == 2 ) {
      constexpr char line[] = "both handles are destroyed\n";
      write( STDERR_FILENO, line, sizeof( line ) - 1 ) < 0 ? abort() : void();
   }
}

TEST_F( LogMessages, HaveTheirTwoHandlesWatchdogFirst ) {
   ASSERT_EQ( count, 2U );
   EXPECT_STREQ( made[0].descriptor->name, "HARDWARE_WATCHDOG_ERROR" );
   EXPECT_STREQ( made[1].descriptor->name, "SYS_KERNEL_PANIC" );
   for ( auto& handle : { made[0], made[1] } ) {
      EXPECT_EQ( handle.seconds, 0.0 );
      EXPECT_EQ( handle.rate, 1.0 );
      EXPECT_EQ( handle.first, 0U );
      EXPECT_EQ( handle.second, 0U );
   }
}

TEST_F( LogMessages, LoseTheirHandlesWhenTheProcessEnds ) {
   EXPECT_EXIT( exit( 0 ), testing::ExitedWithCode( 0 ), "both handles are destroyed" );
}

TEST_F( LogMessages, LieBehindOneAnotherPanicFirst ) {
   ASSERT_EQ( count, 2U );
   EXPECT_EQ( made[0].descriptor, made[1].descriptor + 1 );
   EXPECT_EQ( sizeof( Gant::LogDescriptor ), 40U );
}

TEST_F( LogMessages, SayWhatTheyAreAbout ) {
   ASSERT_EQ( count, 2U );
   auto& watchdog = *made[0].descriptor;
   auto& panic = *made[1].descriptor;
   EXPECT_STREQ( panic.format, "Reboot due to kernel panic" );
   EXPECT_STREQ( panic.explanation, "The system rebooted due to a kernel panic." );
   EXPECT_STREQ( panic.recommendedAction,
      "This may indicate a serious hardware or software problem. Contact your customer support "
      "representative." );
   EXPECT_EQ( panic.number, 3U );
   EXPECT_STREQ( watchdog.format, "Reboot due to system watchdog" );
   EXPECT_STREQ( watchdog.explanation, "The system rebooted due to a watchdog timeout." );
   EXPECT_STREQ( watchdog.recommendedAction, "Harmless if seen infrequently, but may indicate a serious "
                                             "hardware or software problem if seen often." );
   EXPECT_EQ( watchdog.number, 4U );
}
