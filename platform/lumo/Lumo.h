#ifndef LUMO_H
#define LUMO_H

#include <cstddef>
#include <string>

namespace Lumo {

/** The switch system's string class, as far as the platform library uses it. */
class String {
public:
   String();
   String( const char* text );
   String( const String& other );
   String& operator=( const String& other );
   ~String();

   const char* charPtr() const;
   size_t bytes() const;
   String& operator+=( const String& tail );
   bool operator==( const String& other ) const;

private:
   std::string text_;
};

String operator+( const String& head, const String& tail );

} // namespace Lumo

#endif
