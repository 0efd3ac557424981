#ifndef WAITING_H
#define WAITING_H

#include "Kind.h"

#include <chrono>
#include <string>
#include <vector>

/** What a command waits for, in words for somebody who looks on. */
class Waiting {
public:
   explicit Waiting( const std::vector<const ObjectEntry*>& objects ) : objects_( objects ) {}

   /**
    * @param object index of the object that the library works on; any other number for none
    * @param step what it waits for, or null
    * @return such as "port1: loading the firmware, 3 of 8 s"; nothing where there is nothing to tell
    */
   std::string text( size_t object, const Step* step );

private:
   using Clock = std::chrono::steady_clock;

   const std::vector<const ObjectEntry*>& objects_;
   /** Since when the library is at the same step. */
   const Step* step_ = nullptr;
   Clock::time_point since_;
};

#endif
