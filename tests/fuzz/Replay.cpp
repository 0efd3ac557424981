/* Runs a fuzz target once for each file of a corpus. */

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput( const uint8_t* data, size_t size );

int main( int argc, char** argv ) {
   if ( argc != 2 || !std::filesystem::is_directory( argv[1] ) ) {
      std::fprintf( stderr, "usage: %s CORPUS\n", argv[0] );
      return 2;
   }
   std::filesystem::directory_iterator entries( argv[1] );
   std::vector<std::filesystem::path> files( begin( entries ), end( entries ) );
   std::ranges::sort( files );
   for ( auto& file : files ) {
      std::printf( "%s\n", file.filename().c_str() );
      std::fflush( stdout );
      std::ifstream stream( file, std::ios::binary );
      std::string text( std::istreambuf_iterator<char>( stream ), {} );
      LLVMFuzzerTestOneInput( reinterpret_cast<const uint8_t*>( text.data() ), text.size() );
   }
   return files.empty() ? 1 : 0;
}
