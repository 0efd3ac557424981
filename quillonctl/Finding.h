#ifndef FINDING_H
#define FINDING_H

#include <optional>
#include <string>
#include <vector>

/** A place in a text, counted from 1; columns are characters. */
struct Place {
   size_t line;
   size_t column;
};

enum class Severity {
   /** The library would end the process or refuse the object, or it can only be a mistake. */
   Error,
   /** The library takes it, but does something else than what the document seems to say. */
   Warning
};

/** Something wrong with a document. */
struct Finding {
   Severity severity;
   std::string file;
   /** None for a file as a whole; the reason names it then. */
   std::optional<Place> place;
   /** JSON pointer of the value, empty for the root and where there is no value. */
   std::string pointer;
   std::string reason;
   /** What to do about it, as a clause; empty where that is plain or unknown. */
   std::string repair;

   /** "FILE:LINE:COLUMN: /json/pointer: reason; repair" */
   std::string text() const;
   /** The same with "error: " or "warning: " behind the place, as compilers have it. */
   std::string textWithSeverity() const;
};

using Findings = std::vector<Finding>;

/** The word for it. */
std::string wordFor( Severity severity );

bool hasErrors( const Findings& findings );

#endif
