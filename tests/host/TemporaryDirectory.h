#ifndef HOST_TEMPORARY_DIRECTORY_H
#define HOST_TEMPORARY_DIRECTORY_H

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

/** A directory of the test's own, removed with all that is in it. */
class TemporaryDirectory {
public:
   TemporaryDirectory() {
      path_ = ( std::filesystem::temp_directory_path() / "quillon-XXXXXX" ).string();
      if ( !mkdtemp( path_.data() ) ) {
         throw std::runtime_error( "no directory " + path_ );
      }
   }

   ~TemporaryDirectory() {
      std::error_code ignored;
      std::filesystem::remove_all( path_, ignored );
   }

   TemporaryDirectory( const TemporaryDirectory& ) = delete;
   TemporaryDirectory& operator=( const TemporaryDirectory& ) = delete;

   std::string operator/( const std::string& name ) const { return path_ + "/" + name; }

   const std::string& path() const { return path_; }

private:
   std::string path_;
};

#endif
