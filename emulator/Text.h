#ifndef EMULATOR_TEXT_H
#define EMULATOR_TEXT_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** Numbers and names between the board and the people at it. Nothing here throws or depends on a locale. */
namespace Emulator {

/** The decimal number that the whole text is. No blanks, no plus, no nan, no infinity. */
std::optional<double> parseNumber( std::string_view text );
/** The same for 0 to 4294967295, in decimal or as 0x hexadecimal. */
std::optional<uint32_t> parseUnsigned( std::string_view text );
/** A number with "ms" or "s", more than nothing and at most an hour. */
std::optional<std::chrono::nanoseconds> parseDuration( std::string_view text );

/** The shortest text that gives the same number again. */
std::string format( double number );
/** "2s", or "1500ms" for what is not whole seconds. */
std::string format( std::chrono::nanoseconds duration );
std::string join( const std::vector<std::string>& texts, std::string_view separator );
/** "3/0x48". */
std::string formatPlace( uint32_t bus, uint8_t address );

/** The text as it may stand in an answer: escaped where it isn't printable ASCII, cut short, never empty. */
std::string printable( std::string_view text, size_t longest = 40 );
/** "; did you mean inlet?" for the one candidate that the word was probably meant to be, or nothing. */
std::string suggestion( std::string_view word, const std::vector<std::string>& candidates );

} // namespace Emulator

#endif
