// The SMBus Ham against a scripted server at the socket: every field of every request, and every way to fail.

#include "Ham/QuillonSmbusHam.h"

#include "Assertion.h"
#include "FieldOrder.h"
#include "FreshLibrary.h"
#include "ObjectLayout.h"
#include "Quillon.h"
#include "SocketServer.h"

#include <bit>
#include <cerrno>
#include <cstring>

namespace {

using Ham::QuillonSmbusHam;
using testing::ElementsAre;

/** A Ham lives until the process ends. */
QuillonSmbusHam* keep( Ham::Ham* ham ) {
   static auto& kept = *new std::vector<Ham::Ham*>;
   kept.push_back( ham );
   return static_cast<QuillonSmbusHam*>( ham );
}

constexpr auto noId = Ham::Ham::INVALID_RESPONSE_ID;

/** Answers each request with its number of bytes, 0x11, 0x22, 0x33 and so on; a receive byte and a block too.
 */
Smbus::TransactionResponse echo( const Smbus::TransactionRequest& transaction ) {
   Smbus::TransactionResponse response;
   for ( auto& request : transaction.request() ) {
      std::string data;
      bool isWrite = request.type() == Smbus::WRITE || request.type() == Smbus::BLOCK_WRITE;
      auto size = isWrite ? 0 : request.type() == Smbus::BLOCK_READ ? 3 : std::max( 1U, request.size() );
      for ( uint32_t i = 1; i <= size; ++i ) {
         data += static_cast<char>( 0x11 * i );
      }
      response.add_response()->set_data( data );
   }
   response.set_failed( false );
   return response;
}

/** A Ham of chip 0x48 on bus 3, connected to a server that answers with `answer`. */
class QuillonSmbusHamTest : public FreshLibrary {
protected:
   QuillonSmbusHamTest()
      : server( SocketServer::answering( [this]( auto& request ) { return answer( request ); } ) ) {
      EXPECT_EQ( qlSockInit( "test", 1 ), QL_STATUS_OK );
      HamAddress address {};
      address.address = 0x48;
      address.bus = 3;
      ham = keep( QuillonSmbusHam::createFromAddress( address, { 0 } ) );
      ham->init();
   }

   ~QuillonSmbusHamTest() override {
      delete _qlSock;
      _qlSock = nullptr;
   }

   /** The only request of the last transaction. */
   Smbus::Request lastRequest() const {
      auto all = server.requests();
      EXPECT_FALSE( all.empty() );
      EXPECT_EQ( all.back().request_size(), 1 );
      return all.back().request( 0 );
   }

   static HamAddress wordOf( const Smbus::Request& request ) {
      return std::bit_cast<HamAddress>( static_cast<uint64_t>( request.address() ) );
   }

