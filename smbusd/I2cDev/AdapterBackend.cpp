#include "AdapterBackend.h"

#include "Device.h"
#include "Errors.h"
#include "Worker.h"

#include "smbusd/Log.h"

#include <fmt/format.h>

#include <cerrno>
#include <set>
#include <utility>

namespace Smbusd::I2cDev {

namespace {

class AdapterBus : public Bus {
public:
   AdapterBus( EventLoop& loop, Kernel& kernel, const AdapterReference& adapter )
      : loop_( loop ), device_( kernel, adapter ) {}

   std::string name() const override { return device_.name(); }

   std::optional<Outcome> transfer( Operation& operation, Done done ) override {
      worker_.run( [this, &operation, done = std::move( done )] {
         loop_.post( [done, outcome = device_.transfer( operation )] { done( outcome ); } );
      } );
      return std::nullopt;
   }

private:
   EventLoop& loop_;
   Device device_;
   // Behind the device, which the thread uses to its end.
   Worker worker_;
};

} // namespace

AdapterBackend::AdapterBackend( EventLoop& loop, Kernel& kernel, const BusMap& map ) {
   for ( auto& [key, adapter] : map ) {
      auto& bus = adapters_[adapter];
      if ( !bus ) {
         bus = std::make_unique<AdapterBus>( loop, kernel, adapter );
      }
      busses_[key] = bus.get();
   }
}

AdapterBackend::~AdapterBackend() = default;

Bus* AdapterBackend::find( const BusKey& key ) {
   auto found = busses_.find( key );
   return found == busses_.end() ? nullptr : found->second;
}

void warnOfUnusable( Kernel& kernel, const BusMap& map, const std::filesystem::path& devices ) {
   std::set<uint32_t> numbers;
   for ( auto& [key, adapter] : map ) {
      if ( auto number = std::get_if<uint32_t>( &adapter ) ) {
         numbers.insert( *number );
      } else {
         auto found = findAdapters( std::get<std::string>( adapter ), devices );
         numbers.insert( found.begin(), found.end() );
      }
   }
   for ( auto number : numbers ) {
      auto path = fmt::format( "/dev/i2c-{}", number );
      auto fd = kernel.open( path );
      if ( fd < 0 ) {
         Log::warning( "i2c-{}: {}", number, describe( openFailure( errno, path ) ) );
      } else {
         kernel.close( fd );
      }
   }
}

} // namespace Smbusd::I2cDev
