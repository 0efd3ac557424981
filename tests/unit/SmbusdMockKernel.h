#ifndef SMBUSD_MOCK_KERNEL_H
#define SMBUSD_MOCK_KERNEL_H

#include "smbusd/I2cDev/Kernel.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

namespace Smbusd::I2cDev {

class MockKernel : public Kernel {
public:
   MOCK_METHOD( int, open, ( const std::string& path ), ( override ) );
   MOCK_METHOD( void, close, ( int fd ), ( override ) );
   MOCK_METHOD( int, functions, ( int fd, unsigned long& functions ), ( override ) );
   MOCK_METHOD( int, select, ( int fd, uint8_t chip ), ( override ) );
   MOCK_METHOD( int, transfer, ( int fd, i2c_rdwr_ioctl_data& transfer ), ( override ) );
   MOCK_METHOD( int, transfer, ( int fd, i2c_smbus_ioctl_data& transfer ), ( override ) );
};

/** A system call that fails. */
ACTION_P( FailWith, error ) {
   errno = error;
   return -1;
}

constexpr int deviceFd = 77;

/** A directory as the kernel has it for its I2C devices. */
class SysfsTree {
public:
   SysfsTree() {
      char name[] = "/tmp/smbusd-XXXXXX";
      path_ = mkdtemp( name );
   }

   ~SysfsTree() { std::filesystem::remove_all( path_ ); }

   SysfsTree( const SysfsTree& ) = delete;
   SysfsTree& operator=( const SysfsTree& ) = delete;

   void add( const std::string& entry, const std::string& name ) {
      std::filesystem::create_directory( path_ / entry );
      std::ofstream( path_ / entry / "name" ) << name << "\n";
   }

   void remove( const std::string& entry ) { std::filesystem::remove_all( path_ / entry ); }

   const std::filesystem::path& path() const { return path_; }

private:
   std::filesystem::path path_;
};

} // namespace Smbusd::I2cDev

#endif
