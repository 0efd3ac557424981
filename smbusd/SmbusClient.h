#ifndef SMBUSD_SMBUS_CLIENT_H
#define SMBUSD_SMBUS_CLIENT_H

#include "Bus.h"
#include "Connection.h"
#include "Scheduler.h"
#include "Transaction.h"

#include <memory>

namespace Smbusd {

/** A client with transactions for the busses, one in a frame. */
class SmbusClient : public Connection, public std::enable_shared_from_this<SmbusClient> {
public:
   SmbusClient( EventLoop& loop, Descriptor descriptor, Backend& backend, Scheduler& scheduler )
      : Connection( loop, std::move( descriptor ) ), backend_( backend ), scheduler_( scheduler ) {}

private:
   size_t take( std::span<const uint8_t> bytes ) override;
   void answer( const Transaction& transaction );

   Backend& backend_;
   Scheduler& scheduler_;
};

} // namespace Smbusd

#endif
