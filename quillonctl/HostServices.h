#ifndef HOST_SERVICES_H
#define HOST_SERVICES_H

#include <functional>
#include <string>

/** What the program does with the trace lines that the library gives it. */
namespace HostServices {

/** The last line that tells of a failure or of what was going on before one. */
struct LastLine {
   char text[512];
};

/** Shows the lines up to a level on stderr. */
void showTraces( int level );

/** Keeps the last line in memory of the caller's choice, which must outlive the library's use. */
void recordIn( LastLine& line );

/** Tells a function of each line, of whatever level, which it may do something about at once. */
void listen( std::function<void( const std::string& line )> listener );

/** The last line since the last call of forgetLine, or nothing. */
std::string lastLine();
void forgetLine();

/** Why the library's last poll of transceivers failed that did fail, or nothing. */
std::string lastPollFailure();

} // namespace HostServices

#endif
