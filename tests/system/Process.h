#ifndef PROCESS_H
#define PROCESS_H

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

/** How a program ended and what it wrote. */
struct Result {
   /** -1 when a signal ended it. */
   int exitStatus = -1;
   /** 0 when it ended by itself. */
   int signal = 0;
   std::string out;
   std::string err;
};

/** A program in a process of its own, without standard input but for a screen's. It is killed if it still
 * runs at the end. */
class Process {
public:
   /** Variables to set, or to take away. */
   using Environment = std::map<std::string, std::optional<std::string>>;
   using Arguments = std::vector<std::string>;

   /**
    * Where stdout goes, or with `ErrorTerminal` stderr; the other goes into a pipe. `Screen` is a terminal of
    * 80 columns and 24 rows that the program has to itself, for its input too.
    */
   enum class Output { Pipe, Terminal, ErrorTerminal, Screen };

   Process( const Arguments& command, const Environment& environment, Output output = Output::Pipe );
   ~Process();
   Process( const Process& ) = delete;
   Process& operator=( const Process& ) = delete;

   /** The next line of its output, without the line end; none at the end, and when none comes in time. */
   std::optional<std::string> readLine();

   /** Reads on until a text comes, which must be in time. @return what has come since the last such text */
   std::string readUntil( const std::string& text );

   void send( int signal ) const;

   pid_t pid() const { return pid_; }

   /** Waits until a signal has stopped it. */
   void awaitStop() const;

   /** What somebody types on the screen. */
   void type( const std::string& keys ) const;
   /** Whether the screen shows what is typed. */
   bool echoes() const;
   void resize( unsigned short columns, unsigned short rows ) const;

   /** How many descriptors it has open. */
   size_t descriptors() const;

   /** Waits for its end, 30 seconds at most, which is a failure of the test. */
   Result wait();

private:
   using Clock = std::chrono::steady_clock;

   /** Takes what there is to read from one of the two outputs. @return false at the end or the deadline */
   bool readSome( Clock::time_point deadline );
   void read( int& file, std::string& text );

   pid_t pid_ = -1;
   int out_ = -1;
   int err_ = -1;
   Result result_;
   size_t consumed_ = 0;
};

#endif
