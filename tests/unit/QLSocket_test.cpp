#include "QLSocketTest.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

using namespace std::literals;
using Connection = SocketServer::Connection;

namespace {

/** Where each connect of this process went. */
std::vector<std::string> connects;

} // namespace

// In front of the C library's.
extern "C" int connect( int fd, const sockaddr* address, socklen_t size ) {
   connects.push_back( reinterpret_cast<const sockaddr_un*>( address )->sun_path );
   auto next = reinterpret_cast<decltype( &connect )>( dlsym( RTLD_NEXT, "connect" ) );
   return next( fd, address, size );
}

namespace {

class QLSocket : public QLSocketTest {
protected:
   QLSocket() { connects.clear(); }
};

/** Answers one request with these bytes and closes. */
SocketServer::Script sendingLast( std::string bytes ) {
   return [bytes]( Connection& connection ) {
      connection.receive();
      connection.sendBytes( bytes );
   };
}

ptrdiff_t openDescriptors() {
   std::filesystem::directory_iterator entries( "/proc/self/fd" );
   return std::distance( begin( entries ), end( entries ) );
}

} // namespace

// Connecting

TEST_F( QLSocket, ConnectsToTheSocketNamedInTheEnvironment ) {
   SocketServer server( echoing );
   EXPECT_EQ( setup(), "OK" );
   EXPECT_EQ( descriptorsTo( server.path() ).size(), 1U );
}

TEST_F( QLSocket, ConnectsToTheStandardPathWhenTheEnvironmentNamesNone ) {
   setup();
   setenv( "QUILLON_SMBUS_SOCKET", "", 1 );
   setup();
   EXPECT_EQ( connects, std::vector<std::string>( 2, "/run/quillon/smbus.sock" ) );
}

TEST_F( QLSocket, SetupFailsWithoutASocketFile ) {
   SocketServer server( echoing );
   server.stop();
   EXPECT_EQ( setup(), "ENOENT" );
   EXPECT_TRUE( descriptorsTo( server.path() ).empty() );
}

TEST_F( QLSocket, SetupFailsWhenNobodyListens ) {
   SocketServer server( echoing );
   std::filesystem::rename( server.path(), server.path() + ".left" );
   server.stop();
   setenv( "QUILLON_SMBUS_SOCKET", ( server.path() + ".left" ).c_str(), 1 );
   EXPECT_EQ( setup(), "ECONNREFUSED" );
}

TEST_F( QLSocket, TakesAPathUpToTheLongestThatASocketCanHave ) {
   setenv( "QUILLON_SMBUS_SOCKET", ( "/nowhere/" + std::string( 98, 'p' ) ).c_str(), 1 );
   EXPECT_EQ( setup(), "ENOENT" );
   setenv( "QUILLON_SMBUS_SOCKET", ( "/nowhere/" + std::string( 99, 'p' ) ).c_str(), 1 );
   EXPECT_EQ( setup(), "ENAMETOOLONG" );
   EXPECT_EQ( connects.size(), 1U );
}

TEST_F( QLSocket, SecondSetupReplacesTheConnection ) {
   SocketServer server( echoing );
   EXPECT_EQ( setup(), "OK" );
   EXPECT_EQ( setup(), "OK" );
   EXPECT_EQ( descriptorsTo( server.path() ).size(), 1U );
   EXPECT_EQ( ask( 1 ), "OK" );
   EXPECT_EQ( server.connections(), 2U );
}

TEST_F( QLSocket, FailedSetupDropsTheEarlierConnection ) {
   SocketServer server( echoing );
   EXPECT_EQ( setup(), "OK" );
   setenv( "QUILLON_SMBUS_SOCKET", "/nowhere", 1 );
   EXPECT_EQ( setup(), "ENOENT" );
   EXPECT_TRUE( descriptorsTo( server.path() ).empty() );
}

