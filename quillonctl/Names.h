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

#endif
