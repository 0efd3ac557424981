#ifndef BOARD_H
#define BOARD_H

#include "Finding.h"
#include "Kind.h"

#include <string>
#include <vector>

/** The two documents of a board, checked. */
struct Board {
   /** Name of its folder. */
   std::string name;
   /** Text of topology.json. */
   std::string topology;
   /** The device that is the platform's CPLD. */
   uint32_t cpld;
   /** In the order of objects.json. */
   std::vector<ObjectEntry> objects;

   /** Reads and checks topology.json and objects.json. @throw InputError with all errors */
   static Board load( const std::string& folder );
};

/** The error that a board's folder is none, if so. */
Findings missingFolder( const std::string& folder );

/** The name of a board that may not be there: the last part of its folder's path. */
std::string boardName( const std::string& folder );

#endif