   SocketServer::Answer answer = echo;
   SocketServer server;
   QuillonSmbusHam* ham = nullptr;
};

struct Row {
   const char* name;
   void ( *queue )( Ham::Ham& ham );
   uint32_t reg;
   Smbus::RequestType type;
   uint32_t size;
   bool flag;
   bool noStop;
   uint8_t addrSize;
   /** Null for a request without data. */
   const char* data;
};

std::ostream& operator<<( std::ostream& stream, const Row& row ) { return stream << row.name; }

class EachOperation : public QuillonSmbusHamTest, public testing::WithParamInterface<Row> {};

const Row rows[] = {
   { "recvByte", []( auto& h ) { h.addRecvByte(); }, 0, Smbus::READ, 0, false, false, 1, nullptr },
   { "read8", []( auto& h ) { h.addRead8( 0x1234, 2 ); }, 0x1234, Smbus::READ, 1, false, false, 2, nullptr },
   { "read16", []( auto& h ) { h.addRead16( 7, 1 ); }, 7, Smbus::READ, 2, false, false, 1, nullptr },
   { "read", []( auto& h ) { h.addRead( 9, 12, false, 1 ); }, 9, Smbus::READ, 12, false, false, 1, nullptr },
   { "readNoStop", []( auto& h ) { h.addRead( 0xFF, 12, true, 1 ); }, 0xFF, Smbus::READ, 12, false, true, 1,
      nullptr },
   { "readBlock", []( auto& h ) { h.addReadBlock( 5, 1 ); }, 5, Smbus::BLOCK_READ, 0, false, false, 1,
      nullptr },
   { "sendByte", []( auto& h ) { h.addSendByte( 0xA5, true ); }, 0xA5, Smbus::WRITE, 0, true, false, 1,
      nullptr },
   { "write8", []( auto& h ) { h.addWrite8( 6, 0x5A, false, 1 ); }, 6, Smbus::WRITE, 1, false, false, 1,
      "Z" },
   { "write8Flag", []( auto& h ) { h.addWrite8( 6, 0x5A, true, 1 ); }, 6, Smbus::WRITE, 1, true, false, 1,
      "Z" },
   { "write16", []( auto& h ) { h.addWrite16( 6, 0x4142, true, 1 ); }, 6, Smbus::WRITE, 2, true, false, 1,
      "BA" },
   { "write", []( auto& h ) { h.addWrite( 6, "abcde", 5, true, 1 ); }, 6, Smbus::WRITE, 5, true, false, 1,
      "abcde" },
   { "writeBlock", []( auto& h ) { h.addWriteBlock( 6, "abc", 3, true, 1 ); }, 6, Smbus::BLOCK_WRITE, 3, true,
      false, 1, "abc" },
   { "processCall", []( auto& h ) { h.addProcessCall( 8, 0x4344, 1 ); }, 8, Smbus::PROCESS_CALL, 2, false,
      false, 1, "DC" },
   { "regSize4", []( auto& h ) { h.addRead8( 0x89ABCDEF, 4 ); }, 0x89ABCDEF, Smbus::READ, 1, false, false, 0,
      nullptr },
   { "regSize3", []( auto& h ) { h.addRead8( 1, 3 ); }, 1, Smbus::READ, 1, false, false, 3, nullptr },
   { "regSize0", []( auto& h ) { h.addRead8( 1, 0 ); }, 1, Smbus::READ, 1, false, false, 0, nullptr },
};

INSTANTIATE_TEST_SUITE_P( QuillonSmbusHam, EachOperation, testing::ValuesIn( rows ) );

TEST_P( EachOperation, GoesOutWithEveryFieldOfItsRequest ) {
   auto& row = GetParam();
   ham->prepare();
   row.queue( *ham );
   EXPECT_TRUE( server.requests().empty() ) << "nothing is sent before execute";
   ASSERT_EQ( ham->execute(), QL_STATUS_OK );

   auto request = lastRequest();
   HamAddress expected {};
   expected.reg = row.reg;
   expected.address = 0x48;
   expected.bus = 3;
   expected.addrSize = row.addrSize & 3;
   expected.writeNoStopReadCurrent = row.noStop;
   EXPECT_TRUE( request.has_address() );
   EXPECT_EQ( request.address(), std::bit_cast<uint64_t>( expected ) );
   EXPECT_TRUE( request.has_type() );
   EXPECT_EQ( request.type(), row.type );
   EXPECT_TRUE( request.has_size() );
   EXPECT_EQ( request.size(), row.size );
   EXPECT_TRUE( request.has_flag() );
   EXPECT_EQ( request.flag(), row.flag );
   EXPECT_TRUE( request.has_pciaddress() );
   EXPECT_EQ( request.pciaddress(), 0U );
   EXPECT_TRUE( request.has_mastertype() );
   EXPECT_EQ( request.mastertype(), Smbus::I2C );
   EXPECT_EQ( request.has_data(), row.data != nullptr );
   EXPECT_EQ( request.data(), row.data ? row.data : "" );
   EXPECT_FALSE( server.requests().back().has_client() );
}

TEST_F( QuillonSmbusHamTest, GivesIdsToReadsAndWritesAlikeInQueueingOrder ) {
   ham->prepare();
   EXPECT_EQ( ham->addRead8( 1, 1 ), 0U );
   ham->addWrite8( 2, 0, false, 1 );
   EXPECT_EQ( ham->addRead16( 3, 1 ), 2U );
   EXPECT_EQ( ham->addRecvByte(), 3U );
   EXPECT_EQ( ham->addReadBlock( 4, 1 ), 4U );
   EXPECT_EQ( ham->addProcessCall( 5, 0, 1 ), 5U );
   EXPECT_EQ( ham->addRead( 6, 2, false, 1 ), 6U );
   ASSERT_EQ( ham->execute(), QL_STATUS_OK );
   auto transaction = server.requests().back();
   std::vector<uint64_t> regs;
   for ( auto& request : transaction.request() ) {
      regs.push_back( wordOf( request ).reg );
   }
   EXPECT_THAT( regs, ElementsAre( 1, 2, 3, 0, 4, 5, 6 ) );
}

TEST_F( QuillonSmbusHamTest, HandsOutBytesAndWordsLowByteFirst ) {
   uint8_t byte = 0;
   uint16_t word = 0;
   std::string data;
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_OK );
   EXPECT_EQ( byte, 0x11 );
   EXPECT_EQ( ham->read16( 0, &word, 1 ), QL_STATUS_OK );
   EXPECT_EQ( word, 0x2211 );
   EXPECT_EQ( ham->recvByte( &byte ), QL_STATUS_OK );
   EXPECT_EQ( byte, 0x11 );
   EXPECT_EQ( ham->processCall( 0, 0, &word, 1 ), QL_STATUS_OK );
   EXPECT_EQ( word, 0x2211 );
   EXPECT_EQ( ham->read( 0, 4, &data, false, 1 ), QL_STATUS_OK );
   EXPECT_EQ( data, "\x11\x22\x33\x44" );
   EXPECT_EQ( ham->readBlock( 0, &data, 1 ), QL_STATUS_OK );
   EXPECT_EQ( data, "\x11\x22\x33" );
}