TEST_F( QLSocket, CleanupDropsTheConnectionAndMayComeTwice ) {
   SocketServer server( echoing );
   EXPECT_EQ( setup(), "OK" );
   socket.cleanup();
   EXPECT_TRUE( descriptorsTo( server.path() ).empty() );
   socket.cleanup();
   EXPECT_EQ( setup(), "OK" );
}

TEST_F( QLSocket, RequestConnectsWhenNothingElseDid ) {
   SocketServer server( echoing );
   EXPECT_EQ( ask( 1 ), "OK" );
   socket.cleanup();
   ASSERT_EQ( ask( 2 ), "OK" );
   EXPECT_EQ( answer->reason(), "2" );
}

TEST_F( QLSocket, DestructorClosesTheConnection ) {
   SocketServer server( echoing );
   {
      QuillonLibrary::QLSocket another;
      ASSERT_EQ( another.setup(), 0 );
      ASSERT_EQ( descriptorsTo( server.path() ).size(), 1U );
   }
   EXPECT_TRUE( descriptorsTo( server.path() ).empty() );
}

TEST_F( QLSocket, DescriptorIsCloseOnExec ) {
   SocketServer server( echoing );
   ASSERT_EQ( setup(), "OK" );
   auto descriptors = descriptorsTo( server.path() );
   ASSERT_EQ( descriptors.size(), 1U );
   EXPECT_EQ( fcntl( descriptors.front(), F_GETFD ), FD_CLOEXEC );
}

TEST_F( QLSocket, InSimulationNothingConnectsAndRequestsFail ) {
   SocketServer server( echoing );
   setenv( "SIMULATION_VMID", "1", 1 );
   EXPECT_EQ( setup(), "OK" );
   EXPECT_EQ( ask( 1 ), "ENOTCONN" );
   EXPECT_TRUE( connects.empty() );
}

// Frames

