#ifndef STYLED_LINE_H
#define STYLED_LINE_H

#include <string>
#include <vector>

/** What a screen is like. */
struct Look {
   size_t columns;
   size_t rows;
   bool isUnicode;
   bool isColoured;
};

/** A line of a screen, of texts in styles. */
class StyledLine {
public:
   /** @param style escape sequences of it; nothing for plain text */
   void add( const std::string& text, const std::string& style = "" );
   /** Goes on at a column, unless the line is longer. */
   void moveTo( size_t column );

   bool isEmpty() const { return parts_.empty(); }

   /** The line as a terminal takes it, cut with a mark where the screen ends; what is left of a line that was
    * there before is erased. */
   std::string rendered( const Look& look ) const;

private:
   struct Part {
      std::string text;
      std::string style;
   };

   std::vector<Part> parts_;
   size_t width_ = 0;
};

#endif