TEST_F( QuillonSmbusHamTest, AllowsBytesAboveTheSignBit ) {
   answer = []( auto& ) {
      Smbus::TransactionResponse response;
      response.add_response()->set_data( "\xFE\x80" );
      return response;
   };
   uint16_t word = 0;
   EXPECT_EQ( ham->read16( 0, &word, 1 ), QL_STATUS_OK );
   EXPECT_EQ( word, 0x80FE );
}

TEST_F( QuillonSmbusHamTest, KeepsTheNoStopBitForAllLaterRequestsWritesToo ) {
   std::string data;
   EXPECT_EQ( ham->read( 255, 12, &data, true, 1 ), QL_STATUS_OK );
   EXPECT_EQ( wordOf( lastRequest() ).writeNoStopReadCurrent, 1U );
   EXPECT_EQ( ham->write8( 1, 2, false, 1 ), QL_STATUS_OK );
   EXPECT_EQ( wordOf( lastRequest() ).writeNoStopReadCurrent, 1U );
   EXPECT_EQ( ham->read( 255, 12, &data, false, 1 ), QL_STATUS_OK );
   EXPECT_EQ( wordOf( lastRequest() ).writeNoStopReadCurrent, 1U );
}

TEST_F( QuillonSmbusHamTest, KeepsTheRegisterOfTheLastRequestInItsAddress ) {
   EXPECT_EQ( ham->write8( 0x77, 2, false, 1 ), QL_STATUS_OK );
   EXPECT_EQ( ham->address.reg, 0x77U );
}

TEST_F( QuillonSmbusHamTest, RunsAnEmptyBatch ) {
   ham->prepare();
   EXPECT_EQ( ham->execute(), QL_STATUS_OK );
   EXPECT_EQ( server.requests().back().request_size(), 0 );
}

TEST_F( QuillonSmbusHamTest, StartsEachBatchAnew ) {
   ham->prepare();
   ham->addRead8( 1, 1 );
   ham->addRead8( 2, 1 );
   ASSERT_EQ( ham->execute(), QL_STATUS_OK );
   ham->prepare();
   EXPECT_EQ( ham->response_.response_size(), 0 );
   EXPECT_EQ( ham->responseId, noId );
   ham->addRead8( 3, 1 );
   ASSERT_EQ( ham->execute(), QL_STATUS_OK );
   EXPECT_EQ( wordOf( lastRequest() ).reg, 3U );
}

TEST_F( QuillonSmbusHamTest, SendsARetryCountOnlyOnceOneIsSetAlsoZero ) {
   uint8_t byte = 0;
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_OK );
   EXPECT_FALSE( server.requests().back().has_retries() );
   ham->retryCountIs( 0 );
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_OK );
   EXPECT_TRUE( server.requests().back().has_retries() );
   EXPECT_EQ( server.requests().back().retries(), 0U );
   ham->retryCountIs( 7 );
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_OK );
   EXPECT_EQ( server.requests().back().retries(), 7U );
}

TEST_F( QuillonSmbusHamTest, TracesEachExecution ) {
   ham->prepare();
   Host::traces.clear();
   ASSERT_EQ( ham->execute(), QL_STATUS_OK );
   EXPECT_THAT( Host::traces, ElementsAre( Host::TraceLine { 4, "executing QuillonSmbusHam request" } ) );
}

TEST_F( QuillonSmbusHamTest, GivesIoErrorWhenTheTransportFails ) {
   server.stop();
   uint8_t byte = 0x55;
   Host::traces.clear();
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_IO_ERROR );
   EXPECT_EQ( byte, 0x55 );
   EXPECT_TRUE(
      Host::hasTraced( 3, "execute: error. " + std::to_string( ENOENT ) + ", " + strerror( ENOENT ) ) )
      << testing::PrintToString( Host::traces );
}

