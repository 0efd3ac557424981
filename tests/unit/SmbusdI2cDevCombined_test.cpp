#include "smbusd/I2cDev/CombinedTransfer.h"

#include "SmbusdMockKernel.h"

#include <fmt/format.h>

#include <functional>

using namespace Smbusd;
using namespace Smbusd::I2cDev;
using testing::_;
using testing::An;
using testing::Invoke;

namespace {

using Kind = Operation::Kind;

const std::vector<uint8_t> data { 0xA1, 0xA2 };

/** "48 w:00a1a2" and the like; "48 r:2" for a read, "48 b:33/1" for a block read, with length and first byte.
 */
std::string describe( const i2c_rdwr_ioctl_data& transfer ) {
   std::string text;
   for ( auto& message : std::span( transfer.msgs, transfer.nmsgs ) ) {
      text += fmt::format( "{}{:02x} ", text.empty() ? "" : ", ", message.addr );
      if ( message.flags == ( I2C_M_RD | I2C_M_RECV_LEN ) ) {
         text += fmt::format( "b:{}/{}", message.len, message.buf[0] );
      } else if ( message.flags == I2C_M_RD ) {
         text += fmt::format( "r:{}", message.len );
      } else {
         EXPECT_EQ( message.flags, 0 );
         text += fmt::format( "w:{:02x}", fmt::join( std::span( message.buf, message.len ), "" ) );
      }
   }
   return text;
}

/** Runs an operation. The chip answers with 0x02, 0x03 and so on. */
std::string run( Operation& operation ) {
   MockKernel kernel;
   std::string text;
   EXPECT_CALL( kernel, transfer( deviceFd, An<i2c_rdwr_ioctl_data&>() ) )
      .WillOnce( Invoke( [&]( int, i2c_rdwr_ioctl_data& transfer ) {
         text = describe( transfer );
         auto& last = transfer.msgs[transfer.nmsgs - 1];
         for ( int i = 0; last.flags & I2C_M_RD && i < last.len; ++i ) {
            last.buf[i] = static_cast<uint8_t>( i + 2 );
         }
         return static_cast<int>( transfer.nmsgs );
      } ) );
   EXPECT_EQ( CombinedTransfer::run( kernel, deviceFd, operation ), 0 ) << text;
   return text;
}

struct Row {
   const char* name;
   Operation operation;
   const char* transfer;
   std::vector<uint8_t> result;
};

const Row rows[] = {
   { "receive byte", { .kind = Kind::ReceiveByte, .chip = 0x48, .length = 1 }, "48 r:1", { 2 } },
   { "read", { .kind = Kind::Read, .chip = 0x48, .reg = 5, .length = 3 }, "48 w:05, 48 r:3", { 2, 3, 4 } },
   { "read, register of 2 bytes",
      { .kind = Kind::Read, .chip = 0x48, .reg = 0x0105, .regSize = 2, .length = 1 }, "48 w:0105, 48 r:1",
      { 2 } },
   { "send byte", { .kind = Kind::SendByte, .chip = 0x48, .reg = 5 }, "48 w:05", {} },
   { "write", { .kind = Kind::Write, .chip = 0x48, .reg = 5, .data = data }, "48 w:05a1a2", {} },
   { "process call", { .kind = Kind::ProcessCall, .chip = 0x48, .reg = 5, .data = data, .length = 2 },
      "48 w:05a1a2, 48 r:2", { 2, 3 } },
   // Its count is the first byte of the answer, 2.
   { "block read", { .kind = Kind::BlockRead, .chip = 0x48, .reg = 5, .length = 32 }, "48 w:05, 48 b:33/1",
      { 3, 4 } },
   { "block write", { .kind = Kind::BlockWrite, .chip = 0x48, .reg = 5, .data = data }, "48 w:0502a1a2", {} },
};

Operation blockRead() { return { .kind = Kind::BlockRead, .chip = 0x48, .length = 32 }; }

int runBlockOf( uint8_t count, Operation& operation ) {
   MockKernel kernel;
   EXPECT_CALL( kernel, transfer( _, An<i2c_rdwr_ioctl_data&>() ) )
      .WillOnce( Invoke( [count]( int, i2c_rdwr_ioctl_data& transfer ) {
         transfer.msgs[1].buf[0] = count;
         return 2;
      } ) );
   return CombinedTransfer::run( kernel, deviceFd, operation );
}

} // namespace

TEST( SmbusdI2cDevCombined, IsTheMessagesOfEachOperation ) {
   for ( auto& row : rows ) {
      auto operation = row.operation;
      EXPECT_EQ( run( operation ), row.transfer ) << row.name;
      EXPECT_EQ( operation.result, row.result ) << row.name;
   }
}

TEST( SmbusdI2cDevCombined, PassesOnWhyTheKernelRefuses ) {
   MockKernel kernel;
   EXPECT_CALL( kernel, transfer( _, An<i2c_rdwr_ioctl_data&>() ) ).WillOnce( FailWith( ETIMEDOUT ) );
   Operation operation { .kind = Kind::Read, .chip = 0x48, .length = 1 };
   EXPECT_EQ( CombinedTransfer::run( kernel, deviceFd, operation ), ETIMEDOUT );
   EXPECT_TRUE( operation.result.empty() );
}

TEST( SmbusdI2cDevCombined, TakesTheLongestBlock ) {
   auto operation = blockRead();
   EXPECT_EQ( runBlockOf( 32, operation ), 0 );
   EXPECT_EQ( operation.result.size(), 32U );
}

TEST( SmbusdI2cDevCombined, TakesNoBlockWithoutBytes ) {
   auto operation = blockRead();
   EXPECT_EQ( runBlockOf( 0, operation ), EPROTO );
}

TEST( SmbusdI2cDevCombined, TakesNoBlockThatIsTooLong ) {
   auto operation = blockRead();
   EXPECT_EQ( runBlockOf( 33, operation ), EPROTO );
}

TEST( SmbusdI2cDevCombined, LacksBlockReadsWhereTheAdapterDoes ) {
   EXPECT_EQ( CombinedTransfer::lacking( blockRead(), I2C_FUNC_I2C ), "block reads" );
   EXPECT_EQ( CombinedTransfer::lacking( blockRead(), I2C_FUNC_I2C | I2C_FUNC_SMBUS_READ_BLOCK_DATA ), "" );
}

TEST( SmbusdI2cDevCombined, LacksNothingElse ) {
   for ( auto& row : rows ) {
      if ( row.operation.kind != Kind::BlockRead ) {
         EXPECT_EQ( CombinedTransfer::lacking( row.operation, I2C_FUNC_I2C ), "" ) << row.name;
      }
   }
}
