#ifndef BENCH_CALLBACKS_H
#define BENCH_CALLBACKS_H

#include <vector>

/** A callback, on an object whose driver does nothing. */
struct Callback {
   const char* name;
   /** Calls it as a host does. */
   void ( *asHost )( int times );
   /** Does without the library what is no cost of its: the trace call and the virtual call. */
   void ( *asDriver )( int times );
};

const std::vector<Callback>& callbacks();

#endif
