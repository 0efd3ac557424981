#include "smbusd/I2cDev/SmbusTransfer.h"

#include "SmbusdMockKernel.h"

#include <algorithm>
#include <cstring>

using namespace Smbusd;
using namespace Smbusd::I2cDev;
using testing::_;
using testing::An;
using testing::Invoke;

namespace {

using Kind = Operation::Kind;
using Bytes = std::vector<uint8_t>;

const Bytes one { 0xA1 };
const Bytes two { 0xA1, 0xA2 };
const Bytes three { 0xA1, 0xA2, 0xA3 };
const Bytes longest( 32, 0xA5 );

Bytes withCount( uint8_t count, Bytes bytes ) {
   bytes.insert( bytes.begin(), count );
   return bytes;
}

/** What the kernel is asked for, and the bytes of its data union before and after. */
struct Row {
   const char* name;
   Operation operation;
   uint8_t direction;
   uint32_t size;
   /** The adapter's function. */
   unsigned long function;
   const char* lacking;
   Bytes given;
   Bytes answered;
   Bytes result;
};

const Row rows[] = {
   { "receive byte", { .kind = Kind::ReceiveByte, .chip = 0x48, .reg = 5, .length = 1 }, I2C_SMBUS_READ,
      I2C_SMBUS_BYTE, I2C_FUNC_SMBUS_READ_BYTE, "receive byte", {}, { 0xB1 }, { 0xB1 } },
   { "read 1", { .kind = Kind::Read, .chip = 0x48, .reg = 5, .length = 1 }, I2C_SMBUS_READ,
      I2C_SMBUS_BYTE_DATA, I2C_FUNC_SMBUS_READ_BYTE_DATA, "read byte", {}, { 0xB1 }, { 0xB1 } },
   // A word lies in memory as it is on the bus: the low byte first.
   { "read 2", { .kind = Kind::Read, .chip = 0x48, .reg = 5, .length = 2 }, I2C_SMBUS_READ,
      I2C_SMBUS_WORD_DATA, I2C_FUNC_SMBUS_READ_WORD_DATA, "read word", {}, { 0xB1, 0xB2 }, { 0xB1, 0xB2 } },
   { "read 3", { .kind = Kind::Read, .chip = 0x48, .reg = 5, .length = 3 }, I2C_SMBUS_READ,
      I2C_SMBUS_I2C_BLOCK_DATA, I2C_FUNC_SMBUS_READ_I2C_BLOCK, "I2C block read", { 3 },
      { 3, 0xB1, 0xB2, 0xB3 }, { 0xB1, 0xB2, 0xB3 } },
   { "read 32", { .kind = Kind::Read, .chip = 0x48, .reg = 5, .length = 32 }, I2C_SMBUS_READ,
      I2C_SMBUS_I2C_BLOCK_DATA, I2C_FUNC_SMBUS_READ_I2C_BLOCK, "I2C block read", { 32 },
      withCount( 32, longest ), longest },
   { "send byte", { .kind = Kind::SendByte, .chip = 0x48, .reg = 5 }, I2C_SMBUS_WRITE, I2C_SMBUS_BYTE,
      I2C_FUNC_SMBUS_WRITE_BYTE, "send byte", {}, {}, {} },
   { "write 1", { .kind = Kind::Write, .chip = 0x48, .reg = 5, .data = one }, I2C_SMBUS_WRITE,
      I2C_SMBUS_BYTE_DATA, I2C_FUNC_SMBUS_WRITE_BYTE_DATA, "write byte", one, {}, {} },
   { "write 2", { .kind = Kind::Write, .chip = 0x48, .reg = 5, .data = two }, I2C_SMBUS_WRITE,
      I2C_SMBUS_WORD_DATA, I2C_FUNC_SMBUS_WRITE_WORD_DATA, "write word", two, {}, {} },
   { "write 3", { .kind = Kind::Write, .chip = 0x48, .reg = 5, .data = three }, I2C_SMBUS_WRITE,
      I2C_SMBUS_I2C_BLOCK_DATA, I2C_FUNC_SMBUS_WRITE_I2C_BLOCK, "I2C block write", withCount( 3, three ), {},
      {} },
   { "write 32", { .kind = Kind::Write, .chip = 0x48, .reg = 5, .data = longest }, I2C_SMBUS_WRITE,
      I2C_SMBUS_I2C_BLOCK_DATA, I2C_FUNC_SMBUS_WRITE_I2C_BLOCK, "I2C block write", withCount( 32, longest ),
      {}, {} },
   { "process call", { .kind = Kind::ProcessCall, .chip = 0x48, .reg = 5, .data = two, .length = 2 },
      I2C_SMBUS_WRITE, I2C_SMBUS_PROC_CALL, I2C_FUNC_SMBUS_PROC_CALL, "process call", two, { 0xB1, 0xB2 },
      { 0xB1, 0xB2 } },
   { "block read", { .kind = Kind::BlockRead, .chip = 0x48, .reg = 5, .length = 32 }, I2C_SMBUS_READ,
      I2C_SMBUS_BLOCK_DATA, I2C_FUNC_SMBUS_READ_BLOCK_DATA, "block read", {}, { 2, 0xB1, 0xB2 },
      { 0xB1, 0xB2 } },
   { "longest block read", { .kind = Kind::BlockRead, .chip = 0x48, .reg = 5, .length = 32 }, I2C_SMBUS_READ,
      I2C_SMBUS_BLOCK_DATA, I2C_FUNC_SMBUS_READ_BLOCK_DATA, "block read", {}, withCount( 32, longest ),
      longest },
   { "block write", { .kind = Kind::BlockWrite, .chip = 0x48, .reg = 5, .data = one }, I2C_SMBUS_WRITE,
      I2C_SMBUS_BLOCK_DATA, I2C_FUNC_SMBUS_WRITE_BLOCK_DATA, "block write", withCount( 1, one ), {}, {} },
   { "longest block write", { .kind = Kind::BlockWrite, .chip = 0x48, .reg = 5, .data = longest },
      I2C_SMBUS_WRITE, I2C_SMBUS_BLOCK_DATA, I2C_FUNC_SMBUS_WRITE_BLOCK_DATA, "block write",
      withCount( 32, longest ), {}, {} },
};

/** Runs an operation; the kernel's data union gets these bytes. */
int runAnswered( const Bytes& answer, Operation& operation ) {
   MockKernel kernel;
   EXPECT_CALL( kernel, transfer( deviceFd, An<i2c_smbus_ioctl_data&>() ) )
      .WillOnce( Invoke( [&]( int, i2c_smbus_ioctl_data& transfer ) {
         std::copy( answer.begin(), answer.end(), transfer.data->block );
         return 0;
      } ) );
   return SmbusTransfer::run( kernel, deviceFd, operation );
}

constexpr unsigned long allFunctions = I2C_FUNC_SMBUS_EMUL_ALL;

} // namespace

