#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <cxxabi.h>

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;

namespace {

using Names = std::set<std::string>;

/** What a command writes. */
std::string outputOf( const std::string& command ) {
   std::unique_ptr<FILE, int ( * )( FILE* )> pipe( popen( command.c_str(), "r" ), pclose );
   std::string output;
   std::array<char, 4096> chunk;
   while ( auto length = fread( chunk.data(), 1, chunk.size(), pipe.get() ) ) {
      output.append( chunk.data(), length );
   }
   if ( pclose( pipe.release() ) != 0 ) {
      throw std::runtime_error( command + " failed" );
   }
   return output;
}

struct Symbol {
   /** As nm gives it: "U" for an import, "w" or "v" for a weak one, other letters for definitions. */
   char type;
   std::string name;
};

std::vector<Symbol> symbols() {
   std::istringstream lines( outputOf( NM " --dynamic --without-symbol-versions " QUILLON_PLUGIN ) );
   std::vector<Symbol> all;
   for ( std::string line; std::getline( lines, line ); ) {
      std::istringstream fields( line.substr( line.find_first_not_of( "0123456789abcdef" ) ) );
      Symbol symbol;
      fields >> symbol.type >> symbol.name;
      all.push_back( symbol );
   }
   return all;
}

/** The readable form of a symbol, without the mark of the standard library's ABI. */
std::string demangled( const std::string& name ) {
   int status;
   std::unique_ptr<char, void ( * )( void* )> text(
      abi::__cxa_demangle( name.c_str(), nullptr, nullptr, &status ), free );
   return std::regex_replace( status == 0 ? text.get() : name, std::regex( "\\[abi:cxx11\\]" ), "" );
}

bool isDefined( const Symbol& symbol ) {
   return std::string( "Uvw" ).find( symbol.type ) == std::string::npos;
}

Names exported() {
   Names names;
   for ( auto& symbol : symbols() ) {
      if ( isDefined( symbol ) ) {
         names.insert( demangled( symbol.name ) );
      }
   }
   return names;
}

bool beginsWith( const std::string& text, const std::string& begin ) { return text.rfind( begin, 0 ) == 0; }

/** The values of one kind of entry in the dynamic section, such as "SONAME". */
std::vector<std::string> dynamicEntries( const std::string& kind ) {
   auto section = outputOf( READELF " --dynamic --wide " QUILLON_PLUGIN );
   std::regex entry( "\\(" + kind + "\\).*\\[(.*)\\]" );
   std::vector<std::string> values;
   for ( std::sregex_iterator match( section.begin(), section.end(), entry ), end; match != end; ++match ) {
      values.push_back( ( *match )[1] );
   }
   return values;
}

TEST( Exports, EntryFunctionsAreThoseOfTheList ) {
   Names listed;
   std::ifstream list( EXPORTED_FUNCTIONS );
   for ( std::string line; std::getline( list, line ); ) {
      listed.insert( line );
   }
   ASSERT_FALSE( listed.empty() );

   Names entries;
   for ( auto& symbol : symbols() ) {
      if ( symbol.type == 'T' && beginsWith( symbol.name, "ql_" ) ) {
         entries.insert( symbol.name );
      }
   }
   EXPECT_THAT( entries, testing::ContainerEq( listed ) );
}

TEST( Exports, HostServicesAreWeakImports ) {
   Names weak, other;
   for ( auto& symbol : symbols() ) {
      if ( symbol.name == "ql_trace" || beginsWith( symbol.name, "ql_timer_" ) ) {
         ( symbol.type == 'w' ? weak : other ).insert( symbol.name );
      }
   }
   EXPECT_THAT( weak, ElementsAre( "ql_timer_add", "ql_timer_delete", "ql_timer_set", "ql_trace" ) );
   EXPECT_THAT( other, ElementsAre() );
}

TEST( Exports, SonameIsWhatHostsLoad ) {
   EXPECT_THAT( dynamicEntries( "SONAME" ), ElementsAre( "libQuillonDriversSelvane.so" ) );
}

TEST( Exports, ProcessWideTablesAreVisible ) {
   EXPECT_THAT( exported(),
      IsSupersetOf( { "_qlSock", "resetEvents", "Topology::_topology", "Topology::_topology_index",
         "Topology::_topology_json", "Drivers::drivers", "Ham::hams", "Ham::ipmiHams",
         "Component::DeviceBase::devices", "Component::HardwareDevice::emptyExpectedValues",
         "Utils::isInSimulation", "Component::LogicalDevice::Led::blinkTimer_",
         "Component::LogicalDevice::Led::blinkPeriod_", "Component::LogicalDevice::Led::blinkStatus_",
         "Component::LogicalDevice::Led::notifyList_", "Drivers::EMC2305::values",
         "Drivers::SelvaneXcvr::values", "Drivers::SelvanePortLed::values",
         "Drivers::SelvaneSystemLed::values", "Drivers::PCT2075::values" } ) );
}

TEST( Exports, FunctionsOfTheFrameAreVisible ) {
   EXPECT_THAT( exported(),
      IsSupersetOf( { "quillonLibraryInit(char const*, char const*, int)", "qlSockInit(char const*, int)",
         "Topology::loadTopology(char const*)", "Topology::getNodeByLabel(char const*)",
         "Topology::getDeviceByLabel(char const*)", "Topology::getBusByLabel(char const*)",
         "Topology::findDevice(unsigned int)", "Topology::isDeviceObject(char const*)",
         "Drivers::getRegGpioForDevice(char const*, unsigned int, unsigned int)",
         "Drivers::insertDriverArg(char const*, char**, char const*, char const*)",
         "Drivers::FormatFdl::start()", "Drivers::calcCheckSum(unsigned char const*)",
         "Drivers::getTemperatureVal(unsigned char, unsigned char)", "Drivers::getPdClassStr(unsigned char)",
         "Ham::createHam(Drivers::DriverArgs const&)" } ) );
}

TEST( Exports, LogMessagesLieInTheirSection ) {
   auto sections = outputOf( READELF " --sections --wide " QUILLON_PLUGIN );
   std::smatch size;
   ASSERT_TRUE(
      std::regex_search( sections, size, std::regex( "\\.noctal_logmsg +\\w+ +\\w+ +\\w+ +(\\w+)" ) ) );
   EXPECT_EQ( std::stoul( size[1], nullptr, 16 ), 2 * 40 ) << "two records";
}

TEST( Exports, ClassesAreVisible ) {
   auto names = exported();
   for ( std::string name :
      { "NotImplementedException", "Topology::Node", "Topology::MediumNode", "Topology::Component",
         "Topology::Device", "Topology::Mux", "Topology::Bus", "Topology::Accelerator", "Topology::SCD",
         "Topology::Celestica", "Topology::LinuxFs", "Topology::FbDomFpga", "Topology::I2C",
         "Topology::IOPort", "Topology::PLM", "Topology::SccSpi", "Topology::Topology",
         "Topology::TopologyVisitor", "Topology::SearchDeviceVisitor", "Ham::Ham", "Ham::SimHam",
         "Ham::QuillonSmbusHam", "Ham::SearchVisitor", "Utils::ExpectedVal", "Component::DeviceBase",
         "Component::HardwareDevice", "Component::MultiDevice", "Component::LogicalDevice::TempSensor",
         "Component::LogicalDevice::Fan", "Component::LogicalDevice::Psu", "Component::LogicalDevice::Slot",
         "Component::LogicalDevice::Led", "Component::LogicalDevice::SfpXcvr",
         "Component::LogicalDevice::QsfpXcvr", "Component::LogicalDevice::CmisXcvr",
         "Component::LogicalDevice::Gpio", "Component::LogicalDevice::RegGpio",
         "Component::LogicalDevice::PoePort", "Drivers::Dummy", "Drivers::PCT2075",
         "Drivers::PCT2075::TempSensor", "Drivers::EMC2305", "Drivers::EMC2305::Fan",
         "Drivers::EMC2305::FanSlot", "Drivers::SelvaneXcvr", "Drivers::SelvaneXcvr::SfpXcvr",
         "Drivers::SelvanePortLed", "Drivers::SelvanePortLed::PortLed", "Drivers::SelvaneSystemLed",
         "Drivers::SelvaneSystemLed::StatusLed", "Drivers::SelvaneSystemLed::CloudAndFanLed",
         "Drivers::SelvaneSystemLed::PowerLed", "Drivers::BCM59121", "Drivers::BCM59121::PoePort" } ) {
      EXPECT_THAT( names, Contains( "typeinfo for " + name ) );
   }
}

TEST( Exports, EveryKindsTableIsVisible ) {
   auto names = exported();
   for ( std::string kind :
      { "TempSensor", "Fan", "Psu", "Slot", "Led", "SfpXcvr", "QsfpXcvr", "CmisXcvr", "Gpio", "PoePort" } ) {
      EXPECT_THAT( names, Contains( "Component::LogicalDevice::" + kind + "::ops_" ) );
   }
}

TEST( Exports, NothingBelongsToAnotherLibrary ) {
   // In a mangled name the outermost namespace stands first, whatever the types of results and parameters.
   std::regex ours(
      "ql_.*|_qlSock|resetEvents|_Z18quillonLibraryInit.*|_Z10qlSockInit.*|"
      "(_ZNK?|_ZT[VIS]N?|_ZTh.*_NK?)(12ReloadCauses|23NotImplementedException|8Topology|3Ham|5Utils|7Drivers|"
      "9Component).*" );
   for ( auto& symbol : symbols() ) {
      if ( isDefined( symbol ) ) {
         EXPECT_TRUE( std::regex_match( symbol.name, ours ) ) << demangled( symbol.name );
      }
   }
}

} // namespace
