#ifndef HOST_SIMULATION_H
#define HOST_SIMULATION_H

#include "Plugin.h"
#include "TemporaryDirectory.h"
#include "support/HostServices.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

/** A host in simulation: the plug-in loaded, and a directory of its own for the register files. */
class SimulationTest : public Host::Test {
protected:
   SimulationTest() {
      setenv( "SIMULATION_VMID", "1", 1 );
      setenv( "QUILLONLIB_SIMDIR", registerFiles.path().c_str(), 1 );
   }

   /** A topology with one bus that holds devices of these ids. */
   static std::string topology( const std::vector<unsigned>& dids ) {
      std::string devices;
      for ( auto did : dids ) {
         devices += ( devices.empty() ? "" : ", " ) + ( "{ \"did\": " + std::to_string( did ) + " }" );
      }
      return R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 1, "devices": [ )" + devices + " ] } ]";
   }

   /** An argument text; `members` are further members of the object, as JSON. */
   static std::string arguments( unsigned did, const std::string& driver, const std::string& members = "" ) {
      return R"({ "did": )" + std::to_string( did ) + R"(, "driver": ")" + driver +
             R"(", "address": { "address": 72 })" + ( members.empty() ? "" : ", " + members ) + " }";
   }

   void load( const std::vector<unsigned>& dids ) {
      ASSERT_EQ( plugin.system_init( topology( dids ).c_str() ), QL_STATUS_OK );
      Host::traces.clear();
   }

   /** What the register file of this name holds. */
   std::string registers( const std::string& name ) const {
      std::ifstream file( registerFiles / name );
      std::ostringstream text;
      text << file.rdbuf();
      return text.str();
   }

   void setRegisters( const std::string& name, const std::string& text ) const {
      std::fstream( registerFiles / name, std::ios::in | std::ios::out ) << text;
   }

   TemporaryDirectory registerFiles;
   Plugin plugin;
};

#endif
