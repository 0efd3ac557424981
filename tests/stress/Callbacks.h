#ifndef STRESS_CALLBACKS_H
#define STRESS_CALLBACKS_H

#include "SwitchBoard.h"

#include <functional>
#include <string>
#include <vector>

/** What a callback gives: its status, and what it has written as a text, empty if it has written nothing. */
struct Outcome {
   ql_status status;
   std::string text;
   bool operator==( const Outcome& ) const = default;
};

std::ostream& operator<<( std::ostream& stream, const Outcome& outcome );

/** "QL_STATUS_OK" and so on. */
std::string nameOf( ql_status status );

/** What a fault does to the transfers of a chip. */
enum class Harm {
   None,
   /** No transfer succeeds. */
   Refused,
   /** Bit 7 of the first byte of each transfer that reads is wrong. */
   Corrupt,
   /** Bit 0 of the last byte of each transfer that reads is wrong. */
   Checksum
};

/** A callback, and what it must give whatever happens to its chip. */
struct Callback {
   std::string name;
   /** As the emulated board calls it; empty for a callback that talks to none. */
   std::string chip;
   std::function<Outcome()> call;
   Outcome good;
   Outcome refused;
   Outcome corrupt;
   Outcome checksum;
   /** It puts back what it has read, so that wrong bytes would stay. */
   bool writesBack = false;
   /** How often it is passed over for once that it is called; for what takes long. */
   int rarity = 1;

   const Outcome& expected( Harm harm ) const;
};

/**
 * Callbacks of every kind that the switch has, on objects that are made here. What they give is worked out by
 * hand from the values in the board's emulator.json.
 *
 * Not among them is what ends the process by contract: an object whose chip fails while it is made, a light
 * setting above 7, and a reprogramming of the PoE controller, whose image the switch supplies. The switch has
 * no power supply that can be asked, and no QSFP cage.
 */
std::vector<Callback> makeCallbacks( SwitchBoard& board );

#endif
