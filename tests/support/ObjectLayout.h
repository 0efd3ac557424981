#ifndef OBJECT_LAYOUT_H
#define OBJECT_LAYOUT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <new>
#include <ostream>
#include <utility>
#include <vector>

/** Objects and tables as a host sees them that was built apart from the library: offsets, words and slots. */
namespace Layout {

template <typename Object, typename Field>
size_t offsetOf( const Object& object, const Field& field ) {
   return static_cast<size_t>(
      reinterpret_cast<const char*>( &field ) - reinterpret_cast<const char*>( &object ) );
}

/** Slot of a virtual operation in the table of its class, from 0; a virtual destructor takes two slots. */
template <typename Operation>
size_t slotOf( Operation operation ) {
   // Itanium C++ ABI: the first word of such a pointer is the slot's offset in bytes, with a mark in its low
   // bit.
   uintptr_t words[2];
   static_assert( sizeof( operation ) == sizeof( words ) );
   memcpy( words, &operation, sizeof( words ) );
   return ( words[0] & ~uintptr_t { 1 } ) / sizeof( void* );
}

/** One 8-byte word of a table: a number, a function or null. */
struct Word {
   uint64_t value;

   Word( uint64_t number ) : value( number ) {}

   Word( std::nullptr_t ) : value( 0 ) {}

   template <typename Result, typename... Args>
   Word( Result ( *function )( Args... ) ) : value( reinterpret_cast<uintptr_t>( function ) ) {}

   bool operator==( const Word& ) const = default;
};

inline std::ostream& operator<<( std::ostream& stream, const Word& word ) {
   return stream << std::hex << std::showbase << word.value << std::dec;
}

template <typename Table>
std::vector<Word> wordsOf( const Table& table ) {
   static_assert( sizeof( Table ) % sizeof( uint64_t ) == 0 );
   uint64_t words[sizeof( Table ) / sizeof( uint64_t )];
   memcpy( words, &table, sizeof( table ) );
   return { std::begin( words ), std::end( words ) };
}

/** An object in memory that was full of a pattern before, so that what its constructor leaves alone shows. */
template <typename Object>
class InFilledMemory {
public:
   static constexpr uint64_t pattern = 0xA5A5A5A5A5A5A5A5;

   template <typename... Args>
   explicit InFilledMemory( Args&&... args ) {
      memset( memory_, static_cast<int>( pattern & 0xFF ), sizeof( memory_ ) );
      // The compiler may drop what was stored before an object's life begins, unless somebody could look at
      // it.
      asm volatile( "" : : "r"( memory_ ) : "memory" );
      if constexpr ( sizeof...( args ) == 0 ) {
         object_ = new ( memory_ ) Object;
      } else {
         object_ = new ( memory_ ) Object( std::forward<Args>( args )... );
      }
   }

   ~InFilledMemory() { object_->Object::~Object(); }

   InFilledMemory( const InFilledMemory& ) = delete;
   InFilledMemory& operator=( const InFilledMemory& ) = delete;

   Object* operator->() { return object_; }

   Object& operator*() { return *object_; }

private:
   alignas( Object ) unsigned char memory_[sizeof( Object )];
   Object* object_;
};

} // namespace Layout

#endif