TEST_F( QLSocket, RequestAndReplyCrossUnchanged ) {
   Smbus::TransactionResponse response;
   response.add_response()->set_data( "\0\xff"s );
   response.add_response();
   response.set_failed( true );
   response.set_reason( "request 1: no acknowledge" );
   SocketServer server( SocketServer::answering( [&]( auto& ) { return response; } ) );
   Smbus::TransactionRequest request;
   request.set_retries( 0 );
   auto entry = request.add_request();
   entry->set_data( "\x01\0"s );
   entry->set_address( 0x8000'0000'0000'0048 );
   entry->set_type( Smbus::BLOCK_WRITE );
   entry->set_mastertype( Smbus::SCD );

   ASSERT_EQ( ask( request ), "OK" );

   ASSERT_EQ( server.requests().size(), 1U );
   EXPECT_EQ( server.requests().front().SerializeAsString(), request.SerializeAsString() );
   EXPECT_EQ( answer->SerializeAsString(), response.SerializeAsString() );
}

TEST_F( QLSocket, FrameIsABigEndianLengthAndTheMessage ) {
   auto text = std::string( 255, 'c' );
   auto expected = "\x00\x00\x01\x02\x1a\xff\x01"s + text;
   std::string received;
   SocketServer server( [&]( Connection& connection ) {
      received = connection.receiveBytes( expected.size() );
      connection.sendBytes( "\x00\x00\x00\x05\x0a\x03\x0a\x01\x2a"s );
      connection.waitForClose( 5000ms );
   } );
   Smbus::TransactionRequest request;
   request.set_client( text );

   ASSERT_EQ( ask( request ), "OK" );

   EXPECT_EQ( received, expected );
   ASSERT_EQ( answer->response_size(), 1 );
   EXPECT_EQ( answer->response( 0 ).data(), "\x2a" );
}

TEST_F( QLSocket, EmptyRequestAndEmptyReplyAreFramesOfNoBytes ) {
   SocketServer server( SocketServer::answering( []( auto& ) { return Smbus::TransactionResponse(); } ) );
   ASSERT_EQ( ask( Smbus::TransactionRequest() ), "OK" );
   EXPECT_EQ( answer->ByteSizeLong(), 0U );
   EXPECT_EQ( server.requests().size(), 1U );
}

TEST_F( QLSocket, ReplyMayComeByteByByte ) {
   SocketServer server( []( Connection& connection ) {
      connection.receive();
      for ( auto byte : SocketServer::frame( replyWith( "slowly" ) ) ) {
         connection.sendBytes( { &byte, 1 } );
         std::this_thread::sleep_for( 5ms );
      }
      connection.receive();
   } );
   ASSERT_EQ( ask( 1 ), "OK" );
   EXPECT_EQ( answer->reason(), "slowly" );
}

TEST_F( QLSocket, ReplyCountsAlsoWhenTheServerClosesBehindIt ) {
   SocketServer server( sendingLast( SocketServer::frame( replyWith( "last words" ) ) ) );
   ASSERT_EQ( ask( 1 ), "OK" );
   EXPECT_EQ( answer->reason(), "last words" );
}

TEST_F( QLSocket, AllRequestsShareOneConnection ) {
   SocketServer server( echoing );
   EXPECT_EQ( setup(), "OK" );
   for ( uint32_t number = 0; number < 100; ++number ) {
      ASSERT_EQ( ask( number ), "OK" );
      ASSERT_EQ( answer->reason(), std::to_string( number ) );
   }
   EXPECT_EQ( server.connections(), 1U );
}

TEST_F( QLSocket, EachReplyIsAnObjectOfItsOwn ) {
   SocketServer server( echoing );
   ASSERT_EQ( ask( 1 ), "OK" );
   auto first = std::move( answer );
   ASSERT_EQ( ask( 2 ), "OK" );
   EXPECT_EQ( first->reason(), "1" );
   EXPECT_EQ( answer->reason(), "2" );
}

TEST_F( QLSocket, RequestOfOneMebibyteGoesOut ) {
   SocketServer server( echoing );
   auto request = requestOfSize( maxPayload );
   ASSERT_EQ( request.ByteSizeLong(), maxPayload );
   EXPECT_EQ( ask( request ), "OK" );
   ASSERT_EQ( server.requests().size(), 1U );
   EXPECT_TRUE( server.requests().front().client() == request.client() );
}

TEST_F( QLSocket, LargerRequestIsNotSentAndDropsTheConnection ) {
   SocketServer server( echoing );
   ASSERT_EQ( ask( 1 ), "OK" );
   EXPECT_EQ( ask( requestOfSize( maxPayload + 1 ) ), "EMSGSIZE" );
   EXPECT_TRUE( descriptorsTo( server.path() ).empty() );
   EXPECT_EQ( ask( 2 ), "OK" );
   EXPECT_EQ( server.requests().size(), 2U );
}

TEST_F( QLSocket, ReplyOfOneMebibyteComesThrough ) {
   auto reason = std::string( maxPayload - 4, 'r' );
   ASSERT_EQ( replyWith( reason ).size(), maxPayload );
   SocketServer server( sending( SocketServer::frame( replyWith( reason ) ) ) );
   ASSERT_EQ( ask( 1 ), "OK" );
   EXPECT_TRUE( answer->reason() == reason );
}

// The length alone tells it: nothing is waited for, nothing is allocated.
TEST_F( QLSocket, LargerReplyFailsAtItsLength ) {
   for ( auto& length :
      { "\x00\x10\x00\x01"s, "\x7f\xff\xff\xff"s, "\x80\x00\x00\x00"s, "\xff\xff\xff\xff"s } ) {
      SCOPED_TRACE( testing::PrintToString( length ) );
      SocketServer server( { sending( length ), echoing } );
      EXPECT_EQ( ask( 1 ), "EMSGSIZE" );
      EXPECT_TRUE( descriptorsTo( server.path() ).empty() );
      EXPECT_EQ( ask( 2 ), "OK" );
   }
}

TEST_F( QLSocket, ReplyThatIsNoMessageFails ) {
   struct {
      const char* what;
      std::string payload;
   } rows[] = {
      { "tag of field 0", "\x00\x01"s },
      { "tag without an end", std::string( 16, '\xff' ) },
      { "text that is cut off", "\x12\x05hi"s },
      { "length beyond all memory", "\x12\xff\xff\xff\xff\x0f" },
      { "entry longer than the message", "\x0a\x7f\x0a\x01\x2a" },
      { "entry that holds garbage", "\x0a\x02\xff\xff" },
      { "end of a group that never began", "\x0c" },
      { "group that never ends", "\x0b" },
      { "groups without a bottom", std::string( 100000, '\x0b' ) },
      { "number without an end", "\x18\x80" },
      { "unknown wire type", "\x0f" },
      { "plain words", "busy" },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.what );
      SocketServer server( { sending( SocketServer::frame( row.payload ) ), echoing } );
      EXPECT_EQ( ask( 1 ), "EBADMSG" );
      EXPECT_TRUE( descriptorsTo( server.path() ).empty() );
      EXPECT_EQ( ask( 2 ), "OK" );
   }
}

