#ifndef STRESS_ATTACKERS_H
#define STRESS_ATTACKERS_H

#include <functional>
#include <random>
#include <span>
#include <string>

/** Somebody who does the server harm, for some milliseconds, over a connection of its own. */
struct Attacker {
   const char* name;
   void ( *attack )( const std::string& socket, std::mt19937& random );
};

/** The bus that attackers use where what they send is understood, and a chip there. */
constexpr uint8_t attackedBus = 9;
constexpr uint8_t attackedChip = 0x10;

extern const std::span<const Attacker> attackers;

#endif
