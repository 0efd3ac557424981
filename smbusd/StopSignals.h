#ifndef SMBUSD_STOP_SIGNALS_H
#define SMBUSD_STOP_SIGNALS_H

#include "EventLoop.h"

namespace Smbusd {

/**
 * Lets SIGTERM and SIGINT stop the event loop. To be made before the first thread, which inherits that the
 * signals are blocked.
 */
class StopSignals final : EventLoop::Watcher {
public:
   /** Throws std::system_error. */
   explicit StopSignals( EventLoop& loop );
   ~StopSignals();
   StopSignals( const StopSignals& ) = delete;
   StopSignals& operator=( const StopSignals& ) = delete;

private:
   void ready( short events ) override;

   EventLoop& loop_;
   Descriptor descriptor_;
   EventLoop::Slot slot_;
};

} // namespace Smbusd

#endif
