// A server that is always there and acknowledges everything, in place of the library's way to one: the
// plug-in finds this class among the program's own symbols first.

#include "smbus.pb.h"

#include "QLSocket.h"

namespace QuillonLibrary {

QLSocket::QLSocket() = default;

QLSocket::~QLSocket() = default;

int QLSocket::setup() { return 0; }

void QLSocket::cleanup() {}

int QLSocket::sendRequestWait( Smbus::TransactionRequest* request, Smbus::TransactionResponse** response ) {
   auto answer = new Smbus::TransactionResponse;
   for ( auto& each : request->request() ) {
      auto isRead = each.type() == Smbus::READ || each.type() == Smbus::PROCESS_CALL;
      answer->add_response()->set_data( std::string( isRead ? std::max( each.size(), 1U ) : 0, '\0' ) );
   }
   *response = answer;
   return 0;
}

} // namespace QuillonLibrary
