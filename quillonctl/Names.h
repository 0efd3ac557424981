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

/**
 * The objects of a kind that a name or shell pattern is for, in the board's order, one at least.
 * @param others words that might have been meant instead
 * @throw InputError with the nearest names and words
 */
std::vector<const ObjectEntry*> find(
   const Board& board, const Kind& kind, const std::string& pattern, const std::vector<std::string>& others );

/** The object of a kind that there is one of, also on a board that doesn't ask for it. */
const ObjectEntry& theOnly( const Board& board, const Kind& kind );

/** Up to three words that are near to a wrong one, or else what there is to choose from; as a clause. */
std::string suggestion( const std::string& wrong, const std::vector<std::string>& words );

#endif
