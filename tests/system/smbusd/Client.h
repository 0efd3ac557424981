#ifndef CLIENT_H
#define CLIENT_H

#include <smbus.pb.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

/** The bytes of a frame. */
std::string frame( const google::protobuf::MessageLite& message );

/** A message with one request for a register of one byte. */
Smbus::TransactionRequest reading( uint8_t bus, uint8_t chip, uint8_t reg, uint32_t size );
Smbus::TransactionRequest writing( uint8_t bus, uint8_t chip, uint8_t reg, const std::string& data );

/** A client of a socket that knows nothing but bytes. */
class Client {
public:
   static constexpr std::chrono::seconds patience { 10 };

   explicit Client( const std::string& path );
   ~Client();
   Client( Client&& other ) noexcept;
   Client& operator=( Client&& other ) noexcept;

   void send( std::string_view bytes ) const;
   /** The next bytes, so many; fewer when the server ends the connection, or has nothing to say in time. */
   std::string receive( size_t size, std::chrono::milliseconds time = patience ) const;
   /** Whether the server ends the connection, and says nothing before. */
   bool isDropped() const;
   /** Whether the server has something to say within the time. */
   bool hasAnswer( std::chrono::milliseconds time ) const;

   /** Sends a message and waits for its answer. */
   Smbus::TransactionResponse ask( const Smbus::TransactionRequest& message ) const;
   /** The answer to a message that was sent. */
   Smbus::TransactionResponse answer() const;
   /** Sends a line and waits for one; without the line ends. */
   std::string askLine( const std::string& line ) const;

   /** The process at the other end. */
   pid_t server() const;

private:
   bool waitForInput( std::chrono::steady_clock::time_point deadline ) const;

   int fd_;
};

#endif
