/* A map of busses to adapters: it gives a map, or words that tell what is wrong. */

#include "smbusd/I2cDev/MapFile.h"
#include "smbusd/Log.h"

#include <cassert>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput( const uint8_t* data, size_t size ) {
   Smbusd::Log::threshold = Smbusd::Log::Level::Error;
   try {
      Smbusd::I2cDev::parseMap(
         "map.json", { reinterpret_cast<const char*>( data ), size }, "/sys/bus/i2c/devices" );
   } catch ( const Smbusd::I2cDev::MapFileError& error ) {
      assert( strncmp( error.what(), "map.json", 8 ) == 0 );
   }
   return 0;
}
