#include "Device.h"

#include "CombinedTransfer.h"
#include "Errors.h"
#include "SmbusTransfer.h"

#include <fmt/format.h>

#include <cerrno>
#include <utility>

namespace Smbusd::I2cDev {

namespace {

std::string nameOf( uint32_t number ) { return fmt::format( "i2c-{}", number ); }

std::string nameOf( const std::string& name ) { return name; }

} // namespace

Device::Device( Kernel& kernel, AdapterReference adapter, std::filesystem::path devices )
   : kernel_( kernel )
   , adapter_( std::move( adapter ) )
   , devices_( std::move( devices ) )
   , name_( std::visit( []( auto& reference ) { return nameOf( reference ); }, adapter_ ) ) {}

Device::~Device() { close(); }

Outcome Device::transfer( Operation& operation ) {
   if ( fd_ < 0 ) {
      if ( auto outcome = open(); outcome.result != I2c::Result::Ok ) {
         return outcome;
      }
   }
   auto combined = ( functions_ & I2C_FUNC_I2C ) != 0;
   auto lacking = combined ? CombinedTransfer::lacking( operation, functions_ )
                           : SmbusTransfer::lacking( operation, functions_ );
   if ( !lacking.empty() ) {
      return { I2c::Result::NotSupported, lacking };
   }
   // I2C_RDWR does without, but would also talk to a chip that a kernel driver has.
   if ( kernel_.select( fd_, operation.chip ) < 0 ) {
      return selectFailure( errno );
   }
   auto error = combined ? CombinedTransfer::run( kernel_, fd_, operation )
                         : SmbusTransfer::run( kernel_, fd_, operation );
   return error == 0 ? Outcome {} : failed( error );
}

Outcome Device::open() {
   if ( std::holds_alternative<std::string>( adapter_ ) ) {
      if ( auto outcome = findNumber(); outcome.result != I2c::Result::Ok ) {
         return outcome;
      }
   }
   auto path = "/dev/" + name_;
   fd_ = kernel_.open( path );
   if ( fd_ < 0 ) {
      return openFailure( errno, path );
   }
   if ( kernel_.functions( fd_, functions_ ) < 0 ) {
      auto outcome = openFailure( errno, path );
      close();
      return outcome;
   }
   return {};
}

Outcome Device::findNumber() {
   auto& wanted = std::get<std::string>( adapter_ );
   auto numbers = findAdapters( wanted, devices_ );
   name_ = wanted;
   if ( numbers.empty() ) {
      return { I2c::Result::NoBus,
         "no adapter has this name; load its driver, or correct the map of adapters" };
   }
   if ( numbers.size() > 1 ) {
      return { I2c::Result::NoBus,
         fmt::format( "several adapters have this name: {}", listAdapters( numbers ) ) };
   }
   name_ = nameOf( numbers[0] );
   return {};
}

void Device::close() {
   if ( fd_ >= 0 ) {
      kernel_.close( std::exchange( fd_, -1 ) );
   }
}

Outcome Device::failed( int error ) {
   if ( adapterMayBeGone( error ) ) {
      close();
   }
   return transferFailure( error );
}

std::string Device::name() const { return name_; }

} // namespace Smbusd::I2cDev
