#ifndef EMULATOR_CONTROL_H
#define EMULATOR_CONTROL_H

#include "Board.h"

#include <string>
#include <string_view>

namespace Emulator {

/**
 * Does what a line of the control language says and answers with one line, without its end: "ok", "ok ANSWER"
 * or "error REASON", in printable ASCII. Words are parted by blanks; any bytes may be given.
 *
 * - list: all chips, as "NAME BUS/ADDRESS PART", parted by "; "
 * - list CHIP, get CHIP: all properties, as "temperature=24.5 os=0"
 * - get CHIP.PROPERTY: one value
 * - set CHIP.PROPERTY VALUE
 * - reset CHIP: power-on reset; physical values and faults stay
 * - fault PLACE KIND [DURATION] [N]: a fault on that place from now on
 * - fault PLACE clear: no more faults on this very place
 * - faults: all faults, each as it could be given, parted by "; "
 * - help, help CHIP: these commands; the actions of one chip
 * - CHIP ACTION: what happens to that chip; a chip with the name of a command is meant by its place
 *
 * CHIP is a name or BUS/ADDRESS, such as inlet or 3/0x48. PLACE is a CHIP or the number of a whole bus. KIND
 * is busy, arbitration, nack, corrupt, checksum, or with a DURATION hang or slow: Fault::Kind tells what they
 * do. DURATION is like 500ms or 2s, at most an hour. N is on how many transfers the fault acts; without it,
 * on all until cleared.
 */
std::string control( Board& board, std::string_view line );

} // namespace Emulator

#endif
