#include "smbusd/Frame.h"

#include "SmbusdFakes.h"

#include <array>

using namespace Smbusd;

TEST( SmbusdFrame, LengthHasItsMostSignificantByteFirst ) {
   std::array<uint8_t, 4> header { 0x00, 0x01, 0x02, 0x03 };
   EXPECT_EQ( Frame::payloadSize( header ), 0x00010203U );
}

TEST( SmbusdFrame, LargestLengthIsReadWhole ) {
   std::array<uint8_t, 4> header { 0xFF, 0xFF, 0xFF, 0xFF };
   EXPECT_EQ( Frame::payloadSize( header ), 0xFFFFFFFFU );
}

TEST( SmbusdFrame, OfAnAnswerIsItsLengthAndItsBytes ) {
   Smbus::TransactionResponse response;
   response.add_response()->set_data( std::string( "\x18\x80", 2 ) );
   response.set_failed( false );
   std::vector<uint8_t> frame;
   Frame::encode( response, frame );
   EXPECT_EQ( frame, ( std::vector<uint8_t> { 0, 0, 0, 8, 0x0A, 4, 0x0A, 2, 0x18, 0x80, 0x18, 0 } ) );
}

TEST( SmbusdFrame, OfAnEmptyMessageIsALengthOfZero ) {
   std::vector<uint8_t> frame { 1, 2, 3, 4, 5, 6 };
   Frame::encode( Smbus::TransactionResponse(), frame );
   EXPECT_EQ( frame, ( std::vector<uint8_t> { 0, 0, 0, 0 } ) );
}

TEST( SmbusdFrame, LengthOverAByteIsSpread ) {
   Smbus::TransactionResponse response;
   response.add_response()->set_data( std::string( 1000, 'x' ) );
   std::vector<uint8_t> frame;
   Frame::encode( response, frame );
   // 1000 bytes, and a tag and a two-byte length twice.
   EXPECT_EQ(
      std::vector( frame.begin(), frame.begin() + 4 ), ( std::vector<uint8_t> { 0, 0, 0x03, 0xEE } ) );
   EXPECT_EQ( frame.size(), 4U + 0x3EE );
}
