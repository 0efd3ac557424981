#ifndef BENCH_PING_PONG_H
#define BENCH_PING_PONG_H

#include <cstddef>
#include <vector>

#include <sys/types.h>

/**
 * The least that a question and an answer over a Unix socket can cost: a process that answers so many bytes
 * with so many others, and does nothing else. Both sides block in the call that they wait with.
 */
class PingPong {
public:
   PingPong( size_t requestBytes, size_t replyBytes );
   ~PingPong();
   PingPong( const PingPong& ) = delete;
   PingPong& operator=( const PingPong& ) = delete;

   /** One question and its answer. @return whether it came whole */
   bool ask();

   pid_t answerer() const { return answerer_; }

private:
   std::vector<char> request_;
   std::vector<char> reply_;
   int fd_ = -1;
   pid_t answerer_ = -1;
};

#endif
