#include "Kernel.h"

#include <sys/ioctl.h>

#include <fcntl.h>
#include <unistd.h>

namespace Smbusd::I2cDev {

int RealKernel::open( const std::string& path ) { return ::open( path.c_str(), O_RDWR | O_CLOEXEC ); }

void RealKernel::close( int fd ) { ::close( fd ); }

int RealKernel::functions( int fd, unsigned long& functions ) { return ioctl( fd, I2C_FUNCS, &functions ); }

int RealKernel::select( int fd, uint8_t chip ) {
   return ioctl( fd, I2C_SLAVE, static_cast<unsigned long>( chip ) );
}

int RealKernel::transfer( int fd, i2c_rdwr_ioctl_data& transfer ) { return ioctl( fd, I2C_RDWR, &transfer ); }

int RealKernel::transfer( int fd, i2c_smbus_ioctl_data& transfer ) {
   return ioctl( fd, I2C_SMBUS, &transfer );
}

} // namespace Smbusd::I2cDev
