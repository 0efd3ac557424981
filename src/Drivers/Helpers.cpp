#include "Drivers/Helpers.h"

#include "Components/Gpio.h"
#include "Components/HardwareDevice.h"
#include "Drivers/Drivers.h"
#include "Topology.h"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cassert>
#include <cerrno>
#include <cstdio>
#include <numeric>

#include <sys/wait.h>

namespace Drivers {

FormatFdl::FormatFdl( const std::string& text ) : template_( text ) {}

void FormatFdl::start() {
   result_ = template_;
   active_ = true;
}

bool FormatFdl::set( std::string key, std::string value ) {
   ql_trace( 5, "FormatFdl::set( '%s', '%s' )", key.c_str(), value.c_str() );
   assert( active_ && "FormatFdl: Must call start() before set(...)" );
   auto placeholder = "{" + key + "}";
   auto place = result_.find( placeholder );
   if ( place == std::string::npos ) {
      ql_trace( 0, "Error: FormatFdl::set -- invalid key '%s'", placeholder.c_str() );
      assert( 0 && "Invalid key in FormatFdl::set" );
   }
   while ( place != std::string::npos ) {
      result_.replace( place, placeholder.size(), value );
      place = result_.find( placeholder );
   }
   return true;
}

std::string FormatFdl::str() {
   assert( active_ && "FormatFdl: Must call start() before str()" );
   active_ = false;
   return result_;
}

const char* FormatFdl::charPtr() {
   assert( active_ && "FormatFdl: Must call start() before charPtr()" );
   active_ = false;
   return result_.c_str();
}

bool zeroChecksum( std::string& data ) {
   auto sum = std::accumulate( data.begin(), data.end(), 0U,
      []( unsigned total, char byte ) { return total + static_cast<unsigned char>( byte ); } );
   return sum % 256 == 0;
}

std::string trim( const std::string& text ) {
   auto first = text.find_first_not_of( " \t" );
   if ( first == std::string::npos ) {
      return "";
   }
   return text.substr( first, text.find_last_not_of( " \t" ) - first + 1 );
}

Component::HardwareDevice* getHardwareDeviceByLabel( const char* label, std::string driverName ) {
   auto device = Topology::getDeviceByLabel( label );
   if ( !device ) {
      ql_trace( 0, "Unable to locate device %s", label );
   }
   assert( device );
   assert( device->args );
   auto& args = *device->args;
   if ( args.driver.empty() ) {
      args.driver = driverName;
   }
   auto dev = dynamic_cast<Component::HardwareDevice*>( Component::HardwareDevice::create( args, nullptr ) );
   assert( dev );
   return dev;
}

Component::LogicalDevice::Gpio* getRegGpioForDevice(
   Component::HardwareDevice* device, uint32_t reg, uint32_t bit ) {
   DriverArgs args;
   args.driverArgs["register"] = std::to_string( reg );
   args.driverArgs["bitpos"] = std::to_string( bit );
   auto gpio = device->newGpio( args );
   assert( gpio );
   return gpio;
}

Component::LogicalDevice::Gpio* getRegGpioForDevice( const char* label, uint32_t reg, uint32_t bit ) {
   return getRegGpioForDevice( getHardwareDeviceByLabel( label, "Dummy" ), reg, bit );
}

namespace {

/** Exit code of the program `timeout` when the limit ran out. */
constexpr int timeLimitReached = 124;

ql_status statusOfExit( int waitStatus ) {
   if ( !WIFEXITED( waitStatus ) ) {
      return QL_STATUS_FAILED;
   }
   switch ( WEXITSTATUS( waitStatus ) ) {
   case 0:
      return QL_STATUS_OK;
   case timeLimitReached:
      return QL_STATUS_IO_ERROR;
   default:
      return QL_STATUS_FAILED;
   }
}

} // namespace

ql_status runCmd( const char* cmd, std::string& output, unsigned long timeoutSeconds ) {
   output.clear();
   auto line = "timeout " + std::to_string( timeoutSeconds ) + "s " + ( cmd ? cmd : "" );
   // NOLINTNEXTLINE(cert-env33-c): what runs is the caller's own text.
   auto stream = popen( line.c_str(), "r" );
   if ( !stream ) {
      return QL_STATUS_FAILED;
   }
   try {
      char buffer[128];
      while ( !feof( stream ) ) {
         if ( fgets( buffer, sizeof( buffer ), stream ) ) {
            output += buffer;
         } else if ( ferror( stream ) && errno == EINTR ) {
            // A signal of the host, which is none of the command's affair.
            clearerr( stream );
         } else {
            break;
         }
      }
   } catch ( ... ) {
      pclose( stream );
      return QL_STATUS_FAILED;
   }
   return statusOfExit( pclose( stream ) );
}

bool insertDriverArg( const char* json, char** result, const char* key, const char* value ) {
   rapidjson::Document document;
   document.Parse( json );
   if ( document.HasParseError() ) {
      ql_trace( 0, "failed to parse psu devArgs: %s offset %zd",
         rapidjson::GetParseError_En( document.GetParseError() ), document.GetErrorOffset() );
      return false;
   }
   assert( document.HasMember( "driverArgs" ) );
   auto& allocator = document.GetAllocator();
   document["driverArgs"].AddMember(
      rapidjson::Value( key, allocator ), rapidjson::Value( value, allocator ), allocator );

   // The caller frees the buffer's memory, so the buffer itself is never destroyed.
   auto buffer = new rapidjson::StringBuffer;
   rapidjson::Writer<rapidjson::StringBuffer> writer( *buffer );
   document.Accept( writer );
   *result = const_cast<char*>( buffer->GetString() );
   return true;
}

} // namespace Drivers
