#ifndef SMBUSD_I2C_DEV_WORKER_H
#define SMBUSD_I2C_DEV_WORKER_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

namespace Smbusd::I2cDev {

/** A thread for jobs that block, one at a time. Its end waits for the job that runs. */
class Worker {
public:
   Worker();

   /** Starts a job. The one before must have ended, or be about to: its last act may be to tell so. */
   void run( std::function<void()> job );

private:
   void work( const std::stop_token& stop );

   std::mutex mutex_;
   std::condition_variable_any changed_;
   std::function<void()> job_;
   // The last member: it ends before the others go.
   std::jthread thread_;
};

} // namespace Smbusd::I2cDev

#endif
