#ifndef SMBUSD_I2C_DEV_COMBINED_TRANSFER_H
#define SMBUSD_I2C_DEV_COMBINED_TRANSFER_H

#include "Kernel.h"

#include "smbusd/Operation.h"

#include <string>

/** Operations as I2C_RDWR: bus messages with repeated starts between them, for adapters with I2C_FUNC_I2C. */
namespace Smbusd::I2cDev::CombinedTransfer {

/** What the adapter lacks for an operation, for a person; empty when it can do it. */
std::string lacking( const Operation& operation, unsigned long functions );

/** @return 0 or an errno */
int run( Kernel& kernel, int fd, Operation& operation );

} // namespace Smbusd::I2cDev::CombinedTransfer

#endif
