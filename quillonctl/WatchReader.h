#ifndef WATCH_READER_H
#define WATCH_READER_H

#include "Board.h"
#include "Options.h"
#include "Pace.h"

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

/** The read end of a pipe, in lines. */
class LinePipe {
public:
   LinePipe();
   ~LinePipe();
   LinePipe( const LinePipe& ) = delete;
   LinePipe& operator=( const LinePipe& ) = delete;

   /** Makes the write end a descriptor of this process, and closes all else. */
   void becomeOutput( int descriptor );
   void closeWriter();

   int descriptor() const { return reader_; }

   /** Waits for something to read. @return the lines that are complete now; nothing at the end */
   std::optional<std::vector<std::string>> read();

private:
   int reader_ = -1;
   int writer_ = -1;
   std::string rest_;
};

/**
 * Reads objects in rounds, in a process of its own: whoever shows them never waits for the hardware, and ends
 * the reading at once. A round comes as a line, the document that `status` has for it.
 */
class WatchReader {
public:
   struct Job {
      const Options& options;
      const Board& board;
      const std::vector<const ObjectEntry*>& objects;
      Pace pace;
      /** Of kinds with a summary, reads what that needs. */
      bool isBrief;
      /** Takes what is written to stderr too, such as trace lines, which would tear a screen. */
      bool takesErrors;
   };

   /** @param prepare is called in the new process before all else */
   WatchReader( const Job& job, const std::function<void()>& prepare );
   /** Ends the process. */
   ~WatchReader();
   WatchReader( const WatchReader& ) = delete;
   WatchReader& operator=( const WatchReader& ) = delete;

   LinePipe rounds;
   LinePipe errors;

   /** Waits for the process, which is at its end. @return exit status of the program */
   int wait();

private:
   pid_t pid_;
};

/** What a line of a reader tells of its objects; nothing for a line that is not its own but the library's. */
std::optional<std::vector<Reading>> readingsOf(
   const std::string& line, const std::vector<const ObjectEntry*>& objects );

#endif
