#ifndef WATCH_H
#define WATCH_H

#include "Output.h"

#include <chrono>
#include <memory>

/** A round of readings, and what the round before it was. */
struct Round {
   std::chrono::system_clock::time_point time;
   std::vector<StatusLine> lines;
   /** The same objects a round earlier; nothing in the first round. */
   std::vector<Reading> before = {};
};

/** How rounds are shown. */
class WatchView {
public:
   virtual ~WatchView() = default;
   /** Takes a round, which is there until the next one. */
   virtual void show( const Round& round ) = 0;
};

/** What has changed of an object since the round before: keys of its fields, "state" and "error". */
std::vector<std::string> changesOf( const Round& round, size_t index );

/** A document for each object and for each change of one. */
std::unique_ptr<WatchView> watchAsJson( const std::string& board );

/** The same in words, without escape sequences. @param isBrief sums up the kinds that have a summary */
std::unique_ptr<WatchView> watchAsText( bool isBrief );

#endif
