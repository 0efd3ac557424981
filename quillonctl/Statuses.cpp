#include "Statuses.h"

#include <fmt/format.h>

namespace {

struct Row {
   ql_status status;
   const char* name;
   const char* meaning;
};

constexpr Row rows[] = {
   { QL_STATUS_OK, "OK", "success" },
   { QL_STATUS_NOT_PRESENT, "NOT_PRESENT", "there is no module in the cage" },
   { QL_STATUS_DEVICE_ERROR, "DEVICE_ERROR", "the chip answered with an error or an impossible value" },
   { QL_STATUS_INVALID_ARGUMENT, "INVALID_ARGUMENT", "the library can't use what it was given" },
   { QL_STATUS_IO_ERROR, "IO_ERROR", "the way to the hardware failed" },
   { QL_STATUS_NOT_SUPPORTED, "NOT_SUPPORTED", "the platform has no such operation" },
   { QL_STATUS_FAILED, "FAILED", "the operation failed" },
};

} // namespace

StatusWords wordsOf( ql_status status ) {
   for ( auto& row : rows ) {
      if ( row.status == status ) {
         return { row.name, row.meaning };
      }
   }
   auto number = static_cast<unsigned>( status );
   return { "UNKNOWN", fmt::format( "the library gave the unknown status {}", number ) };
}
