#ifndef POE_H
#define POE_H

#include "Calls.h"

#include <optional>
#include <string>

/** What the files of the PoE commands share. */
namespace Poe {

/** What is known of every port; commands that tell more have their fields behind these. */
constexpr size_t powerField = 1;
constexpr size_t readingFields = 5;

/** All that a port tells of itself at a glance. @param record null for the fields without values */
Reading read( void* record, const ObjectEntry& object );

/** Whether something is plugged in, or a port does not do what it should. */
bool isWorthARow( const Reading& reading );

/** Counts by state, and the watts of all. */
std::string summary( const std::vector<const Reading*>& readings );
/** What the summary needs: half of the messages, for most ports. */
Reading readForSummary( void* record, const ObjectEntry& object );

/** The row of a port in the table of all. @param arguments "--all" for the limit of an idle port too */
Reading readRow( void* record, const ObjectEntry& object, const Arguments& arguments );
/** The row, and how the two channels are. */
Reading readDetails( void* record, const ObjectEntry& object, const Arguments& arguments );

Reading powerOn( void* record, const ObjectEntry& object, const Arguments& arguments );
Reading powerOff( void* record, const ObjectEntry& object, const Arguments& arguments );
Reading setPse( void* record, const ObjectEntry& object, const Arguments& arguments );
Reading setLegacy( void* record, const ObjectEntry& object, const Arguments& arguments );
Reading setLimit( void* record, const ObjectEntry& object, const Arguments& arguments );
Reading setShutOff( void* record, const ObjectEntry& object, const Arguments& arguments );
Reading init( void* record, const ObjectEntry& object, const Arguments& arguments );
/** A limit in words, if a text is none. */
std::string wantedLimit( const ObjectEntry& object, const std::string& text );

Reading showFirmware( void* record, const ObjectEntry& object, const Arguments& arguments );
Reading updateFirmware( void* record, const ObjectEntry& object, const Arguments& arguments );

/** @param arguments "--raw" for bytes */
Reading report( void* record, const ObjectEntry& object, const Arguments& arguments );

/** A field of the library's report, if the chip gave it. */
std::optional<std::string> reportField( const std::string& report, const std::string& label );
/** The library's report, or nothing. */
std::string reportOf( ql_poe_port* port, bool isRaw );

/** What limits a port. */
struct Limit {
   /** "class", "user" or "none". */
   std::string by;
   /** Watts for each channel of a user's limit. */
   std::optional<double> watts;
};

/** The limit as the chip has it, or nothing if it does not tell. */
std::optional<Limit> limitOf( ql_poe_port* port );

/** What the library has traced of the last call, and what the chip means by its answer. */
std::string lastReason();

/** Why a call failed. @param action what could not be done: "read the power" */
Failure failure( std::string_view action, ql_status status );
/** The same of a port that should have been started before. */
Failure unanswered( std::string_view action, ql_status status );

} // namespace Poe

#endif
