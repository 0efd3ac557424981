#ifndef HISTORY_H
#define HISTORY_H

#include <deque>
#include <optional>
#include <string>

/** The course of a value, for a small line of it. */
class History {
public:
   /** @param value none where it could not be read */
   void add( std::optional<double> value );

   /**
    * The last values as blocks of eight heights, the newest at the right; a blank where there is none. The
    * lowest and the highest are those of the values that show, but a tenth of the highest apart at least, so
    * that noise stays flat.
    * @param isUnicode else of characters of ASCII
    */
   std::string line( size_t width, bool isUnicode ) const;

private:
   std::deque<std::optional<double>> values_;
};

#endif
