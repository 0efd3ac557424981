#ifndef SMBUSD_I2C_DEV_SMBUS_TRANSFER_H
#define SMBUSD_I2C_DEV_SMBUS_TRANSFER_H

#include "Kernel.h"

#include "smbusd/Operation.h"

#include <string>

/** Operations as I2C_SMBUS, for adapters that know SMBus alone. */
namespace Smbusd::I2cDev::SmbusTransfer {

/** What the adapter lacks for an operation, for a person; empty when it can do it. */
std::string lacking( const Operation& operation, unsigned long functions );

/** Talks to the chip that was selected. @return 0 or an errno */
int run( Kernel& kernel, int fd, Operation& operation );

} // namespace Smbusd::I2cDev::SmbusTransfer

#endif
