#include "smbusd/Log.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace Log = Smbusd::Log;

namespace {

/** One line of each level, under the journal. */
std::string linesUpTo( Log::Level threshold ) {
   setenv( "JOURNAL_STREAM", "8:1", 1 );
   Log::threshold = threshold;
   testing::internal::CaptureStderr();
   Log::error( "number {}", 1 );
   Log::warning( "number {}", 2 );
   Log::info( "number {}", 3 );
   Log::debug( "number {}", 4 );
   return testing::internal::GetCapturedStderr();
}

const std::string error = "<3>quillon-smbusd: number 1\n";
const std::string warning = "<4>quillon-smbusd: number 2\n";
const std::string info = "<6>quillon-smbusd: number 3\n";
const std::string debug = "<7>quillon-smbusd: number 4\n";

} // namespace

TEST( SmbusdLog, HoldsTheLinesUpToItsLevelWithTheirPriorities ) {
   EXPECT_EQ( linesUpTo( Log::Level::Error ), error );
   EXPECT_EQ( linesUpTo( Log::Level::Warning ), error + warning );
   EXPECT_EQ( linesUpTo( Log::Level::Info ), error + warning + info );
   EXPECT_EQ( linesUpTo( Log::Level::Debug ), error + warning + info + debug );
}
