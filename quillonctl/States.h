#ifndef STATES_H
#define STATES_H

#include <string_view>

/** What the words mean that a reading has for its state. */
namespace States {

/** The escape sequence of a state's colour on a terminal; nothing for a plain one. */
const char* colourOf( std::string_view state );

/** Whether the hardware is past a limit or tells of a fault; a failed reading tells neither. */
bool isAlert( std::string_view state );

} // namespace States

#endif
