#ifndef LIBRARY_TRIAL_H
#define LIBRARY_TRIAL_H

#include "Plugin.h"

#include <rapidjson/document.h>

#include <string>

enum class Access {
   /** Through the server, in whose place everything is acknowledged. */
   Server,
   Simulation
};

/**
 * What the library makes of a board's documents: in a process of its own it gets the topology, and is asked
 * for every object.
 * @param objects the root of objects.json; of what no host could make a call, no call is made
 * @param registerFiles folder for the files of the simulation
 * @return an empty text when it takes all of it; otherwise what it did: "died: ...", "threw: ...", "null for
 * ..."
 */
std::string tryOut( const Plugin& plugin, const std::string& topology, const rapidjson::Value& objects,
   Access access, const std::string& registerFiles );

#endif
