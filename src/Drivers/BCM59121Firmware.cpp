#include "Drivers/BCM59121.h"

#include "Drivers/BCM59121Messages.h"
#include "Ham/Ham.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace Drivers {

namespace {

constexpr char firmwareDirectory[] = "/usr/share/firmware/";

// Sub-commands of PoeCommand::image.
constexpr uint8_t clearImage = 0xC0;
constexpr uint8_t loadImage = 0x40;

// Waits that the chip needs: seconds after clearing and after writing, and units of 4 ms while it loads.
constexpr unsigned clearSeconds = 4;
constexpr unsigned writtenSeconds = 1;
constexpr uint16_t loadUnits = 2000;

/** Set in byte 9 of the system status while a working image runs. */
constexpr uint8_t imageRuns = 1 << 1;

/** The file begins with its revision; the image follows. */
constexpr size_t revisionSize = 2;

constexpr size_t revisionTextSize = 10;

/** Revision of a firmware image. Its bytes are shown signed, so one from 0x80 up fills eight digits. */
struct Revision {
   int8_t first;
   int8_t second;

   bool operator==( const Revision& ) const = default;
};

Revision revisionOf( const std::string& sysStatus ) {
   return { static_cast<int8_t>( byteAt( sysStatus, 7 ) ), static_cast<int8_t>( byteAt( sysStatus, 10 ) ) };
}

std::array<unsigned, 2> shown( const Revision& revision ) {
   return { static_cast<unsigned>( revision.first ), static_cast<unsigned>( revision.second ) };
}

void print( const Revision& revision, char* text ) {
   auto [first, second] = shown( revision );
   snprintf( text, revisionTextSize, "0x%02x.%02x", first, second );
}

void trace( const char* what, const Revision& revision ) {
   auto [first, second] = shown( revision );
   ql_trace( 0, "%s firmware revision 0x%02x.%02x", what, first, second );
}

std::string readFirmware( const std::string& path ) {
   std::ifstream file( path, std::ios::binary );
   // A directory opens, and has a size: only reading tells.
   file.peek();
   std::string content;
   if ( !file.bad() ) {
      file.seekg( 0, std::ios::end );
      content.resize( file ? static_cast<size_t>( file.tellg() ) : 0 );
      file.seekg( 0, std::ios::beg );
      file.read( content.data(), static_cast<std::streamsize>( content.size() ) );
   }
   if ( !file ) {
      ql_trace( 0, "Unable to read PSE firmware file: %s", path.c_str() );
      assert( 0 );
   }
   return content;
}

/** The image as the chip takes it: blocks of one size, the last filled up with zeros. */
std::vector<std::string> blocksOf( const std::string& file, uint8_t downloadSize ) {
   // One byte of each download is the register number.
   auto block = static_cast<uint8_t>( downloadSize - 1 );
   std::vector<std::string> blocks;
   for ( size_t offset = revisionSize; offset < file.size(); offset += block ) {
      assert( block > 0 );
      blocks.push_back( file.substr( offset, block ) );
      blocks.back().resize( block );
   }
   return blocks;
}

} // namespace

ql_status BCM59121::reprogramFirmware( PoePort* port, bool skip, char** revision ) {
   ql_trace(
      6, "%s", "ql_status Drivers::BCM59121::reprogramFirmware(Drivers::BCM59121::PoePort*, bool, char**)" );
   *revision = static_cast<char*>( malloc( revisionTextSize ) );
   if ( !*revision ) {
      ql_trace( 0, "Error: Failed to allocate memory for firmware revision" );
      return QL_STATUS_DEVICE_ERROR;
   }
   auto cache = copyCache( 0 );
   auto query = [&] {
      return queryPort( port->id, PoeCommand::getSystemStatus, cache.sysStatus, cache.sysStatusTime );
   };
   auto result = query();
   auto current = revisionOf( cache.sysStatus );
   trace( "Current", current );
   print( current, *revision );
   if ( skip ) {
      ql_trace( 0, "Skipping PoE firmware reprogram." );
      return result;
   }
   if ( firmwarePath.empty() ) {
      ql_trace( 0, "PoE firmware not found." );
      return QL_STATUS_INVALID_ARGUMENT;
   }
   auto file = readFirmware( firmwareDirectory + firmwarePath );
   Revision wanted = { static_cast<int8_t>( byteAt( file, 0 ) ), static_cast<int8_t>( byteAt( file, 1 ) ) };
   if ( wanted == current ) {
      ql_trace( 0, "PoE firmware is up to date." );
      return result;
   }

   auto blocks = blocksOf( file, firmwareDownloadSize );
   ql_trace( 0, "Clearing current image" );
   result = std::max( result, config( { PoeCommand::image, clearImage }, 3 ) );
   waitSeconds( clearSeconds );
   ql_trace( 0, "Writing firmware" );
   for ( auto& block : blocks ) {
      ham->write( PoeCommand::image, block.data(), block.size(), false, 1 );
   }
   waitSeconds( writtenSeconds );
   ql_trace( 0, "Loading firmware" );
   result = std::max( result, config( { PoeCommand::image, loadImage }, loadUnits, false ) );
   auto before = cache.sysStatus;
   if ( auto status = query() ) {
      cache.sysStatus = before;
      result = std::max( result, status );
   }

   auto loaded = revisionOf( cache.sysStatus );
   print( loaded, *revision );
   if ( !( byteAt( cache.sysStatus, 9 ) & imageRuns ) ) {
      ql_trace( 0, "Failed to reprogram firmware" );
      return std::max( result, QL_STATUS_DEVICE_ERROR );
   }
   trace( "New", loaded );
   globalConfigDone = false;
   return result;
}

} // namespace Drivers
