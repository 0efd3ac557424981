#include "EmulatorBus.h"

#include "emulator/RegisterFile.h"

#include <gtest/gtest.h>

using namespace Emulator;
using Pointer = RegisterFile::Pointer;

namespace {

/** Registers 0 and 1 of 8 bits, 2 of 16 bits with a read-only low byte, a hole, and 4 of 8 bits. */
RegisterFile makeFile( Pointer pointer ) {
   return RegisterFile( pointer, {
                                    { 0, 1, 0x10, 0xFF },
                                    { 1, 1, 0x21, 0x0F },
                                    { 2, 2, 0x4B7F, 0xFF00 },
                                    { 4, 1, 0x44, 0x00 },
                                 } );
}

Bytes readAt( RegisterFile& file, uint8_t number, size_t count ) {
   file.start();
   file.write( Bytes { number } );
   file.start();
   return readNext( file, count );
}

} // namespace

TEST( EmulatorRegisterFile, ReadsTheRegisterThatThePointerWasSetTo ) {
   auto file = makeFile( Pointer::Stays );
   EXPECT_EQ( readAt( file, 1, 1 ), Bytes { 0x21 } );
   EXPECT_EQ( readAt( file, 2, 2 ), ( Bytes { 0x4B, 0x7F } ) );
}

TEST( EmulatorRegisterFile, PointsToRegisterZeroAtPowerOn ) {
   auto file = makeFile( Pointer::Stays );
   EXPECT_EQ( readNext( file, 1 ), Bytes { 0x10 } );
}

TEST( EmulatorRegisterFile, KeepsThePointerForTheNextMessage ) {
   auto file = makeFile( Pointer::Stays );
   readAt( file, 2, 2 );
   file.start();
   EXPECT_EQ( readNext( file, 2 ), ( Bytes { 0x4B, 0x7F } ) );
}

TEST( EmulatorRegisterFile, GoesOnWithinAMessageThatIsReadInSteps ) {
   auto file = makeFile( Pointer::Stays );
   EXPECT_EQ( readAt( file, 2, 1 ), Bytes { 0x4B } );
   EXPECT_EQ( readNext( file, 1 ), Bytes { 0x7F } );
}

TEST( EmulatorRegisterFile, ReadsOnesBehindTheRegisterWhenThePointerStays ) {
   auto file = makeFile( Pointer::Stays );
   EXPECT_EQ( readAt( file, 1, 3 ), ( Bytes { 0x21, 0xFF, 0xFF } ) );
}

TEST( EmulatorRegisterFile, IgnoresBytesWrittenBehindTheRegisterWhenThePointerStays ) {
   auto file = makeFile( Pointer::Stays );
   EXPECT_TRUE( file.write( Bytes { 0, 0x99, 0x88 } ) );
   EXPECT_EQ( file.get( 0 ), 0x99 );
   EXPECT_EQ( file.get( 1 ), 0x21 );
}

TEST( EmulatorRegisterFile, ReadsTheNextRegisterWhenThePointerIncrements ) {
   auto file = makeFile( Pointer::Increments );
   EXPECT_EQ( readAt( file, 0, 4 ), ( Bytes { 0x10, 0x21, 0x4B, 0x7F } ) );
}

TEST( EmulatorRegisterFile, ReadsOnesInAHole ) {
   auto file = makeFile( Pointer::Increments );
   EXPECT_EQ( readAt( file, 2, 4 ), ( Bytes { 0x4B, 0x7F, 0xFF, 0xFF } ) );
}

TEST( EmulatorRegisterFile, WritesTheNextRegisterWhenThePointerIncrements ) {
   auto file = makeFile( Pointer::Increments );
   EXPECT_TRUE( file.write( Bytes { 0, 0x01, 0x02, 0x03 } ) );
   EXPECT_EQ( file.get( 0 ), 0x01 );
   EXPECT_EQ( file.get( 1 ), 0x22 );
   EXPECT_EQ( file.get( 2 ), 0x037F );
}

TEST( EmulatorRegisterFile, DoesNotAcknowledgeAByteForAHoleButKeepsThoseBefore ) {
   auto file = makeFile( Pointer::Increments );
   EXPECT_FALSE( file.write( Bytes { 2, 0x12, 0x34, 0x56 } ) );
   EXPECT_EQ( file.get( 2 ), 0x127F );
}

TEST( EmulatorRegisterFile, DoesNotAcknowledgeANumberThatNoRegisterHas ) {
   auto file = makeFile( Pointer::Stays );
   readAt( file, 1, 1 );
   EXPECT_FALSE( file.write( Bytes { 3 } ) );
   EXPECT_FALSE( file.write( Bytes { 0xFF, 0x00 } ) );
   file.start();
   EXPECT_EQ( readNext( file, 1 ), Bytes { 0x21 } ) << "the pointer has moved";
}

TEST( EmulatorRegisterFile, AcknowledgesAWriteOfNoBytes ) {
   auto file = makeFile( Pointer::Stays );
   EXPECT_TRUE( file.write( {} ) );
}

TEST( EmulatorRegisterFile, ChangesOnlyTheWritableBits ) {
   auto file = makeFile( Pointer::Stays );
   EXPECT_TRUE( file.write( Bytes { 1, 0xF6 } ) );
   EXPECT_TRUE( file.write( Bytes { 2, 0x50, 0x00 } ) );
   EXPECT_TRUE( file.write( Bytes { 4, 0x00 } ) );
   EXPECT_EQ( file.get( 1 ), 0x26 );
   EXPECT_EQ( file.get( 2 ), 0x507F );
   EXPECT_EQ( file.get( 4 ), 0x44 );
}

TEST( EmulatorRegisterFile, ChangesOnlyTheHighByteWhenOneByteComes ) {
   RegisterFile file( Pointer::Stays, { { 0, 2, 0x1234, 0xFFFF } } );
   EXPECT_TRUE( file.write( Bytes { 0, 0x99 } ) );
   EXPECT_EQ( file.get( 0 ), 0x9934 );
}

TEST( EmulatorRegisterFile, ResetRestoresRegistersAndPointer ) {
   auto file = makeFile( Pointer::Stays );
   file.write( Bytes { 2, 0x50, 0x00 } );
   file.write( Bytes { 0, 0x99 } );
   file.set( 4, 0x01 );
   file.write( Bytes { 1 } );
   file.reset();
   EXPECT_EQ( readNext( file, 1 ), Bytes { 0x10 } );
   EXPECT_EQ( file.get( 2 ), 0x4B7F );
   EXPECT_EQ( file.get( 4 ), 0x44 );
}

TEST( EmulatorRegisterFile, ClearsWhatAReadClearsByteByByte ) {
   RegisterFile file( Pointer::Increments, { { 0, 2, 0x0000, 0x0000, 0xF0F0 }, { 1, 1, 0x00, 0x00 } } );
   file.set( 0, 0x1234 );
   EXPECT_EQ( readAt( file, 0, 1 ), Bytes { 0x12 } );
   EXPECT_EQ( file.get( 0 ), 0x0234 );
   EXPECT_EQ( readAt( file, 0, 2 ), ( Bytes { 0x02, 0x34 } ) );
   EXPECT_EQ( file.get( 0 ), 0x0204 );
}
