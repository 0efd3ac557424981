#include "Drivers/BCM59121Reports.h"

#include "Drivers/BCM59121.h"
#include "Drivers/BCM59121Messages.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace Drivers {

namespace {

constexpr int fieldWidth = 50;
constexpr int statusWidth = 14;

/** One reply of the report. */
struct ReportRow {
   uint8_t cmd;
   /** Asked of the port's chip group, not of the port. */
   bool ofGroup;
   ReportFormatter format;
};

constexpr ReportRow reportRows[] = {
   { PoeCommand::getSystemStatus, false, getSysStatusStr },
   { PoeCommand::getPortStatus, false, getPortStatusStr },
   { PoeCommand::getPortStatistics, false, getPortStatStr },
   { PoeCommand::getSystemPower, false, getSysPowerStr },
   { PoeCommand::getPortConfig, false, getPortConfigStr },
   { PoeCommand::getPortConfigExt, false, getPortConfigExtStr },
   { PoeCommand::getPowerManagement, false, getSysPowerManagementStr },
   { PoeCommand::getSystemConfig, false, getSysConfigStr },
   { PoeCommand::getChipStatus, true, getCrcStatusStr },
   { PoeCommand::getMpssMask, false, getPortMpssStr },
   { PoeCommand::getMeasurement, false, getPortMeasurementStr },
   { PoeCommand::getPerPairPower, false, getPortPerPairPowerStr },
   { PoeCommand::getPerPairStatus, false, getPortPerPairStatusStr },
   { PoeCommand::getCrcConfig, true, getCrcConfigQueryStr },
};

/** Room behind the first `used` bytes of a buffer. */
size_t room( size_t size, size_t used ) { return used < size ? size - used : 0; }

/** Where to go on in a report; its end when the lines so far have filled it. */
char* tail( char* report, size_t size, size_t used ) { return report + std::min( size, used ); }

/** Appends to a report as far as there is room. @return the length in full */
size_t append( char* report, size_t size, size_t used, const std::string& text ) {
   return static_cast<size_t>(
      snprintf( tail( report, size, used ), room( size, used ), "%s", text.c_str() ) );
}

const char* trust( ql_status status ) {
   switch ( status ) {
   case QL_STATUS_OK:
      return "valid";
   case QL_STATUS_IO_ERROR:
      return "checksum error";
   default:
      return "hardware error";
   }
}

char* newReport( size_t size, char** text ) {
   *text = static_cast<char*>( malloc( size ) );
   if ( !*text ) {
      ql_trace( 0, "Error: Failed to allocate memory for debug info" );
   }
   return *text;
}

} // namespace

size_t formatDebugStr(
   char* dst, size_t used, ql_status status, std::string& reply, std::vector<std::string>& fields ) {
   size_t added = 0;
   for ( auto& field : fields ) {
      if ( used + added >= reportSize ) {
         break;
      }
      if ( reply.empty() ) {
         field += "n/a";
      }
      added += static_cast<size_t>( snprintf( dst + added, reportSize - used - added, "%-*s    %s\n",
         fieldWidth, field.c_str(), reply.empty() ? "SMBus error" : trust( status ) ) );
   }
   return added;
}

size_t BCM59121::getInformation( PoePort* port, char** text ) {
   ql_trace( 6, "%s", "size_t Drivers::BCM59121::getInformation(Drivers::BCM59121::PoePort*, char**)" );
   auto report = newReport( reportSize, text );
   if ( !report ) {
      return 0;
   }
   auto heading =
      fmt::format( "{:<{}}    {:<{}}", "Port Information", fieldWidth, "Data Status", statusWidth );
   auto rule = fmt::format( "{:-<{}}    {:-<{}}", "", fieldWidth, "", statusWidth );
   size_t used = append( report, reportSize, 0, fmt::format( "Port {}\n", port->id + 1 ) );
   used += append( report, reportSize, used, heading + "\n" );
   used += append( report, reportSize, used, rule + "\n" );
   auto group = portChipIndex( port->id );
   std::string reply;
   for ( auto& row : reportRows ) {
      auto status = queryDebug( row.ofGroup ? group : port->id, row.cmd, reply );
      used += row.format( status, reply, tail( report, reportSize, used ), used );
   }
   if ( used < reportSize ) {
      used += append( report, reportSize, used, "\n" );
   }
   return used;
}

size_t BCM59121::getInformationRaw( PoePort* port, char** text ) {
   ql_trace( 6, "%s", "size_t Drivers::BCM59121::getInformationRaw(Drivers::BCM59121::PoePort*, char**)" );
   auto report = newReport( rawReportSize, text );
   if ( !report ) {
      return 0;
   }
   size_t used = append( report, rawReportSize, 0, fmt::format( "Port {}\n", port->id + 1 ) );
   auto group = portChipIndex( port->id );
   for ( auto& row : reportRows ) {
      used += getDebugStrRaw(
         row.ofGroup ? group : port->id, report + used, room( rawReportSize, used ), row.cmd );
   }
   return used;
}

size_t BCM59121::getDebugStrRaw( uint8_t portOrChip, char* dst, size_t size, uint8_t cmd ) {
   std::string reply;
   if ( queryDebug( portOrChip, cmd, reply ) != QL_STATUS_OK ) {
      return 0;
   }
   auto b = [&reply]( size_t offset ) { return byteAt( reply, offset ); };
   return static_cast<size_t>(
      snprintf( dst, size, "%02x %02x %02x %02x %02x %02x %02x %02x %02x %02x %02x %02x\n", b( 0 ), b( 1 ),
         b( 2 ), b( 3 ), b( 4 ), b( 5 ), b( 6 ), b( 7 ), b( 8 ), b( 9 ), b( 10 ), b( 11 ) ) );
}

} // namespace Drivers
