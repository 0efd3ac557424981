#ifndef SCRIPT_H
#define SCRIPT_H

#include "quillon/ql.h"

#include <string>

/**
 * What an object of the scripted plug-in does, from its argument text: "driverArgs": { "script": "<word>
 * <number>" }.
 */
struct Script {
   std::string word;
   float number = 0;
};

Script scriptOf( const std::string& args );

/** What all add functions do alike. @return whether there is to be an object */
bool begin( const Script& script );

/** What all callbacks do alike: they fail, throw or end the process as the script says. */
ql_status answer( const Script& script );

#endif
