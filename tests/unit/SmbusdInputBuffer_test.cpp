#include "smbusd/InputBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

using Smbusd::InputBuffer;

namespace {

void put( InputBuffer& buffer, std::string_view text ) {
   while ( !text.empty() ) {
      auto room = buffer.room();
      auto count = std::min( room.size(), text.size() );
      std::copy_n( text.begin(), count, room.begin() );
      buffer.add( count );
      text.remove_prefix( count );
   }
}

std::string content( const InputBuffer& buffer ) { return { buffer.bytes().begin(), buffer.bytes().end() }; }

} // namespace

TEST( SmbusdInputBuffer, HoldsWhatWasStored ) {
   InputBuffer buffer;
   put( buffer, "one" );
   put( buffer, "two" );
   EXPECT_EQ( content( buffer ), "onetwo" );
}

TEST( SmbusdInputBuffer, KeepsTheRestOfWhatWasRemoved ) {
   InputBuffer buffer;
   put( buffer, "onetwo" );
   buffer.remove( 3 );
   EXPECT_EQ( content( buffer ), "two" );
   put( buffer, "three" );
   EXPECT_EQ( content( buffer ), "twothree" );
}

TEST( SmbusdInputBuffer, HasRoomForLittleBeforeMuchHasArrived ) {
   InputBuffer buffer;
   EXPECT_EQ( buffer.room().size(), InputBuffer::usualSize );
}

TEST( SmbusdInputBuffer, GrowsWithWhatArrives ) {
   InputBuffer buffer;
   std::string text( 5 * InputBuffer::usualSize, 'x' );
   text += "end";
   put( buffer, text );
   EXPECT_EQ( content( buffer ), text );
}

TEST( SmbusdInputBuffer, GivesBackWhatALargeMessageTook ) {
   InputBuffer buffer;
   put( buffer, std::string( 5 * InputBuffer::usualSize, 'x' ) );
   buffer.remove( 5 * InputBuffer::usualSize );
   EXPECT_EQ( buffer.room().size(), InputBuffer::usualSize );
}
