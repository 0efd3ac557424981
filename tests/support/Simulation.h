#ifndef SIMULATION_H
#define SIMULATION_H

#include "FreshLibrary.h"
#include "Ham/SimHam.h"
#include "TemporaryDirectory.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

/** A process in simulation, with an empty directory for its simulation files. */
class Simulation : public FreshLibrary {
protected:
   Simulation() {
      setenv( "SIMULATION_VMID", "1", 1 );
      setenv( "QUILLONLIB_SIMDIR", directory().c_str(), 1 );
      for ( auto& entry : std::filesystem::directory_iterator( directory() ) ) {
         std::filesystem::remove_all( entry );
      }
   }

   /** One directory for all tests of a program, since the library remembers the first that it gets. */
   static const std::filesystem::path& directory() {
      static TemporaryDirectory directory;
      return directory.path();
   }

   static std::string pathOf( const std::string& file ) { return ( directory() / file ).string(); }

   static std::string contentOf( const std::string& file ) {
      std::ostringstream content;
      content << std::ifstream( pathOf( file ) ).rdbuf();
      return content.str();
   }

   /** What another process does that changes a register: the file stays, its text is replaced. */
   static void rewrite( const std::string& file, const std::string& text ) {
      std::ofstream( pathOf( file ) ) << text;
   }
};

/** A simulated Ham of the driver "Chip", which has the file "Chip". */
class SimulatedChip : public Simulation {
protected:
   using Table = std::map<uint32_t, Utils::ExpectedVal>;

   void expect( const Table& table ) {
      values = table;
      ham.setDriverName( "Chip", "" );
      ham.setExpected( &values );
      Host::traces.clear();
   }

   Table values;
   Ham::SimHam ham;
};

#endif
