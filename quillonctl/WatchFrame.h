#ifndef WATCH_FRAME_H
#define WATCH_FRAME_H

#include "History.h"
#include "StyledLine.h"
#include "Watch.h"

/** What a frame of the screen shows. */
struct WatchContent {
   std::string board;
   std::string pace;
   /** How old the round is where it should have been followed by another: "12 s old". */
   std::string age;
   /** Null until the first round is there. */
   const Round* round;
   /** Of the first measured value of each object. */
   const std::vector<History>& histories;
   /** Sums up the kinds that have a summary. */
   bool isBrief;
   /** Lines for the bottom. */
   std::vector<std::string> messages;
};

/** The value whose history is worth a line: the first one that has a unit. */
std::optional<size_t> historyField( const Kind& kind );

/** A whole screen, to be written over the last one. */
std::string frameOf( const WatchContent& content, const Look& look );

#endif
