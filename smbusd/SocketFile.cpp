#include "SocketFile.h"

#include <fmt/format.h>

#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>

namespace Smbusd {

namespace {

[[noreturn]] void refuse( const std::string& path, const std::string& why ) {
   throw std::runtime_error( fmt::format( "{}: {}", path, why ) );
}

sockaddr_un addressOf( const std::string& path ) {
   sockaddr_un address {};
   address.sun_family = AF_UNIX;
   if ( path.empty() || path.size() >= sizeof( address.sun_path ) ) {
      refuse( path, fmt::format( "a socket's path has 1 to {} characters; choose a shorter one",
                       sizeof( address.sun_path ) - 1 ) );
   }
   path.copy( address.sun_path, path.size() );
   return address;
}

Descriptor makeSocket( const std::string& path ) {
   Descriptor descriptor( socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0 ) );
   if ( !descriptor ) {
      refuse( path, strerror( errno ) );
   }
   return descriptor;
}

/** Lets one server at a time look at what lies in the directory and put its own socket there. */
Descriptor lockDirectory( const std::string& path ) {
   auto directory = std::filesystem::absolute( path ).parent_path();
   Descriptor descriptor( open( directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC ) );
   if ( !descriptor ) {
      auto remedy = errno == EACCES ? "let the server's user write there" : "make it";
      refuse( path, fmt::format( "directory {}: {}; {}, or choose another socket", directory.string(),
                       strerror( errno ), remedy ) );
   }
   flock( descriptor.get(), LOCK_EX );
   return descriptor;
}

void removeStale( const std::string& path, const sockaddr_un& address ) {
   struct stat file {};

   if ( lstat( path.c_str(), &file ) < 0 ) {
      return;
   }
   if ( !S_ISSOCK( file.st_mode ) ) {
      refuse( path, "exists and is no socket; remove it, or choose another socket" );
   }
   auto probe = makeSocket( path );
   auto result = connect( probe.get(), reinterpret_cast<const sockaddr*>( &address ), sizeof( address ) );
   // A server whose queue of connections is full answers EAGAIN.
   if ( result == 0 || errno == EAGAIN ) {
      refuse( path, "already served; stop the other server, or choose another socket" );
   }
   if ( errno != ECONNREFUSED ) {
      refuse( path, strerror( errno ) );
   }
   unlink( path.c_str() );
}

void bindTo( const Descriptor& descriptor, const std::string& path, const sockaddr_un& address ) {
   auto mask = umask( 0117 );
   auto result = bind( descriptor.get(), reinterpret_cast<const sockaddr*>( &address ), sizeof( address ) );
   umask( mask );
   if ( result < 0 || listen( descriptor.get(), SOMAXCONN ) < 0 ) {
      auto remedy = errno == EACCES ? "let the server's user write to the directory, or " : "";
      refuse( path, fmt::format( "{}; {}choose another socket", strerror( errno ), remedy ) );
   }
}

} // namespace

SocketFile::SocketFile( const std::string& path ) : path_( path ), descriptor_( makeSocket( path ) ) {
   auto address = addressOf( path );
   auto lock = lockDirectory( path );
   removeStale( path, address );
   bindTo( descriptor_, path, address );

   struct stat file {};

   lstat( path.c_str(), &file );
   device_ = file.st_dev;
   inode_ = file.st_ino;
}

SocketFile::~SocketFile() {
   struct stat file {};

   if ( lstat( path_.c_str(), &file ) == 0 && file.st_dev == device_ && file.st_ino == inode_ ) {
      unlink( path_.c_str() );
   }
}

} // namespace Smbusd
