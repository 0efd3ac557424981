#ifndef WATCH_SCREEN_H
#define WATCH_SCREEN_H

#include "History.h"
#include "Terminal.h"
#include "Watch.h"

#include <deque>

/** Rounds on a terminal, as long as this exists. */
class WatchScreen : public WatchView {
public:
   /** @param interval seconds; a round that is older is marked as that */
   WatchScreen( const std::string& board, double interval, bool isBrief );

   void show( const Round& round ) override;
   /** A line that somebody has written to stderr. */
   void tell( const std::string& line );
   /** What there is to see, in a window that may have another size now. */
   void draw() const;

   /** Gives the terminal back until the process goes on. */
   void suspend();

private:
   std::string ageOfRound() const;
   std::vector<std::string> messages() const;

   const std::string board_;
   const double interval_;
   const bool isBrief_;
   Round round_;
   std::vector<History> histories_;
   std::deque<std::string> told_;
   Terminal terminal_;
};

#endif
