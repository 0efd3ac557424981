#ifndef SYSTEM_TEST_H
#define SYSTEM_TEST_H

#include "Process.h"

#include <filesystem>
#include <string>

/**
 * Runs quillonctl with a folder of its own for its simulation files and boards. Unless a test names a board,
 * it is one of four sensors alone.
 */
class SystemTest : public ::testing::Test {
protected:
   SystemTest();
   ~SystemTest() override;

   /** quillonctl with these arguments, to its end. */
   Result run( const Process::Arguments& arguments ) const;
   Result runOnTerminal( const Process::Arguments& arguments ) const;
   /** With stderr on a terminal, which makes "\\r\\n" of a line end. */
   Result runBeforeSomebody( const Process::Arguments& arguments ) const;
   Process start( const Process::Arguments& arguments ) const;

   void write( const std::string& file, const std::string& text ) const;
   std::string read( const std::string& file ) const;

   /** A folder with a topology of places for five sensors, dids 1 to 5, and for other devices; and these
    * objects. */
   std::string boardWith( const std::string& objects ) const;

   /** Changes a register file as another process may, under its lock. */
   void writeRegisters( const std::string& device, const std::string& line ) const;

   std::filesystem::path folder;
   std::filesystem::path simulation;
   Process::Environment environment;
};

/** An object of kind temp_sensor with thresholds 45 and 55. */
std::string sensor( const std::string& name, int did, const std::string& more = "" );

/** An object of another kind, which does with the scripted plug-in what `script` says. */
std::string scriptedObject( const std::string& kind, const std::string& name, const std::string& script );

#endif
