#include "Ham/ExpectedVal.h"

namespace Utils {

ExpectedVal::ExpectedVal( uint64_t number, size_t bytes ) : val( number ), size( bytes ), isNumber( true ) {}

ExpectedVal::ExpectedVal( const std::string& text )
   : valStr_( text ), size( text.size() ), isNumber( false ) {}

ExpectedVal::ExpectedVal( const ExpectedVal& other ) { *this = other; }

ExpectedVal& ExpectedVal::operator=( const ExpectedVal& other ) {
   size = other.size;
   isNumber = other.isNumber;
   if ( isNumber ) {
      val = other.val;
   } else {
      valStr_ = other.valStr_;
   }
   return *this;
}

} // namespace Utils
