#include "Placement.h"

#include <cstdlib>
#include <vector>

namespace {

std::vector<int> processors() {
   cpu_set_t all;
   sched_getaffinity( 0, sizeof( all ), &all );
   std::vector<int> numbers;
   for ( int i = 0; i < CPU_SETSIZE; ++i ) {
      if ( CPU_ISSET( i, &all ) ) {
         numbers.push_back( i );
      }
   }
   return numbers;
}

void place( pid_t process, const cpu_set_t& processors ) {
   if ( sched_setaffinity( process, sizeof( processors ), &processors ) != 0 ) {
      abort();
   }
}

void place( pid_t process, int processor ) {
   cpu_set_t one;
   CPU_ZERO( &one );
   CPU_SET( processor, &one );
   place( process, one );
}

} // namespace

bool isPossible( Placed placed ) { return placed == Placed::Together || processors().size() > 1; }

Placement::Placement( pid_t other, Placed placed ) : other_( other ) {
   sched_getaffinity( 0, sizeof( all_ ), &all_ );
   auto numbers = processors();
   place( 0, numbers.front() );
   place( other_, placed == Placed::Together ? numbers.front() : numbers.back() );
}

Placement::~Placement() {
   place( 0, all_ );
   place( other_, all_ );
}
