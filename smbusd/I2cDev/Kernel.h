#ifndef SMBUSD_I2C_DEV_KERNEL_H
#define SMBUSD_I2C_DEV_KERNEL_H

#include <linux/i2c-dev.h>
#include <linux/i2c.h>

#include <cstdint>
#include <string>

namespace Smbusd::I2cDev {

/** The system calls behind /dev/i2c-N. They return what the calls do: -1 with errno for a failure. */
class Kernel {
public:
   virtual ~Kernel() = default;

   /** A descriptor. */
   virtual int open( const std::string& path ) = 0;
   virtual void close( int fd ) = 0;
   /** I2C_FUNCS: what the adapter can do, as I2C_FUNC bits. */
   virtual int functions( int fd, unsigned long& functions ) = 0;
   /** I2C_SLAVE: the chip that is meant. EBUSY when a kernel driver has it. */
   virtual int select( int fd, uint8_t chip ) = 0;
   /** I2C_RDWR. */
   virtual int transfer( int fd, i2c_rdwr_ioctl_data& transfer ) = 0;
   /** I2C_SMBUS. */
   virtual int transfer( int fd, i2c_smbus_ioctl_data& transfer ) = 0;
};

/** The running system's. */
class RealKernel : public Kernel {
public:
   int open( const std::string& path ) override;
   void close( int fd ) override;
   int functions( int fd, unsigned long& functions ) override;
   int select( int fd, uint8_t chip ) override;
   int transfer( int fd, i2c_rdwr_ioctl_data& transfer ) override;
   int transfer( int fd, i2c_smbus_ioctl_data& transfer ) override;
};

} // namespace Smbusd::I2cDev

#endif
