#include "Deadline.h"

#include <gtest/gtest.h>

using namespace QuillonLibrary;
using namespace std::chrono_literals;

TEST( Deadline, BeginsToRunWithTheFirstLook ) {
   Deadline deadline( 1h );
   EXPECT_EQ( deadline.left<std::chrono::nanoseconds>(), 1h );
   EXPECT_LT( deadline.left<std::chrono::nanoseconds>(), 1h );
}

TEST( Deadline, RoundsUp ) {
   Deadline deadline( 1h );
   deadline.left<std::chrono::hours>();
   EXPECT_EQ( deadline.left<std::chrono::hours>(), 1h );
}

TEST( Deadline, LeavesNothingWhenItIsOver ) {
   Deadline deadline( 0ms );
   EXPECT_EQ( deadline.left<std::chrono::nanoseconds>(), 0ns );
   EXPECT_EQ( deadline.left<std::chrono::nanoseconds>(), 0ns ) << "never less";
}
