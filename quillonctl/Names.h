#ifndef NAMES_H
#define NAMES_H

#include "Board.h"

#include <string>
#include <vector>

/**
 * The objects of a board that one of the shell patterns matches, all for no pattern, in the board's order.
 * @throw InputError for a pattern that matches nothing, with the nearest names
 */
std::vector<const ObjectEntry*> choose( const Board& board, const std::vector<std::string>& patterns );

/** The names of the objects of a kind, in the board's order. */
std::vector<std::string> namesOf( const Board& board, const Kind& kind );

/** An object of a kind by its name. @throw InputError with the nearest names */
const ObjectEntry& find( const Board& board, const Kind& kind, const std::string& name );

/** The object of a kind that there is one of, also on a board that doesn't ask for it. */
const ObjectEntry& theOnly( const Board& board, const Kind& kind );

/** Up to three words that are near to a wrong one, or else what there is to choose from; as a clause. */
std::string suggestion( const std::string& wrong, const std::vector<std::string>& words );

#endif
