#ifndef SERVE_READER_PROCESS_H
#define SERVE_READER_PROCESS_H

#include "Message.h"

#include <functional>
#include <optional>
#include <vector>

#include <sys/types.h>

namespace Serve {

/** The reader's way to tell what it does. */
class Sender {
public:
   explicit Sender( int socket ) : socket_( socket ) {}

   /** Waits while the other side is behind. @throw std::system_error when it has gone */
   void send( const Message& message ) const;

private:
   int socket_;
};

/** A process beside this one, which tells what it reads. It is ended with its children at the latest here. */
class ReaderProcess {
public:
   /** In the new process. @return its exit status */
   using Work = std::function<int( const Sender& sender )>;

   /** Starts it; in the new process this does not return. */
   explicit ReaderProcess( const Work& work );
   ~ReaderProcess();
   ReaderProcess( const ReaderProcess& ) = delete;
   ReaderProcess& operator=( const ReaderProcess& ) = delete;

   /** Readable when there is a message. */
   int descriptor() const { return socket_; }

   /** The next message, or nothing when none is there now. */
   std::optional<Message> receive();

   /** The exit status once the process has ended, -1 for an end by a signal; nothing while it runs. */
   std::optional<int> ended();

private:
   [[noreturn]] static void run( const Work& work, int socket );

   int socket_;
   pid_t pid_;
   std::vector<char> buffer_;
};

} // namespace Serve

#endif
