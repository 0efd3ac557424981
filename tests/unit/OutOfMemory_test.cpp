// What the library does when memory runs out, where that is not the end of the process.

#include "Drivers/EMC2305.h"
#include "Drivers/Helpers.h"
#include "HostServices.h"

#include <cstdarg>
#include <cstdlib>
#include <memory>
#include <new>

namespace {

bool isShort = false;
/** What may still be had in one piece then. */
constexpr size_t enough = 256;

class OutOfMemory : public Host::Test {
protected:
   ~OutOfMemory() override { isShort = false; }
};

} // namespace

// In front of the standard library's and the C library's own.
void* operator new( size_t size ) {
   if ( isShort && size > enough ) {
      throw std::bad_alloc();
   }
   return malloc( size );
}

void operator delete( void* memory ) noexcept { free( memory ); }

void operator delete( void* memory, size_t ) noexcept { free( memory ); }

extern "C" int asprintf( char** text, const char* format, ... ) {
   if ( isShort ) {
      return -1;
   }
   va_list arguments;
   va_start( arguments, format );
   auto length = vasprintf( text, format, arguments );
   va_end( arguments );
   return length;
}

TEST_F( OutOfMemory, FailsACommandAndKeepsWhatCameBefore ) {
   std::string output;
   isShort = true;
   auto status = Drivers::runCmd( "sh -c 'echo one; seq 1000'", output, 5 );
   isShort = false;
   EXPECT_EQ( status, QL_STATUS_FAILED );
   EXPECT_TRUE( output.starts_with( "one\n1\n2\n" ) );
   EXPECT_LE( output.size(), enough );
}

TEST_F( OutOfMemory, FailsAnIdentification ) {
   Drivers::DriverArgs args;
   args.jsonText = "{}";
   args.driverArgs = { { "fanId", "2" }, { "maxRpm", "20000" }, { "modelName", "M" }, { "serialNum", "S" },
      { "airflowDirection", "" } };
   Drivers::EMC2305 device;
   std::unique_ptr<Component::LogicalDevice::Slot> slot( device.newSlot( args ) );
   char* text = nullptr;
   isShort = true;
   auto status = slot->getPresence( &text );
   isShort = false;
   EXPECT_EQ( status, QL_STATUS_FAILED );
}
