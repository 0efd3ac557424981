#ifndef FAILING_MALLOC_H
#define FAILING_MALLOC_H

#include <cstddef>

/** Lets the next malloc of one size fail. To be included by the one source file of a program. */
class FailingMalloc {
public:
   explicit FailingMalloc( size_t size ) { failing = size; }

   ~FailingMalloc() { failing = 0; }

   FailingMalloc( const FailingMalloc& ) = delete;
   FailingMalloc& operator=( const FailingMalloc& ) = delete;

   static inline size_t failing = 0;
};

extern "C" {
void* __libc_malloc( size_t size );
/** That of the address sanitizer, in a program that has one. */
void* __interceptor_malloc( size_t size ) __attribute__( ( weak ) );

void* malloc( size_t size ) {
   if ( size != 0 && size == FailingMalloc::failing ) {
      FailingMalloc::failing = 0;
      return nullptr;
   }
   return __interceptor_malloc ? __interceptor_malloc( size ) : __libc_malloc( size );
}
}

#endif
