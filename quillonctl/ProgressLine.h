#ifndef PROGRESS_LINE_H
#define PROGRESS_LINE_H

#include <atomic>
#include <string>

/**
 * A line on the terminal that tells what is waited for, and goes when there is something to say. One process
 * shows it while another works; the line lies in memory that both see, so that neither writes into the
 * other's text.
 */
class ProgressLine {
public:
   /** Shows a text in place of the last one; nothing once the line was ended. */
   void show( const std::string& text );

   /** Takes the line away for good: whoever works has something to say now. */
   void end();

   /** Takes the line away, when nobody works any more; it may be shown again. */
   void takeAway();

private:
   enum State { Idle, Writing, Ended };

   void erase();

   std::atomic<State> state_ = Idle;
   std::atomic<bool> isVisible_ = false;
};

#endif
