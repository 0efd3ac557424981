#ifndef SMBUSD_SMBUS_CLIENT_H
#define SMBUSD_SMBUS_CLIENT_H

#include "Bus.h"
#include "Connection.h"
#include "Scheduler.h"
#include "Transaction.h"

#include <memory>

namespace Smbusd {

/** A client with transactions for the busses, one in a frame. */
class SmbusClient : public Connection {
public:
   SmbusClient( EventLoop& loop, Descriptor descriptor, Backend& backend, Scheduler& scheduler );
   ~SmbusClient() override;

private:
   size_t take( std::span<const uint8_t> bytes ) override;
   void newJob();
   void answer();

   Backend& backend_;
   Scheduler& scheduler_;
   /** For one message after the other. */
   std::shared_ptr<Scheduler::Job> job_;
   size_t messageSize_ = 0;
};

} // namespace Smbusd

#endif