TEST_F( QLSocket, FailureLeavesTheResponsePointerAlone ) {
   SocketServer server( sendingLast( SocketServer::frame( "\xff" ) ) );
   Smbus::TransactionResponse mine;
   auto response = &mine;
   Smbus::TransactionRequest request;
   EXPECT_EQ( socket.sendRequestWait( &request, &response ), -1 );
   EXPECT_EQ( response, &mine );
}

// A server that goes away

TEST_F( QLSocket, ServerThatClosesInsteadOfAnsweringResetsTheConnection ) {
   struct {
      const char* what;
      std::string sent;
   } rows[] = {
      { "nothing", "" },
      { "half of a length", std::string( 2, '\0' ) },
      { "a length", "\x00\x00\x00\x05"s },
      { "a reply but its last byte", "\x00\x00\x00\x05\x0a\x03\x0a\x01"s },
   };

   for ( auto& row : rows ) {
      SCOPED_TRACE( row.what );
      SocketServer server( { sendingLast( row.sent ), echoing } );
      EXPECT_EQ( ask( 1 ), "ECONNRESET" );
      EXPECT_TRUE( descriptorsTo( server.path() ).empty() );
      ASSERT_EQ( ask( 2 ), "OK" );
      EXPECT_EQ( answer->reason(), "2" );
   }
}

TEST_F( QLSocket, RequestThatWentOutIsNeverSentAgain ) {
   SocketServer server( { sendingLast( "" ), echoing } );
   EXPECT_EQ( ask( 1 ), "ECONNRESET" );
   EXPECT_EQ( connects.size(), 1U );
   EXPECT_EQ( server.requests().size(), 1U );
}

TEST_F( QLSocket, ServerThatClosesDuringTheRequestResetsTheConnection ) {
   SocketServer server( []( Connection& connection ) { connection.receiveBytes( 4 ); } );
   EXPECT_EQ( ask( requestOfSize( maxPayload ) ), "ECONNRESET" );
   EXPECT_EQ( connects.size(), 1U );
}

TEST_F( QLSocket, WritingToADeafServerRaisesNoSignal ) {
   signal( SIGPIPE, SIG_DFL );
   SocketServer server( []( Connection& connection ) {
      connection.receiveBytes( 4 );
      connection.stopReceiving();
      connection.waitForClose( 5000ms );
   } );
   EXPECT_EQ( ask( requestOfSize( maxPayload ) ), "ECONNRESET" );
}

TEST_F( QLSocket, ServerRestartedBetweenRequestsCostsNoFailure ) {
   SocketServer server( echoing );
   ASSERT_EQ( ask( 1 ), "OK" );
   server.stop();
   server.start();
   ASSERT_EQ( ask( 2 ), "OK" );
   EXPECT_EQ( answer->reason(), "2" );
   EXPECT_EQ( connects.size(), 2U );
}

TEST_F( QLSocket, ServerRestartedBetweenSetupAndTheFirstRequestCostsNoFailure ) {
   SocketServer server( echoing );
   ASSERT_EQ( setup(), "OK" );
   server.stop();
   server.start();
   EXPECT_EQ( ask( 1 ), "OK" );
}

