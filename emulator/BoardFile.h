#ifndef EMULATOR_BOARD_FILE_H
#define EMULATOR_BOARD_FILE_H

#include "Board.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace Emulator {

/** What is wrong with a board's document: "FILE: place: reason", with no place if it can't be read at all. */
class BoardFileError : public std::runtime_error {
public:
   using std::runtime_error::runtime_error;
};

/** The board of a file such as boards/selvane/emulator.json. Throws BoardFileError. */
Board loadBoard( const std::string& file, Board::Clock clock = Board::machineTime );
/** The same for a text that comes from `file`. */
Board parseBoard( const std::string& file, std::string_view text, Board::Clock clock = Board::machineTime );

} // namespace Emulator

#endif
