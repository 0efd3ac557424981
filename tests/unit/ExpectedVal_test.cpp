#include "Ham/ExpectedVal.h"

#include "FieldOrder.h"

#include <gtest/gtest.h>

#include <type_traits>

using Utils::ExpectedVal;

TEST( ExpectedVal, HasItsFieldsInTheAgreedOrder ) {
   ExpectedVal value( 7, 1 );
   EXPECT_TRUE( inOrder( value.val, value.valStr(), value.size, value.isNumber ) );
}

TEST( ExpectedVal, HasAVirtualDestructor ) { EXPECT_TRUE( std::has_virtual_destructor_v<ExpectedVal> ); }

TEST( ExpectedVal, OfANumberHasItsValueAndWidth ) {
   ExpectedVal number( 0x2000, 2 );
   EXPECT_TRUE( number.isNumber );
   EXPECT_EQ( number.val, 0x2000U );
   EXPECT_EQ( number.size, 2U );
   EXPECT_EQ( number.valStr(), "" );
}

TEST( ExpectedVal, OfANumberHas64Bits ) { EXPECT_EQ( ExpectedVal( ~0ULL, 8 ).val, 0xFFFFFFFFFFFFFFFF ); }

TEST( ExpectedVal, OfATextIsAsWideAsTheText ) {
   ExpectedVal text( "serial" );
   EXPECT_FALSE( text.isNumber );
   EXPECT_EQ( text.valStr(), "serial" );
   EXPECT_EQ( text.size, 6U );
}

TEST( ExpectedVal, CopyConstructedFromANumberHasNoText ) {
   ExpectedVal number( "old" );
   number = ExpectedVal( 7, 1 );
   ASSERT_EQ( number.valStr(), "old" );
   ExpectedVal copy( number );
   EXPECT_TRUE( copy.isNumber );
   EXPECT_EQ( copy.val, 7U );
   EXPECT_EQ( copy.size, 1U );
   EXPECT_EQ( copy.valStr(), "" );
}

TEST( ExpectedVal, CopyConstructedFromATextHasNoNumber ) {
   ExpectedVal text( 7, 1 );
   text = ExpectedVal( "text" );
   ASSERT_EQ( text.val, 7U );
   ExpectedVal copy( text );
   EXPECT_FALSE( copy.isNumber );
   EXPECT_EQ( copy.val, 0U );
   EXPECT_EQ( copy.size, 4U );
   EXPECT_EQ( copy.valStr(), "text" );
}

TEST( ExpectedVal, AssignedANumberKeepsItsOwnText ) {
   ExpectedVal target( "old" );
   target = ExpectedVal( 7, 1 );
   EXPECT_TRUE( target.isNumber );
   EXPECT_EQ( target.val, 7U );
   EXPECT_EQ( target.size, 1U );
   EXPECT_EQ( target.valStr(), "old" );
}

TEST( ExpectedVal, AssignedATextKeepsItsOwnNumber ) {
   ExpectedVal target( 7, 1 );
   target = ExpectedVal( "text" );
   EXPECT_FALSE( target.isNumber );
   EXPECT_EQ( target.val, 7U );
   EXPECT_EQ( target.size, 4U );
   EXPECT_EQ( target.valStr(), "text" );
}