TEST_F( QLSocket, ServerThatIsGoneIsTriedOnceARequestUntilItIsBack ) {
   SocketServer server( echoing );
   ASSERT_EQ( ask( 1 ), "OK" );
   server.stop();
   connects.clear();
   EXPECT_EQ( ask( 2 ), "ENOENT" );
   EXPECT_EQ( connects.size(), 1U );
   EXPECT_EQ( ask( 3 ), "ENOENT" );
   EXPECT_EQ( connects.size(), 2U );
   server.start();
   ASSERT_EQ( ask( 4 ), "OK" );
   EXPECT_EQ( answer->reason(), "4" );
   EXPECT_EQ( connects.size(), 3U );
}

TEST_F( QLSocket, SecondReplyNeverAnswersTheNextRequest ) {
   auto replies = SocketServer::frame( replyWith( "first" ) ) + SocketServer::frame( replyWith( "second" ) );
   SocketServer server( { sending( replies ), echoing } );
   ASSERT_EQ( ask( 1 ), "OK" );
   EXPECT_EQ( answer->reason(), "first" );
   ASSERT_EQ( ask( 2 ), "OK" );
   EXPECT_EQ( answer->reason(), "2" );
   EXPECT_EQ( server.connections(), 2U );
}

TEST_F( QLSocket, BytesBehindAReplyDropTheConnectionAndNotTheReply ) {
   SocketServer server( { sending( SocketServer::frame( replyWith( "first" ) ) + "?" ), echoing } );
   ASSERT_EQ( ask( 1 ), "OK" );
   EXPECT_EQ( answer->reason(), "first" );
   EXPECT_TRUE( descriptorsTo( server.path() ).empty() );
   EXPECT_EQ( ask( 2 ), "OK" );
}

TEST_F( QLSocket, BytesThatComeLaterDropTheConnectionAtTheNextRequest ) {
   SocketServer server( { []( Connection& connection ) {
                            connection.receive();
                            connection.send( replyWith( "first" ) );
                            std::this_thread::sleep_for( 50ms );
                            connection.send( replyWith( "second" ) );
                            connection.receive();
                         },
      echoing } );
   ASSERT_EQ( ask( 1 ), "OK" );
   EXPECT_EQ( answer->reason(), "first" );
   std::this_thread::sleep_for( 200ms );
   ASSERT_EQ( ask( 2 ), "OK" );
   EXPECT_EQ( answer->reason(), "2" );
}

TEST_F( QLSocket, RepliesOfAllSizesFollowEachOther ) {
   SocketServer server( SocketServer::answering( []( const Smbus::TransactionRequest& request ) {
      Smbus::TransactionResponse response;
      response.set_reason( std::string( request.retries(), 'r' ) );
      return response;
   } ) );
   // Around the socket's usual buffer, with a head of 4 bytes and a tag and length of 3.
   for ( uint32_t size : { 0U, 4088U, 4089U, 4090U, 4091U, 100000U, 1U, 1048572U, 4096U, 0U } ) {
      ASSERT_EQ( ask( size ), "OK" ) << size;
      EXPECT_EQ( answer->reason(), std::string( size, 'r' ) ) << size;
   }
   EXPECT_EQ( server.connections(), 1U );
}

TEST_F( QLSocket, ThousandFailuresLeakNoDescriptor ) {
   std::optional<SocketServer> server( []( Connection& connection ) { connection.receive(); } );
   auto atStart = openDescriptors();
   for ( int i = 0; i < 1000; ++i ) {
      ASSERT_EQ( ask( 1 ), "ECONNRESET" );
   }
   EXPECT_EQ( server->connections(), 1000U );
   server->stop();
   for ( int i = 0; i < 1000; ++i ) {
      ASSERT_EQ( ask( 1 ), "ENOENT" );
      ASSERT_EQ( setup(), "ENOENT" );
   }
   // The server has closed its listener.
   EXPECT_EQ( openDescriptors(), atStart - 1 );
}
