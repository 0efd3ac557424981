#include "smbusd/Operation.h"

#include "SmbusdFakes.h"

#include <fmt/format.h>

#include <functional>
#include <stdexcept>

using namespace Smbusd;

namespace {

Smbus::Request request( Smbus::RequestType type, uint32_t size, const std::string& data,
   uint32_t reg = 0x12345678, unsigned addrSize = 1 ) {
   Smbus::TransactionRequest message;
   return addRequest( message, type, addressWord( 0x48, 3, reg, addrSize ), size, data );
}

std::vector<I2c::Message> laidOut( const Operation& operation ) {
   std::vector<I2c::Message> messages;
   layOut( operation, messages );
   return messages;
}

/** "W:01 02" for a write, "R:2" for a read, "B" for a block read. */
std::string onTheBus( const Smbus::Request& request ) {
   std::string text;
   for ( auto& message : laidOut( operationOf( request ) ) ) {
      text += text.empty() ? "" : " ";
      switch ( message.kind ) {
      case I2c::Message::Kind::Write:
         text += fmt::format( "W:{:02x}", fmt::join( message.bytes, "" ) );
         break;
      case I2c::Message::Kind::Read:
         text += fmt::format( "R:{}", message.length );
         break;
      case I2c::Message::Kind::ReadBlock:
         text += "B";
         break;
      }
   }
   return text;
}

struct Row {
   const char* name;
   Smbus::Request request;
   const char* bus;
};

const Row rows[] = {
   { "receive byte", request( Smbus::READ, 0, "" ), "R:1" },
   { "read 1", request( Smbus::READ, 1, "" ), "W:78 R:1" },
   { "read n", request( Smbus::READ, 12, "" ), "W:78 R:12" },
   { "longest read", request( Smbus::READ, 8192, "" ), "W:78 R:8192" },
   { "read, register of 2 bytes", request( Smbus::READ, 2, "", 0x1234, 2 ), "W:1234 R:2" },
   { "read, register of 3 bytes", request( Smbus::READ, 2, "", 0x123456, 3 ), "W:123456 R:2" },
   { "read, register of 4 bytes", request( Smbus::READ, 2, "", 0x12345678, 0 ), "W:12345678 R:2" },
   { "send byte", request( Smbus::WRITE, 0, "" ), "W:78" },
   { "send byte, register of 2 bytes", request( Smbus::WRITE, 0, "", 0x1234, 2 ), "W:34" },
   { "write 1", request( Smbus::WRITE, 1, "\x01" ), "W:7801" },
   { "write n", request( Smbus::WRITE, 3, "\x01\x02\x03" ), "W:78010203" },
   { "write, register of 2 bytes", request( Smbus::WRITE, 1, "\x01", 0x1234, 2 ), "W:123401" },
   { "process call", request( Smbus::PROCESS_CALL, 2, "\x01\x02" ), "W:780102 R:2" },
   { "block read", request( Smbus::BLOCK_READ, 0, "" ), "W:78 B" },
   { "block write", request( Smbus::BLOCK_WRITE, 3, "\x01\x02\x03" ), "W:7803010203" },
   { "longest block write", request( Smbus::BLOCK_WRITE, 32, std::string( 32, 'A' ) ),
      "W:7820"
      "4141414141414141414141414141414141414141414141414141414141414141" },
};

} // namespace

TEST( SmbusdOperation, GoesOutAsTheTableOfRequestsSays ) {
   for ( auto& row : rows ) {
      EXPECT_EQ( onTheBus( row.request ), row.bus ) << row.name;
   }
}

TEST( SmbusdOperation, ReadIsTheSameWithWriteNoStopReadCurrent ) {
   auto read = request( Smbus::READ, 2, "" );
   read.set_address( read.address() | uint64_t { 1 } << 53 );
   EXPECT_EQ( onTheBus( read ), "W:78 R:2" );
}

TEST( SmbusdOperation, LaysItselfOutOverTheMessagesOfAnother ) {
   auto receive = request( Smbus::READ, 0, "" );
   auto block = request( Smbus::BLOCK_READ, 0, "" );
   auto write = request( Smbus::WRITE, 1, "\x01" );
   std::vector<I2c::Message> messages;
   for ( auto& one : { block, receive, write, block } ) {
      layOut( operationOf( one ), messages );
      auto expected = laidOut( operationOf( one ) );
      ASSERT_EQ( messages.size(), expected.size() );
      for ( size_t i = 0; i < messages.size(); ++i ) {
         EXPECT_EQ( messages[i].kind, expected[i].kind );
         EXPECT_EQ( messages[i].bytes, expected[i].bytes );
         EXPECT_EQ( messages[i].length, expected[i].length );
         // What an answer leaves behind.
         messages[i].bytes.assign( 40, 0xEE );
      }
   }
}

TEST( SmbusdOperation, TalksToTheChipOfTheAddress ) {
   EXPECT_EQ( operationOf( request( Smbus::READ, 1, "" ) ).chip, 0x48 );
}

