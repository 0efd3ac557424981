/*
 * A host that works with every object of the board of boards/selvane, while a hostile server answers: replies
 * of the right lengths with any contents, blocks of any length, PoE messages with a right or a wrong
 * checksum, transactions that fail in each way. One byte of the input says what the host does next, and the
 * bytes behind it are the replies. A number that is shorter than asked for ends the process by contract and
 * is not sent.
 */

#include "FirmwareDirectory.h"
#include "Host.h"
#include "Objects.h"

#include "QLSocket.h"
#include "quillon/ql.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <smbus.pb.h>

#include <cassert>
#include <cerrno>
#include <chrono>
#include <memory>
#include <numeric>
#include <sstream>
#include <string>

namespace {

/** While objects are made all goes well: their chips must take what they are set to. */
bool isHostile = false;

/** The ends of a transaction that are none of its answers. */
enum Ending : uint8_t {
   lost = 0xFF,
   refused = 0xFE,
   refusedSilently = 0xFD,
   tooShort = 0xFC,
   tooLong = 0xFB
};

constexpr uint32_t poeMessage = 12;
uint8_t poeCommand = 0;

/** A reply of the PoE controller: mostly to the last command, and mostly with the right checksum. */
std::string poeReply() {
   constexpr uint8_t anyBytes = 0xFF;
   auto choice = input.byte();
   auto reply = input.bytes( poeMessage );
   if ( choice != anyBytes ) {
      reply[0] = static_cast<char>( choice & 1 ? choice : poeCommand );
      reply.back() = static_cast<char>( std::accumulate( reply.begin(), reply.end() - 1, 0 ) );
   }
   return reply;
}

std::string answerTo( const Smbus::Request& request ) {
   switch ( request.type() ) {
   case Smbus::READ:
      if ( request.size() == poeMessage ) {
         return poeReply();
      }
      return input.bytes( std::max( request.size(), 1U ) );
   case Smbus::PROCESS_CALL:
      return input.bytes( 2 );
   case Smbus::BLOCK_READ:
      return input.bytes( input.byte() );
   default:
      poeCommand = static_cast<uint8_t>( request.address() );
      return "";
   }
}

} // namespace

namespace QuillonLibrary {

// Stands before the class of the library, which speaks to a server.

QLSocket::QLSocket() = default;
QLSocket::~QLSocket() = default;

int QLSocket::setup() { return 0; }

void QLSocket::cleanup() {}

int QLSocket::sendRequestWait( Smbus::TransactionRequest* request, Smbus::TransactionResponse** response ) {
   auto ending = isHostile ? input.byte() : uint8_t { 0 };
   if ( ending == lost ) {
      errno = ETIMEDOUT;
      return -1;
   }
   auto reply = std::make_unique<Smbus::TransactionResponse>();
   reply->set_failed( ending == refused || ending == refusedSilently );
   if ( ending == refused ) {
      reply->set_reason( input.bytes( input.byte() ) );
   }
   for ( auto& each : request->request() ) {
      reply->add_response()->set_data( answerTo( each ) );
   }
   if ( ending == tooLong ) {
      reply->add_response();
   } else if ( ending == tooShort && reply->response_size() > 0 ) {
      reply->mutable_response()->RemoveLast();
   }
   *response = reply.release();
   return 0;
}

} // namespace QuillonLibrary

namespace {

std::string read( const std::string& path ) {
   std::ostringstream text;
   text << std::ifstream( path ).rdbuf();
   return text.str();
}

/** All that a host can do with the objects of a board's document. */
class HostOfAll {
public:
   HostOfAll() {
      firmware_.add( "selvane.fw", std::string( "\x01\x23", 2 ) + std::string( 300, '\x5A' ) );
      auto topology = read( BOARD "/topology.json" );
      document_.Parse( read( BOARD "/objects.json" ).c_str() );
      assert( ql_system_init( topology.c_str() ) == QL_STATUS_OK );
      for ( auto& object : document_["objects"].GetArray() ) {
         auto isAdded = objects_.add( { object["kind"].GetString(), textOf( object ) } );
         assert( isAdded );
      }
      actions_ = objects_.actions;
      actions_.push_back( [] { Host::now += std::chrono::seconds( 3 ); } );
      actions_.push_back( Host::fireTimers );
   }

   void run() {
      isHostile = true;
      while ( input.next < input.end ) {
         auto choice = input.word();
         actions_[static_cast<size_t>( choice ) % actions_.size()]();
      }
   }

private:
   std::string textOf( rapidjson::Value& object ) {
      if ( !object.HasMember( "args" ) ) {
         return "";
      }
      auto& args = object["args"];
      if ( args.HasMember( "driverArgs" ) && args["driverArgs"].HasMember( "numPorts" ) ) {
         args["driverArgs"].AddMember( "firmwarePath", "selvane.fw", document_.GetAllocator() );
      }
      rapidjson::StringBuffer text;
      rapidjson::Writer writer( text );
      args.Accept( writer );
      return text.GetString();
   }

   FirmwareDirectory firmware_;
   rapidjson::Document document_;
   Objects objects_ { true };
   std::vector<Action> actions_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t* data, size_t size ) {
   // Objects of the library live until the process ends.
   Host::Turn turn;
   static auto& host = *new HostOfAll;
   input = { data, data + size };
   host.run();
   return 0;
}
