#include "Lumo.h"

namespace Lumo {

String::String() = default;

String::String( const char* text ) : text_( text ) {}

String::String( const String& other ) = default;

String& String::operator=( const String& other ) = default;

String::~String() = default;

const char* String::charPtr() const { return text_.c_str(); }

size_t String::bytes() const { return text_.size(); }

String& String::operator+=( const String& tail ) {
   text_ += tail.text_;
   return *this;
}

bool String::operator==( const String& other ) const { return text_ == other.text_; }

String operator+( const String& head, const String& tail ) {
   String sum = head;
   sum += tail;
   return sum;
}

} // namespace Lumo