TEST_F( QuillonSmbusHamTest, WorksAgainAfterTheServerHasComeBack ) {
   uint8_t byte = 0;
   server.stop();
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_IO_ERROR );
   server.start();
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_OK );
}

TEST_F( QuillonSmbusHamTest, GivesFailedWithTheServersReason ) {
   answer = []( auto& ) {
      Smbus::TransactionResponse response;
      response.set_failed( true );
      response.set_reason( "request 1: i2c-3 0x48 reg 0x00: no acknowledge" );
      return response;
   };
   uint8_t byte = 0x55;
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_FAILED );
   EXPECT_EQ( byte, 0x55 );
   EXPECT_TRUE(
      Host::hasTraced( 3, "execute: failure in response request 1: i2c-3 0x48 reg 0x00: no acknowledge" ) );
}

TEST_F( QuillonSmbusHamTest, SaysUnknownReasonWhenTheServerGivesNone ) {
   answer = []( auto& ) {
      Smbus::TransactionResponse response;
      response.set_failed( true );
      return response;
   };
   uint8_t byte = 0;
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_FAILED );
   EXPECT_TRUE( Host::hasTraced( 3, "execute: failure in response unknown reason" ) );
   EXPECT_THAT( Host::tracesOf( 3 ), testing::Not( testing::Contains( testing::HasSubstr( "number of" ) ) ) )
      << "the failure is reported, not the missing entry";
}

TEST_F( QuillonSmbusHamTest, GivesFailedForAnotherNumberOfEntries ) {
   answer = []( auto& request ) {
      auto response = echo( request );
      response.add_response();
      return response;
   };
   uint8_t byte = 0x55;
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_FAILED );
   EXPECT_EQ( byte, 0x55 );
   EXPECT_TRUE( Host::hasTraced( 3, "execute: invalid number of response entries; expected 1, got 2" ) );
}

TEST_F( QuillonSmbusHamTest, GivesFailedForTooFewEntriesToo ) {
   answer = []( auto& ) { return Smbus::TransactionResponse(); };
   uint8_t byte = 0;
   EXPECT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_FAILED );
   EXPECT_TRUE( Host::hasTraced( 3, "execute: invalid number of response entries; expected 1, got 0" ) );
}

TEST_F( QuillonSmbusHamTest, HasItsFieldsAndAddedOperationsAsDriversKnowThem ) {
   EXPECT_TRUE( inOrder( ham->retryCount, ham->retryCountIsSet, ham->prepareRequestCount_, ham->responseId,
      ham->address, ham->pciAddress, ham->request_, ham->response_, ham->masterType, ham->muxes ) );
   auto first = Layout::slotOf( &Ham::Ham::setDriverName ) + 1;
   EXPECT_EQ( Layout::slotOf( &QuillonSmbusHam::setAddress ), first );
   EXPECT_EQ( Layout::slotOf( &QuillonSmbusHam::getAddress ), first + 1 );
   EXPECT_EQ( Layout::slotOf( &QuillonSmbusHam::setBus ), first + 2 );
   EXPECT_EQ( Layout::slotOf( &QuillonSmbusHam::getBus ), first + 3 );
}

TEST_F( QuillonSmbusHamTest, ThrowsFor32BitAccess ) {
   uint32_t value = 0;
   try {
      ham->read32( 0, &value, 1 );
      FAIL();
   } catch ( const NotImplementedException& exception ) {
      EXPECT_STREQ( exception.what(), "Not implemented addRead32" );
   }
   EXPECT_THROW( ham->write32( 0, 0, false, 1 ), NotImplementedException );
   EXPECT_THROW( ham->get32( 0 ), NotImplementedException );
}

TEST_F( QuillonSmbusHamTest, KeepsTheBasesTracesForNamesAndExpectedValues ) {
   Host::traces.clear();
   ham->setDriverName( "PCT2075", "" );
   ham->setExpected( nullptr );
   EXPECT_THAT( Host::tracesOf( 0 ),
      ElementsAre( "virtual Ham::setDriverName() invoked!!!", "virtual Ham::setExpected() invoked!!!" ) );
}

TEST_F( QuillonSmbusHamTest, CutsAddressAndBusToSevenBitsAndLeavesTheRest ) {
   ham->address = std::bit_cast<HamAddress>( ~uint64_t {} );
   ham->setAddress( 0x80 );
   ham->setBus( 0xFF );
   EXPECT_EQ( ham->getAddress(), 0 );
   EXPECT_EQ( ham->getBus(), 0x7F );
   EXPECT_EQ( std::bit_cast<uint64_t>( ham->address ), ~( uint64_t { 0x7F } << 32 ) );
}

