#ifndef STATUSES_H
#define STATUSES_H

#include "quillon/ql.h"

#include <string>

/** Words for the statuses of the library. */
struct StatusWords {
   /** As in a table: "IO_ERROR". */
   std::string name;
   /** As in a sentence: "the way to the hardware failed". */
   std::string meaning;
};

StatusWords wordsOf( ql_status status );

#endif
