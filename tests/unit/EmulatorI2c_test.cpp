#include "emulator/I2c.h"

#include <gtest/gtest.h>

using I2c::Result;

TEST( EmulatorI2c, EachResultHasItsOwnWords ) {
   const std::pair<Result, const char*> rows[] = {
      { Result::Ok, "ok" },
      { Result::NoAcknowledge, "no acknowledge" },
      { Result::BusBusy, "bus busy" },
      { Result::ArbitrationLost, "arbitration lost" },
      { Result::BadBlock, "bad block length" },
      { Result::TimedOut, "timed out" },
      { Result::NotPermitted, "not permitted" },
      { Result::HeldByDriver, "held by a kernel driver" },
      { Result::NotSupported, "not supported by the adapter" },
      { Result::NoBus, "no such bus" },
      { Result::IoError, "I/O error" },
   };
   for ( auto& [result, words] : rows ) {
      EXPECT_STREQ( describe( result ), words );
   }
}
