#ifndef EMU_COMMAND_H
#define EMU_COMMAND_H

#include <string>
#include <vector>

/**
 * Gives a line to the emulated board at its control socket and shows the answer.
 * @param control path of the socket
 * @param words the line; none asks for help
 * @return exit status
 * @throw InputError
 */
int emuCommand( const std::string& control, const std::vector<std::string>& words, bool json );

#endif
