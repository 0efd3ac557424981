#ifndef SERVE_LISTENER_H
#define SERVE_LISTENER_H

#include <string>

namespace Serve {

/** A TCP socket that listens. */
class Listener {
public:
   /**
    * @param address such as "127.0.0.1:9633", "[::1]:9633" or "localhost:9633"; port 0 for any that is free
    * @throw InputError when that is none, std::runtime_error when it can't be listened on
    */
   explicit Listener( const std::string& address );
   ~Listener();
   Listener( const Listener& ) = delete;
   Listener& operator=( const Listener& ) = delete;

   /** Gives the socket away. */
   int release();

   /** The address with the port that it is. */
   const std::string& address() const { return address_; }

private:
   int socket_;
   std::string address_;
};

} // namespace Serve

#endif
