#ifndef NEAREST_H
#define NEAREST_H

#include <string>
#include <vector>

/** Up to three words that a wrong one was probably meant to be, the nearest first. */
std::vector<std::string> nearest( const std::string& wrong, const std::vector<std::string>& words );

/** "did you mean a or b?", or nothing. */
std::string didYouMean( const std::string& wrong, const std::vector<std::string>& words );

/** The same for JSON keys, in quotation marks. */
std::string didYouMeanKey( const std::string& wrong, const std::vector<std::string>& keys );

#endif