TEST( SmbusdI2cDevSmbus, IsTheProtocolOfEachOperation ) {
   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      MockKernel kernel;
      EXPECT_CALL( kernel, transfer( deviceFd, An<i2c_smbus_ioctl_data&>() ) )
         .WillOnce( Invoke( [&]( int, i2c_smbus_ioctl_data& transfer ) {
            EXPECT_EQ( transfer.read_write, row.direction );
            EXPECT_EQ( transfer.command, 5 );
            EXPECT_EQ( transfer.size, row.size );
            auto data = transfer.data->block;
            EXPECT_EQ( Bytes( data, data + row.given.size() ), row.given );
            std::copy( row.answered.begin(), row.answered.end(), data );
            return 0;
         } ) );
      auto operation = row.operation;
      EXPECT_EQ( SmbusTransfer::run( kernel, deviceFd, operation ), 0 );
      EXPECT_EQ( operation.result, row.result );
   }
}

TEST( SmbusdI2cDevSmbus, NeedsOneFunctionForEachOperation ) {
   for ( auto& row : rows ) {
      EXPECT_EQ( SmbusTransfer::lacking( row.operation, row.function ), "" ) << row.name;
      EXPECT_EQ( SmbusTransfer::lacking( row.operation, allFunctions & ~row.function ), row.lacking )
         << row.name;
   }
}

TEST( SmbusdI2cDevSmbus, LacksRegisterNumbersOfSeveralBytes ) {
   Operation operation { .kind = Kind::Read, .chip = 0x48, .regSize = 2, .length = 1 };
   EXPECT_EQ( SmbusTransfer::lacking( operation, allFunctions ), "register number of 2 bytes" );
}

TEST( SmbusdI2cDevSmbus, SendsAndReceivesAByteWhateverTheSizeOfRegisterNumbers ) {
   Operation receive { .kind = Kind::ReceiveByte, .chip = 0x48, .regSize = 4, .length = 1 };
   EXPECT_EQ( SmbusTransfer::lacking( receive, allFunctions ), "" );
   Operation send { .kind = Kind::SendByte, .chip = 0x48, .regSize = 4 };
   EXPECT_EQ( SmbusTransfer::lacking( send, allFunctions ), "" );
}

TEST( SmbusdI2cDevSmbus, LacksLongReadsAndWrites ) {
   Operation read { .kind = Kind::Read, .chip = 0x48, .length = 33 };
   EXPECT_EQ( SmbusTransfer::lacking( read, allFunctions ), "33 bytes at once" );
   const Bytes data( 40 );
   Operation write { .kind = Kind::Write, .chip = 0x48, .data = data };
   EXPECT_EQ( SmbusTransfer::lacking( write, allFunctions ), "40 bytes at once" );
}

TEST( SmbusdI2cDevSmbus, PassesOnWhyTheKernelRefuses ) {
   MockKernel kernel;
   EXPECT_CALL( kernel, transfer( _, An<i2c_smbus_ioctl_data&>() ) ).WillOnce( FailWith( EAGAIN ) );
   Operation operation { .kind = Kind::Read, .chip = 0x48, .length = 1 };
   EXPECT_EQ( SmbusTransfer::run( kernel, deviceFd, operation ), EAGAIN );
   EXPECT_TRUE( operation.result.empty() );
}

TEST( SmbusdI2cDevSmbus, TakesNoBlockWithoutBytes ) {
   Operation operation { .kind = Kind::BlockRead, .chip = 0x48, .length = 32 };
   EXPECT_EQ( runAnswered( { 0 }, operation ), EPROTO );
}

TEST( SmbusdI2cDevSmbus, TakesNoBlockThatIsTooLong ) {
   Operation operation { .kind = Kind::BlockRead, .chip = 0x48, .length = 32 };
   EXPECT_EQ( runAnswered( { 33 }, operation ), EPROTO );
}

TEST( SmbusdI2cDevSmbus, TakesNoReadThatCameShort ) {
   Operation operation { .kind = Kind::Read, .chip = 0x48, .length = 4 };
   EXPECT_EQ( runAnswered( { 3, 1, 2, 3 }, operation ), EPROTO );
}
