#include "TextFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>

namespace Common {

namespace {

TextFileError systemError() { return { errno, strerror( errno ) }; }

} // namespace

std::string readTextFile( const std::string& path ) {
   // Opening a pipe that nobody writes to would wait.
   auto fd = open( path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY );
   if ( fd < 0 ) {
      throw systemError();
   }
   std::unique_ptr<FILE, int ( * )( FILE* )> file( fdopen( fd, "rb" ), fclose );

   struct stat status {};

   if ( fstat( fd, &status ) != 0 ) {
      throw systemError();
   }
   if ( S_ISDIR( status.st_mode ) ) {
      throw TextFileError( EISDIR, strerror( EISDIR ) );
   }
   if ( !S_ISREG( status.st_mode ) ) {
      throw TextFileError( 0, "it is no regular file" );
   }
   std::string text;
   char block[4096];
   while ( auto count = fread( block, 1, sizeof( block ), file.get() ) ) {
      text.append( block, count );
      if ( text.size() > longestTextFile ) {
         throw TextFileError( 0, "it is longer than 16 MiB" );
      }
   }
   if ( ferror( file.get() ) ) {
      throw systemError();
   }
   return text;
}

} // namespace Common