TEST_F( QuillonSmbusHamTest, CreatedFromAnAddressWithPciUsesTheAccelerator ) {
   HamAddress address {};
   address.address = 0x20;
   address.accelerator = 5;
   address.readDelay = 3;
   auto other = keep( QuillonSmbusHam::createFromAddress( address, { 0xC0FFEE } ) );
   EXPECT_EQ( other->masterType, Smbus::SCD );
   EXPECT_EQ( other->pciAddress, 0xC0FFEEU );
   EXPECT_EQ( std::bit_cast<uint64_t>( other->address ), std::bit_cast<uint64_t>( address ) );
   EXPECT_TRUE( other->muxes.empty() );
}

using QuillonSmbusHamDeathTest = QuillonSmbusHamTest;

TEST_F( QuillonSmbusHamDeathTest, CreatedFromAnAddressWithoutPciHasNoAccelerator ) {
   HamAddress address {};
   address.accelerator = 1;
   EXPECT_DEATH(
      QuillonSmbusHam::createFromAddress( address, { 0 } ), assertionFailed( "address.accelerator == 0" ) );
}

TEST_F( QuillonSmbusHamDeathTest, TakesRegisterNumbersOfFourBytesAtMost ) {
   ham->prepare();
   EXPECT_DEATH( ham->addRead8( 0, 5 ), assertionFailed( "regSize <= sizeof( Register )" ) );
}

TEST_F( QuillonSmbusHamDeathTest, HasNoAnswerForAnInvalidId ) {
   EXPECT_DEATH( ham->get8( noId ), assertionFailed( "idx != INVALID_RESPONSE_ID" ) );
}

TEST_F( QuillonSmbusHamDeathTest, HasNoAnswerBehindTheLastOne ) {
   uint8_t byte = 0;
   ASSERT_EQ( ham->read8( 0, &byte, 1 ), QL_STATUS_OK );
   EXPECT_DEATH( ham->get8( 1 ),
      assertionFailed( "( uint32_t )response_.response_size() > prepareRequestCount_ + idx" ) );
}

TEST_F( QuillonSmbusHamDeathTest, WantsExactlyOneByteForAByte ) {
   ham->prepare();
   auto id = ham->addRead16( 0, 1 );
   ASSERT_EQ( ham->execute(), QL_STATUS_OK );
   EXPECT_DEATH( ham->get8( id ), assertionFailed( "data.size() == 1" ) );
}

TEST_F( QuillonSmbusHamDeathTest, WantsExactlyTwoBytesForAWord ) {
   ham->prepare();
   auto id = ham->addRead8( 0, 1 );
   ASSERT_EQ( ham->execute(), QL_STATUS_OK );
   EXPECT_DEATH( ham->get16( id ), assertionFailed( "data.size() == 2" ) );
}

TEST_F( QuillonSmbusHamDeathTest, WantsAByteBackForAReceiveByteToo ) {
   answer = []( auto& ) {
      Smbus::TransactionResponse response;
      response.add_response();
      return response;
   };
   uint8_t byte = 0;
   EXPECT_DEATH( ham->recvByte( &byte ), assertionFailed( "data.size() == 1" ) );
}

TEST_F( QuillonSmbusHamDeathTest, HasNoAnswerAfterAFailure ) {
   answer = []( auto& ) {
      Smbus::TransactionResponse response;
      response.set_failed( true );
      return response;
   };
   ham->prepare();
   auto id = ham->addRead8( 0, 1 );
   ASSERT_EQ( ham->execute(), QL_STATUS_FAILED );
   EXPECT_DEATH( ham->get8( id ),
      assertionFailed( "( uint32_t )response_.response_size() > prepareRequestCount_ + idx" ) );
}

TEST_F( QuillonSmbusHamDeathTest, NeedsTheProcessToBeConnected ) {
   auto connection = _qlSock;
   _qlSock = nullptr;
   ham->prepare();
   EXPECT_DEATH( ham->execute(), assertionFailed( "_qlSock" ) );
   _qlSock = connection;
}

TEST_F( QuillonSmbusHamDeathTest, HasAMasterTypeThatTheMessageKnows ) {
   ham->masterType = static_cast<Smbus::MasterType>( 8 );
   ham->prepare();
   EXPECT_DEATH( ham->addRead8( 0, 1 ), assertionFailed( "::Smbus::MasterType_IsValid(value)" ) );
}

} // namespace
