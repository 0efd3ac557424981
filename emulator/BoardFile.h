#ifndef EMULATOR_BOARD_FILE_H
#define EMULATOR_BOARD_FILE_H

#include "Board.h"

#include <rapidjson/fwd.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

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

/** What a board's document asks for and no board can have. */
struct BoardFailure {
   /** A JSON pointer. */
   std::string place;
   std::string reason;
};

/** All that is wrong in a document that keeps its schema; of the wires only when the chips are right. */
std::vector<BoardFailure> checkBoard( const rapidjson::Document& document );

} // namespace Emulator

#endif
