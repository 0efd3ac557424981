#ifndef BENCH_TEMPORARY_FOLDER_H
#define BENCH_TEMPORARY_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <string>

/** A folder that goes away with this object. */
class TemporaryFolder {
public:
   TemporaryFolder() : path_( ( std::filesystem::temp_directory_path() / "quillon-bench-XXXXXX" ).string() ) {
      if ( !mkdtemp( path_.data() ) ) {
         abort();
      }
   }

   ~TemporaryFolder() { std::filesystem::remove_all( path_ ); }

   TemporaryFolder( const TemporaryFolder& ) = delete;
   TemporaryFolder& operator=( const TemporaryFolder& ) = delete;

   const std::string& path() const { return path_; }

private:
   std::string path_;
};

#endif
