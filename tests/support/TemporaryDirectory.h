#ifndef TEMPORARY_DIRECTORY_H
#define TEMPORARY_DIRECTORY_H

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include <unistd.h>

/** An empty directory, removed with all that is in it by the process that made it. */
class TemporaryDirectory {
public:
   TemporaryDirectory() {
      auto name = ( std::filesystem::temp_directory_path() / "quillon-test-XXXXXX" ).string();
      if ( !mkdtemp( name.data() ) ) {
         abort();
      }
      path_ = name;
   }

   ~TemporaryDirectory() {
      // A child process has a copy of this object, and ends before its parent.
      if ( getpid() == owner_ ) {
         std::error_code ignored;
         std::filesystem::remove_all( path_, ignored );
      }
   }

   TemporaryDirectory( const TemporaryDirectory& ) = delete;
   TemporaryDirectory& operator=( const TemporaryDirectory& ) = delete;

   const std::filesystem::path& path() const { return path_; }

private:
   std::filesystem::path path_;
   pid_t owner_ = getpid();
};

#endif
