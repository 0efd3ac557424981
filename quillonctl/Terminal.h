#ifndef TERMINAL_H
#define TERMINAL_H

#include <optional>
#include <string>

#include <termios.h>

/**
 * The terminal of stdout as a whole screen, from construction to destruction: an alternate screen without a
 * cursor, which nobody's typing shows on. What was there before comes back with the end.
 */
class Terminal {
public:
   struct Size {
      size_t columns;
      size_t rows;
   };

   Terminal();
   ~Terminal();
   Terminal( const Terminal& ) = delete;
   Terminal& operator=( const Terminal& ) = delete;

   /** Whether stdout is a terminal that knows escape sequences. */
   static bool isThere();
   /** Whether it shows UTF-8, as far as the environment tells. */
   static bool isUnicode();

   /** 80 x 24 where the terminal does not tell. */
   Size size() const;
   /** Writes a frame, in one piece. */
   void draw( const std::string& frame ) const;

   /** Gives the screen back for a while, and takes it again. */
   void leave();
   void enter();

private:
   /** How stdin was before, if it is a terminal. */
   std::optional<termios> before_;
};

#endif
