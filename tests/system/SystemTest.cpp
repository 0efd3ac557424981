#include "SystemTest.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace fs = std::filesystem;

SystemTest::SystemTest() {
   auto name = ( fs::temp_directory_path() / "quillonctl-XXXXXX" ).string();
   EXPECT_TRUE( mkdtemp( name.data() ) );
   folder = name;
   simulation = folder / "sim";
   environment = { { "QUILLONLIB_SIMDIR", simulation.string() }, { "QUILLON_BOARD", SENSORS },
      { "QUILLON_PLUGIN", {} }, { "QUILLON_SMBUS_SOCKET", {} }, { "SIMULATION_VMID", {} },
      { "NO_COLOR", {} } };
}

SystemTest::~SystemTest() { fs::remove_all( folder ); }

namespace {

Process::Arguments commandOf( Process::Arguments arguments ) {
   arguments.emplace( arguments.begin(), QUILLONCTL );
   return arguments;
}

} // namespace

Result SystemTest::run( const Process::Arguments& arguments ) const { return start( arguments ).wait(); }

Result SystemTest::runOnTerminal( const Process::Arguments& arguments ) const {
   return Process( commandOf( arguments ), environment, Process::Output::Terminal ).wait();
}

Result SystemTest::runBeforeSomebody( const Process::Arguments& arguments ) const {
   return Process( commandOf( arguments ), environment, Process::Output::ErrorTerminal ).wait();
}

Process SystemTest::start( const Process::Arguments& arguments ) const {
   return Process( commandOf( arguments ), environment );
}

void SystemTest::write( const std::string& file, const std::string& text ) const {
   auto path = folder / file;
   fs::create_directories( path.parent_path() );
   std::ofstream( path, std::ios::binary ) << text;
}

std::string SystemTest::read( const std::string& file ) const {
   std::ostringstream text;
   text << std::ifstream( folder / file, std::ios::binary ).rdbuf();
   return text.str();
}

std::string SystemTest::boardWith( const std::string& objects ) const {
   std::string devices = R"({ "did": 9, "label": "CpuCpld", "driver": null, "address": { "address": 48 } })";
   for ( auto did : { 1, 2, 3, 4, 5, 10, 11, 12, 13, 14 } ) {
      devices += fmt::format( ",\n{{ \"did\": {} }}", did );
   }
   write( "bench/topology.json",
      fmt::format( "[ {{ \"type\": \"I2C\", \"id\": 3, \"ham\": \"QuillonSmbus\", \"devices\": [\n{} ] }} ]",
         devices ) );
   write( "bench/objects.json", "{ \"objects\": [\n" + objects + "\n] }" );
   return ( folder / "bench" ).string();
}

void SystemTest::writeRegisters( const std::string& device, const std::string& line ) const {
   auto file = open( ( simulation / device ).c_str(), O_RDWR );
   ASSERT_GE( file, 0 ) << device;

   struct flock lock {};

   lock.l_type = F_WRLCK;
   lock.l_whence = SEEK_SET;
   ASSERT_EQ( fcntl( file, F_SETLKW, &lock ), 0 );
   ASSERT_EQ( pwrite( file, line.data(), line.size(), 0 ), static_cast<ssize_t>( line.size() ) );
   close( file ); // gives the lock back
}

std::string sensor( const std::string& name, int did, const std::string& more ) {
   return fmt::format(
      R"({{ "kind": "temp_sensor", "name": "{0}", "alert": 45, "critical": 55, )"
      R"("args": {{ "did": {1}, "driver": "PCT2075", "address": {{ "address": 72 }}, "name": "{0}"{2} }} }})",
      name, did, more );
}

std::string scriptedObject( const std::string& kind, const std::string& name, const std::string& script ) {
   struct Needs {
      const char* driver;
      const char* driverArgs;
   };

   static const std::map<std::string, Needs> needs = {
      { "fan", { "EMC2305", R"("fanId": 1, "maxRpm": 20000, "registerOffset": 0, )" } },
      { "gpio", { "GpioDriver", R"("register": 5, "bitpos": 0, )" } },
      { "led", { "SelvaneSystemLed", R"("reg": 64, "id": 1, )" } },
      { "poe_port", { "BCM59121", R"("portId": 0, "numPorts": 1, "numAtPorts": 1, )" } },
      { "slot",
         { "EMC2305",
            R"("fanId": 1, "maxRpm": 1, "modelName": "", "serialNum": "", "airflowDirection": "", )" } },
      { "system", { "Dummy", "" } },
      { "xcvr", { "SelvaneXcvr", R"("id": 1, "type": "sfp", "presenceReg": 16, "presenceBit": 0,
            "presenceActiveHigh": false, "rxLosReg": 16, "rxLosBit": 4, "rxLosActiveHigh": true,
            "txFaultReg": 31, "txFaultBit": 0, "txFaultActiveHigh": true,
            "txDisableReg": 31, "txDisableBit": 4, "txDisableActiveHigh": true, )" } },
   };
   static const std::vector<std::string> drivers = { "GpioDriver", "EMC2305", "SelvaneSystemLed", "BCM59121",
      "Dummy", "SelvaneXcvr" };
   auto& [driver, driverArgs] = needs.at( kind );
   // GPIOs are on the CPLD, for other drivers there is a device behind the five places of the sensors.
   auto did = 9 + ( std::find( drivers.begin(), drivers.end(), driver ) - drivers.begin() );
   return fmt::format( R"({{ "kind": "{}", "name": "{}", "args": {{ "did": {}, "driver": "{}", )"
                       R"("address": {{ "address": 48 }}, "driverArgs": {{ {}"script": "{}" }} }} }})",
      kind, name, did, driver, driverArgs, script );
}
