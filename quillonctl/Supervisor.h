#ifndef SUPERVISOR_H
#define SUPERVISOR_H

#include "HostServices.h"
#include "Kind.h"
#include "ProgressLine.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/**
 * The library ends its process when a contract breaks, and with some drivers hardware that doesn't answer is
 * enough for that. So the library is loaded in a child process, and what it was doing when it ended is known
 * here.
 */
namespace Supervisor {

/** How far the child is, in memory that both processes see. */
struct Progress {
   static constexpr size_t noObject = SIZE_MAX;

   /** Index of the object that the library is working on. */
   size_t object;
   /** Rounds of output that are complete. */
   unsigned rounds;
   /** The last line that the library has traced. */
   HostServices::LastLine line;
   /** What the library waits for, or null; it has the same address in both processes. */
   std::atomic<const Step*> step;
   ProgressLine shown;
};

/** An end of the child by a signal that nobody sent. */
struct Crash {
   /** The object that it was about. */
   size_t object;
   /** Words for a sentence: "the library ended its process (Aborted) after "setting alert threshold"". */
   std::string reason;
};

/**
 * Runs `work` in a child process, again after each crash that was about an object. SIGINT and SIGTERM are
 * handed on to the child.
 * @param work its result is the exit status; it must leave out the objects of earlier crashes
 * @param onCrash is told of each crash, in this process
 * @param onTick is called several times a second while the child runs, in this process; may be empty
 * @return the exit status of the child that came to its end
 * @throw HostError for a crash that was about no object
 */
int run( const std::function<int( Progress& )>& work, const std::function<void( const Crash& )>& onCrash,
   const std::function<void( Progress& )>& onTick );

} // namespace Supervisor

#endif
