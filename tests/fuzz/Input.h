#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <string>

/** What the input has not told yet; behind its end there are zeros. */
struct Input {
   const uint8_t* next = nullptr;
   const uint8_t* end = nullptr;

   uint8_t byte() { return next < end ? *next++ : uint8_t { 0 }; }

   int word() {
      int high = byte();
      return high << 8 | byte();
   }

   std::string bytes( size_t count ) {
      std::string text( count, '\0' );
      for ( auto& each : text ) {
         each = static_cast<char>( byte() );
      }
      return text;
   }
};

#endif
