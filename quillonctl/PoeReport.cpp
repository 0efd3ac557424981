#include "Poe.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace Poe {

namespace {

constexpr std::string_view valid = "valid";
/** Between a field and what it is worth; labels and values have single blanks. */
constexpr std::string_view gap = "    ";

std::vector<std::string> linesOf( const std::string& text ) {
   std::vector<std::string> lines;
   std::istringstream stream( text );
   for ( std::string line; std::getline( stream, line ); ) {
      lines.push_back( line );
   }
   return lines;
}

/** What is wrong with a report, or nothing. */
std::string shortfall( const std::string& report, bool isRaw ) {
   // A raw report leaves out the replies that failed, the other one marks their fields.
   constexpr ptrdiff_t replies = 14;
   auto lines = linesOf( report );
   if ( isRaw ) {
      auto count = static_cast<ptrdiff_t>( lines.size() ) - 1;
      return count >= replies ? "" : fmt::format( "{} of {} replies failed", replies - count, replies );
   }
   // Behind the port, the heading and the rule.
   auto begin = lines.begin() + std::min<ptrdiff_t>( 3, static_cast<ptrdiff_t>( lines.size() ) );
   auto fields = std::count_if( begin, lines.end(), []( auto& line ) { return !line.empty(); } );
   auto good = std::count_if( begin, lines.end(), []( auto& line ) { return line.ends_with( valid ); } );
   return good == fields ? "" : fmt::format( "{} of {} fields are not valid", fields - good, fields );
}

} // namespace

std::string reportOf( ql_poe_port* port, bool isRaw ) {
   HostServices::forgetLine();
   char* text = nullptr;
   if ( isRaw && Calls::hasSlot( port->ops, &ql_poe_port_ops::debug_info ) ) {
      port->ops->debug_info( port, &text, true );
   } else if ( !isRaw && Calls::hasSlot( port->ops, &ql_poe_port_ops::get_information ) ) {
      port->ops->get_information( port, &text );
   }
   std::string report = text ? text : "";
   free( text );
   report.erase( report.find_last_not_of( '\n' ) + 1 );
   return report;
}

std::optional<std::string> reportField( const std::string& report, const std::string& label ) {
   for ( auto& line : linesOf( report ) ) {
      if ( line.starts_with( label + ": " ) ) {
         auto begin = label.size() + 2;
         auto end = line.find( gap, begin );
         return line.ends_with( valid ) ? std::optional( line.substr( begin, end - begin ) ) : std::nullopt;
      }
   }
   return {};
}

std::optional<Limit> limitOf( ql_poe_port* port ) {
   auto report = reportOf( port, false );
   auto by = reportField( report, "Violation type" );
   auto watts = reportField( report, "User defined power limit" );
   if ( !by || !watts ) {
      return {};
   }
   // "class based", "user defined"
   Limit limit { by->substr( 0, by->find( ' ' ) ), {} };
   if ( limit.by == "user" ) {
      limit.watts = std::strtod( watts->c_str(), nullptr );
   }
   return limit;
}

Reading report( void* record, const ObjectEntry&, const Arguments& arguments ) {
   auto port = static_cast<ql_poe_port*>( record );
   auto isRaw = !arguments.empty();
   auto text = reportOf( port, isRaw );
   if ( text.empty() ) {
      return Calls::failed( Calls::failure( "read the report", QL_STATUS_NOT_SUPPORTED ) );
   }
   Reading reading { { text }, "ok", {} };
   auto missing = shortfall( text, isRaw );
   if ( !missing.empty() ) {
      auto reason = lastReason();
      reading.failure = Failure { QL_STATUS_IO_ERROR, reason.empty() ? missing : missing + ": " + reason };
   }
   return reading;
}

} // namespace Poe
