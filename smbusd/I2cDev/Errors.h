#ifndef SMBUSD_I2C_DEV_ERRORS_H
#define SMBUSD_I2C_DEV_ERRORS_H

#include "smbusd/Bus.h"

#include <string>

namespace Smbusd::I2cDev {

/** What the errno of a failed open of /dev/i2c-N means. */
Outcome openFailure( int error, const std::string& path );

/** What the errno of a failed I2C_SLAVE means. */
Outcome selectFailure( int error );

/** What the errno of a failed transfer means, as the kernel's list of I2C fault codes has it. */
Outcome transferFailure( int error );

/** Whether a transfer may have failed because the adapter is gone, so that it has to be opened anew. */
bool adapterMayBeGone( int error );

} // namespace Smbusd::I2cDev

#endif
