#include "Ham/SimHam.h"

#include <fmt/format.h>

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Ham {

namespace {

/** Characters of a register's field. */
size_t fieldLength( const Utils::ExpectedVal& value ) { return value.isNumber ? 2 * value.size : value.size; }

/** Exactly the digits that a register of so many bytes has. */
std::string digits( uint64_t value, size_t bytes ) {
   auto text = fmt::format( "{:0{}x}", value, 2 * bytes );
   return text.substr( text.size() - 2 * bytes );
}

void lockWhole( int file, int command, short type ) {
   struct flock lock {};

   lock.l_type = type;
   lock.l_whence = SEEK_SET;
   lock.l_pid = getpid();
   fcntl( file, command, &lock );
}

void makeDirectory( const std::string& directory ) {
   auto handle = opendir( directory.c_str() );
   if ( !handle ) {
      mkdir( directory.c_str(), 0755 );
      handle = opendir( directory.c_str() );
   }
   if ( handle ) {
      closedir( handle );
   }
}

} // namespace

void SimHam::createSimFile() {
   assert( !simFileName_.empty() );
   makeDirectory( simulationDirectory() );
   auto file = fopen( simFileName_.c_str(), "w" );
   std::string line;
   for ( auto& [reg, val] : *expected ) {
      auto size = val.size;
      regOffsets.emplace( reg, static_cast<uint32_t>( line.size() ) );
      if ( val.isNumber ) {
         line += digits( val.val, size );
      } else {
         assert( size == val.valStr().length() );
         line += val.valStr();
      }
   }
   simFileExists_ = true;
   simFileSize = line.size();
   if ( file ) {
      line += '\n';
      fwrite( line.data(), 1, line.size(), file );
      fclose( file );
   }
   ql_trace( 5, "Created %s", simFileName_.c_str() );
}

/** Where the current register's field starts, never behind the file's end. */
size_t SimHam::fieldOffset() const { return std::min<size_t>( regOffsets.at( currentReg ), simFileSize ); }

std::string SimHam::readFromFile( size_t size ) {
   assert( simFileExists_ );
   assert( isAddrSimulated() );
   auto& entry = expected->at( currentReg );
   auto stored = std::min( size, fieldLength( entry ) );
   std::string padding( size - stored, entry.isNumber ? 'f' : '\xFF' );

   auto file = open( simFileName_.c_str(), O_RDONLY | O_CLOEXEC );
   lockWhole( file, F_SETLKW, F_RDLCK );
   auto mm = mmap( nullptr, simFileSize, PROT_READ, MAP_PRIVATE, file, 0 );
   assert( mm != MAP_FAILED );
   auto offset = fieldOffset();
   std::string text( static_cast<const char*>( mm ) + offset, std::min( stored, simFileSize - offset ) );
   lockWhole( file, F_SETLK, F_UNLCK );
   close( file );
   // The mapping stays, here and below: each access leaves one behind for the life of the process.

   text += padding;
   ql_trace( 5, "%s - Read %s from register 0x%x", simFileName_.c_str(), text.c_str(), currentReg );
   return text;
}

void SimHam::writeToFile( const std::string& data ) {
   assert( simFileExists_ );
   assert( isAddrSimulated() );
   auto file = open( simFileName_.c_str(), O_RDWR | O_CLOEXEC );
   lockWhole( file, F_SETLKW, F_WRLCK );
   auto mm = mmap( nullptr, simFileSize, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0 );
   assert( mm != MAP_FAILED );
   // Data longer than its field runs on into the next one, but not past the last.
   auto offset = fieldOffset();
   memcpy( static_cast<char*>( mm ) + offset, data.data(), std::min( data.size(), simFileSize - offset ) );
   lockWhole( file, F_SETLK, F_UNLCK );
   close( file );
   ql_trace( 5, "%s - Wrote %s to register 0x%x", simFileName_.c_str(), data.c_str(), currentReg );
}

} // namespace Ham
