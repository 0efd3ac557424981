#ifndef ERRORS_H
#define ERRORS_H

#include "quillon/ql.h"

#include <stdexcept>
#include <string>
#include <vector>

/** Exit statuses of the program. */
enum ExitStatus { exitGood = 0, exitFailure = 1, exitUsage = 2, exitAlert = 3 };

/** The text with a "?" for control characters: keys of documents and words of the library may hold anything.
 */
std::string forTerminal( std::string text );

/** Writes a text to stderr as it is, or not at all where stderr takes nothing. */
void writeToErrors( const std::string& text );

/** Writes a sentence to stderr, behind the name of the program. */
void complain( const std::string& sentence );

/** What the user gave can't be used: a wrong command line or wrong documents. */
class InputError : public std::runtime_error {
public:
   /** @param mistakes at least one */
   explicit InputError( std::vector<std::string> mistakes )
      : std::runtime_error( mistakes.front() ), sentences( std::move( mistakes ) ) {}

   const std::vector<std::string> sentences;
};

/** The library can't be used at all: no plug-in, no server, an init that fails. */
class HostError : public std::runtime_error {
public:
   HostError( ql_status code, const std::string& sentence )
      : std::runtime_error( sentence ), status( code ) {}

   const ql_status status;
};

/** Why something of one object failed. */
struct Failure {
   ql_status status;
   std::string message;
};

#endif
