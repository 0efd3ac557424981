#ifndef SMBUSD_LISTENER_H
#define SMBUSD_LISTENER_H

#include "Descriptor.h"
#include "EventLoop.h"
#include "SocketFile.h"

#include <chrono>
#include <functional>
#include <string>

namespace Smbusd {

/** Accepts connections at a socket. While the process has no descriptor left, newcomers wait. */
class Listener final : EventLoop::Watcher {
public:
   static constexpr std::chrono::milliseconds pause { 100 };

   /**
    * `accepted` takes every connection; one that it can't serve, which it tells by std::system_error, is
    * closed. Throws std::runtime_error, with words for a person.
    */
   Listener( EventLoop& loop, const std::string& path, std::function<void( Descriptor )> accepted );
   ~Listener();
   Listener( const Listener& ) = delete;
   Listener& operator=( const Listener& ) = delete;

private:
   void ready( short events ) override;
   void accept( Descriptor descriptor );
   void pauseAccepting( int error );

   EventLoop& loop_;
   const std::string path_;
   SocketFile socket_;
   EventLoop::Slot slot_;
   std::function<void( Descriptor )> accepted_;
};

} // namespace Smbusd

#endif
