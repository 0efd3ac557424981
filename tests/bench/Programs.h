#ifndef BENCH_PROGRAMS_H
#define BENCH_PROGRAMS_H

#include "TemporaryFolder.h"

#include <string>
#include <vector>

#include <sys/types.h>

using Words = std::vector<std::string>;

/** Becomes another program, found in PATH; ends with 127 when there is none such. */
[[noreturn]] void become( Words words );

/** Seconds of processor time that a process has used so far. */
double processorTimeOf( pid_t process );

/** quillon-smbusd with an emulated board, for all that is started here. */
class Server {
public:
   /** @param board folder of emulator.json */
   explicit Server( const std::string& board );
   ~Server();
   Server( const Server& ) = delete;
   Server& operator=( const Server& ) = delete;

   pid_t process() const { return process_; }

private:
   TemporaryFolder folder_;
   pid_t process_;
};

#endif
