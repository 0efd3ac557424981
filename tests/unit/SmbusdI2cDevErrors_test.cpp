#include "smbusd/I2cDev/Errors.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <set>

using namespace Smbusd;
using namespace Smbusd::I2cDev;

namespace {

struct Row {
   int error;
   I2c::Result result;
   const char* words;
};

const Row transferRows[] = {
   { ENXIO, I2c::Result::NoAcknowledge, "no acknowledge" },
   { ENODEV, I2c::Result::NoAcknowledge, "no acknowledge" },
   { EREMOTEIO, I2c::Result::NoAcknowledge, "no acknowledge" },
   { EBUSY, I2c::Result::BusBusy, "bus busy" },
   { EAGAIN, I2c::Result::ArbitrationLost, "arbitration lost" },
   { EPROTO, I2c::Result::BadBlock, "bad block length" },
   { ETIMEDOUT, I2c::Result::TimedOut, "timed out" },
   { EACCES, I2c::Result::NotPermitted, "not permitted" },
   { EPERM, I2c::Result::NotPermitted, "not permitted" },
   { EOPNOTSUPP, I2c::Result::NotSupported, "not supported by the adapter" },
   { EINVAL, I2c::Result::NotSupported, "not supported by the adapter" },
   { EIO, I2c::Result::IoError, "I/O error (Input/output error)" },
   { ENOMEM, I2c::Result::IoError, "I/O error (Cannot allocate memory)" },
};

const Row openRows[] = {
   { ENOENT, I2c::Result::NoBus,
      "no such bus (/dev/i2c-7: No such file or directory; load i2c-dev, or correct the map of adapters)" },
   { ENODEV, I2c::Result::NoBus,
      "no such bus (/dev/i2c-7: No such device; load i2c-dev, or correct the map of adapters)" },
   { ENXIO, I2c::Result::NoBus,
      "no such bus (/dev/i2c-7: No such device or address; load i2c-dev, or correct the map of adapters)" },
   { EACCES, I2c::Result::NotPermitted,
      "not permitted (/dev/i2c-7: Permission denied; put the server's user into the group of this device)" },
   { EPERM, I2c::Result::NotPermitted,
      "not permitted (/dev/i2c-7: Operation not permitted; put the server's user into the group of this "
      "device)" },
   { EMFILE, I2c::Result::IoError, "I/O error (/dev/i2c-7: Too many open files)" },
};

} // namespace

TEST( SmbusdI2cDevErrors, OfTransfersKeepTheirCauses ) {
   for ( auto& row : transferRows ) {
      auto outcome = transferFailure( row.error );
      EXPECT_EQ( outcome.result, row.result ) << strerror( row.error );
      EXPECT_EQ( describe( outcome ), row.words ) << strerror( row.error );
   }
}

TEST( SmbusdI2cDevErrors, OfOpeningNameTheDevice ) {
   for ( auto& row : openRows ) {
      auto outcome = openFailure( row.error, "/dev/i2c-7" );
      EXPECT_EQ( outcome.result, row.result ) << strerror( row.error );
      EXPECT_EQ( describe( outcome ), row.words ) << strerror( row.error );
   }
}

TEST( SmbusdI2cDevErrors, OfSelectingTellThatADriverHasTheChip ) {
   EXPECT_EQ( describe( selectFailure( EBUSY ) ), "held by a kernel driver" );
}

TEST( SmbusdI2cDevErrors, OfSelectingAreOtherwiseThoseOfTransfers ) {
   EXPECT_EQ( describe( selectFailure( EPERM ) ), "not permitted" );
}

TEST( SmbusdI2cDevErrors, OfAnAdapterThatIsGoneAreThese ) {
   const std::set<int> gone { ENODEV, EIO, ESHUTDOWN, EBADF };
   for ( int error = 1; error < 133; ++error ) {
      EXPECT_EQ( adapterMayBeGone( error ), gone.contains( error ) ) << strerror( error );
   }
}