TEST( SmbusdOperation, TakesItsResultFromTheLastMessage ) {
   auto read = request( Smbus::READ, 2, "" );
   auto operation = operationOf( read );
   auto messages = laidOut( operation );
   messages[1].bytes = { 7, 8 };
   takeResult( operation, messages );
   EXPECT_EQ( operation.result, ( std::vector<uint8_t> { 7, 8 } ) );
}

TEST( SmbusdOperation, ThatWritesHasNoResult ) {
   auto write = request( Smbus::WRITE, 1, "\x01" );
   auto operation = operationOf( write );
   auto messages = laidOut( operation );
   takeResult( operation, messages );
   EXPECT_TRUE( operation.result.empty() );
}

namespace {

struct Refusal {
   Smbus::Request request;
   const char* reason;
};

Smbus::Request changed( Smbus::Request request, const std::function<void( Smbus::Request& )>& change ) {
   change( request );
   return request;
}

const Refusal refusals[] = {
   { changed( request( Smbus::READ, 1, "" ), []( auto& r ) { r.clear_address(); } ), "no address" },
   { changed( request( Smbus::READ, 1, "" ), []( auto& r ) { r.clear_type(); } ), "no known request type" },
   { request( Smbus::READ, 8193, "" ), "read of 8193 bytes; 8192 are the most" },
   { request( Smbus::READ, 0xFFFFFFFF, "" ), "read of 4294967295 bytes; 8192 are the most" },
   { request( Smbus::WRITE, 1, "" ), "write of size 1 with 0 bytes of data" },
   { request( Smbus::WRITE, 1, "\x01\x02" ), "write of size 1 with 2 bytes of data" },
   { request( Smbus::WRITE, 0, "\x01" ), "write of size 0 with 1 bytes of data" },
   { request( Smbus::WRITE, 8193, std::string( 8193, 'A' ) ), "write of 8193 bytes; 8192 are the most" },
   { request( Smbus::PROCESS_CALL, 1, "\x01" ), "process call of size 1; it has 2 bytes" },
   { request( Smbus::PROCESS_CALL, 2, "\x01" ), "process call of size 2 with 1 bytes of data" },
   { request( Smbus::BLOCK_READ, 4, "" ), "block read of size 4; the chip tells the size" },
   { request( Smbus::BLOCK_WRITE, 0, "" ), "block write of 0 bytes; a block has 1 to 32" },
   { request( Smbus::BLOCK_WRITE, 33, std::string( 33, 'A' ) ),
      "block write of 33 bytes; a block has 1 to 32" },
   { request( Smbus::BLOCK_WRITE, 3, "\x01\x02" ), "block write of size 3 with 2 bytes of data" },
};

} // namespace

TEST( SmbusdOperation, IsRefusedWhenTheRequestIsNone ) {
   for ( auto& refusal : refusals ) {
      try {
         operationOf( refusal.request );
         ADD_FAILURE() << "accepted: " << refusal.reason;
      } catch ( const std::invalid_argument& error ) {
         EXPECT_STREQ( error.what(), refusal.reason );
      }
   }
}

TEST( SmbusdOperation, OfATypeThatIsNotKnownCountsAsWithoutType ) {
   // Field 3 with the value 9, behind an address.
   Smbus::Request request;
   ASSERT_TRUE( request.ParseFromString( std::string( "\x10\x01\x18\x09", 4 ) ) );
   try {
      operationOf( request );
      ADD_FAILURE() << "accepted";
   } catch ( const std::invalid_argument& error ) {
      EXPECT_STREQ( error.what(), "no known request type" );
   }
}

TEST( SmbusdOperation, WithoutSizeCountsAsSizeZero ) {
   auto read = request( Smbus::READ, 5, "" );
   read.clear_size();
   EXPECT_EQ( onTheBus( read ), "R:1" );
}

TEST( SmbusdOperation, IsDescribedByChipAndRegister ) {
   EXPECT_EQ( describe( operationOf( request( Smbus::READ, 1, "", 0x05, 1 ) ) ), "0x48 reg 0x05" );
   EXPECT_EQ( describe( operationOf( request( Smbus::READ, 1, "", 0x05, 2 ) ) ), "0x48 reg 0x0005" );
   EXPECT_EQ( describe( operationOf( request( Smbus::READ, 1, "", 0x05, 0 ) ) ), "0x48 reg 0x00000005" );
}

TEST( SmbusdOperation, ThatReceivesAByteIsDescribedWithoutRegister ) {
   EXPECT_EQ( describe( operationOf( request( Smbus::READ, 0, "", 0x05 ) ) ), "0x48" );
}

TEST( SmbusdOperation, ThatSendsAByteIsDescribedWithTheByteAsRegister ) {
   EXPECT_EQ( describe( operationOf( request( Smbus::WRITE, 0, "", 0x05 ) ) ), "0x48 reg 0x05" );
}
