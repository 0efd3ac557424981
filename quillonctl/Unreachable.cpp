#include "Unreachable.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>

namespace {

std::string groupName( gid_t id ) {
   auto group = getgrgid( id );
   return group ? group->gr_name : std::to_string( id );
}

std::string userName( uid_t id ) {
   auto user = getpwuid( id );
   return user ? user->pw_name : std::to_string( id );
}

/** How to get at a socket that somebody else may use. */
std::string wayIn( const struct stat& file ) {
   constexpr gid_t rootsGroup = 0;
   if ( ( file.st_mode & S_IWGRP ) && file.st_gid != rootsGroup ) {
      return fmt::format( "join the group {}, whose members may use it", groupName( file.st_gid ) );
   }
   return fmt::format( "run this as {}, who may use it", userName( file.st_uid ) );
}

} // namespace

std::string unreachable( std::string_view who, const std::string& path, int error, std::string_view remedy ) {
   struct stat file {};

   auto isVisible = stat( path.c_str(), &file ) == 0;
   if ( isVisible && !S_ISSOCK( file.st_mode ) ) {
      return fmt::format( "no {} at {}: this is no socket; {}", who, path, remedy );
   }
   if ( error == EACCES ) {
      return fmt::format( "no permission to use the socket of the {}, {}; {}", who, path,
         isVisible ? wayIn( file ) : "run this as somebody who may enter its folder" );
   }
   return fmt::format( "no {} at {}: {}; {}", who, path, strerror( error ), remedy );
}
