#include "Errors.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

namespace Smbusd::I2cDev {

namespace {

std::string words( int error ) { return std::generic_category().message( error ); }

} // namespace

Outcome openFailure( int error, const std::string& path ) {
   auto detail = fmt::format( "{}: {}", path, words( error ) );
   switch ( error ) {
   case ENOENT:
   case ENODEV:
   case ENXIO:
      return { I2c::Result::NoBus, detail + "; load i2c-dev, or correct the map of adapters" };
   case EACCES:
   case EPERM:
      return { I2c::Result::NotPermitted, detail + "; put the server's user into the group of this device" };
   default:
      return { I2c::Result::IoError, detail };
   }
}

Outcome selectFailure( int error ) {
   return error == EBUSY ? Outcome { I2c::Result::HeldByDriver } : transferFailure( error );
}

Outcome transferFailure( int error ) {
   switch ( error ) {
   case ENXIO:
   case ENODEV:
   case EREMOTEIO:
      return { I2c::Result::NoAcknowledge };
   case EBUSY:
      return { I2c::Result::BusBusy };
   case EAGAIN:
      return { I2c::Result::ArbitrationLost };
   case EPROTO:
      return { I2c::Result::BadBlock };
   case ETIMEDOUT:
      return { I2c::Result::TimedOut };
   case EACCES:
   case EPERM:
      return { I2c::Result::NotPermitted };
   case EOPNOTSUPP:
   case EINVAL:
      return { I2c::Result::NotSupported };
   default:
      return { I2c::Result::IoError, words( error ) };
   }
}

bool adapterMayBeGone( int error ) {
   return error == ENODEV || error == EIO || error == ESHUTDOWN || error == EBADF;
}

} // namespace Smbusd::I2cDev
