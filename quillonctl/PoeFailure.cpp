#include "Poe.h"

#include <charconv>

namespace Poe {

namespace {

constexpr std::string_view errorCode = "Error: Failed to read PoE chip. Error code: ";

/** The code is shown as a signed byte, with the sign up to 32 bits. */
unsigned codeOf( const std::string& line ) {
   unsigned code = 0;
   std::from_chars( line.data() + errorCode.size(), line.data() + line.size(), code, 16 );
   return code & 0xFF;
}

} // namespace

std::string lastReason() {
   constexpr unsigned noImage = 0xAF;
   auto line = HostServices::lastLine();
   if ( line == "Error: Checksum invalid" ) {
      return "the controller's reply has a wrong checksum";
   }
   if ( !line.starts_with( errorCode ) ) {
      return line;
   }
   auto code = codeOf( line );
   if ( code == 0 ) {
      return "the reply is all zeros; in simulation there is no PoE controller";
   }
   return code == noImage ? "the controller runs no firmware (error code 0xaf)"
                          : fmt::format( "the controller refuses it with the error code {:#04x}", code );
}

Failure failure( std::string_view action, ql_status status ) {
   auto reason = lastReason();
   if ( reason.empty() ) {
      return Calls::failure( action, status );
   }
   return { status, fmt::format( "cannot {}: {}", action, reason ) };
}

Failure unanswered( std::string_view action, ql_status status ) {
   auto failure = Poe::failure( action, status );
   if ( failure.message.ends_with( "no acknowledge" ) ) {
      failure.message += "; a controller in reset answers after quillonctl poe PORT init";
   }
   return failure;
}

} // namespace Poe
