#include "LibraryTrial.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using rapidjson::Value;

namespace {

std::string textAt( const Value& object, const char* key ) {
   auto found = object.FindMember( key );
   return found != object.MemberEnd() && found->value.IsString() ? found->value.GetString() : "";
}

float numberAt( const Value& object, const char* key ) {
   auto found = object.FindMember( key );
   return found != object.MemberEnd() && found->value.IsNumber()
             ? static_cast<float>( found->value.GetDouble() )
             : 0;
}

std::string argumentsOf( const Value& object ) {
   auto args = object.FindMember( "args" );
   if ( args == object.MemberEnd() ) {
      return "{}";
   }
   rapidjson::StringBuffer text;
   rapidjson::Writer<rapidjson::StringBuffer> writer( text );
   args->value.Accept( writer );
   return text.GetString();
}

/** In the process of the trial. */
class Trial {
public:
   explicit Trial( const Plugin& plugin ) : plugin_( plugin ) {}

   std::string run( const std::string& topology, const Value& root ) {
      try {
         if ( plugin_.system_init( topology.c_str() ) != QL_STATUS_OK ) {
            return "init failed";
         }
         auto objects = root.IsObject() ? root.FindMember( "objects" ) : Value::ConstMemberIterator {};
         if ( !root.IsObject() || objects == root.MemberEnd() || !objects->value.IsArray() ) {
            return "";
         }
         for ( auto& object : objects->value.GetArray() ) {
            if ( object.IsObject() && !add( object ) ) {
               return "null for " + argumentsOf( object );
            }
         }
      } catch ( const std::exception& exception ) {
         return std::string( "threw: " ) + exception.what();
      }
      return "";
   }

private:
   bool add( const Value& object ) {
      // The library may go on reading it.
      auto& args = texts_.emplace_back( argumentsOf( object ) );
      auto kind = textAt( object, "kind" );
      if ( kind == "temp_sensor" ) {
         return plugin_.temp_sensor_add(
            args.c_str(), numberAt( object, "alert" ), numberAt( object, "critical" ) );
      }
      // clang-format off
      return kind == "system"   ? plugin_.system_add( args.c_str() ) != nullptr
           : kind == "fan"      ? plugin_.fan_add( args.c_str() ) != nullptr
           : kind == "psu"      ? plugin_.psu_add( args.c_str() ) != nullptr
           : kind == "led"      ? plugin_.led_add( args.c_str() ) != nullptr
           : kind == "slot"     ? plugin_.slot_add( args.c_str() ) != nullptr
           : kind == "xcvr"     ? plugin_.xcvr_add( args.c_str() ) != nullptr
           : kind == "gpio"     ? plugin_.gpio_add( args.c_str() ) != nullptr
           : kind == "poe_port" ? plugin_.poe_port_add( args.c_str() ) != nullptr
                                : true;
      // clang-format on
   }

   const Plugin& plugin_;
   std::list<std::string> texts_;
};

void prepare( Access access, const std::string& registerFiles ) {
   rlimit none { 0, 0 };
   setrlimit( RLIMIT_CORE, &none );
   setenv( "QUILLONLIB_SIMDIR", registerFiles.c_str(), 1 );
   if ( access == Access::Simulation ) {
      setenv( "SIMULATION_VMID", "1", 1 );
   } else {
      unsetenv( "SIMULATION_VMID" );
   }
}

std::string readAll( int fd ) {
   std::string text;
   char part[512];
   ssize_t count = 0;
   while ( ( count = read( fd, part, sizeof( part ) ) ) > 0 ) {
      text.append( part, static_cast<size_t>( count ) );
   }
   return text;
}

} // namespace

std::string tryOut( const Plugin& plugin, const std::string& topology, const Value& objects, Access access,
   const std::string& registerFiles ) {
   int ends[2];
   if ( pipe( ends ) != 0 ) {
      throw std::runtime_error( strerror( errno ) );
   }
   auto child = fork();
   if ( child == 0 ) {
      // What an assertion says on its way out, and what the trial itself says.
      dup2( ends[1], STDERR_FILENO );
      prepare( access, registerFiles );
      auto outcome = Trial( plugin ).run( topology, objects );
      fputs( outcome.c_str(), stderr );
      _exit( 0 );
   }
   close( ends[1] );
   auto said = readAll( ends[0] );
   close( ends[0] );
   int status = 0;
   waitpid( child, &status, 0 );
   auto isGood = WIFEXITED( status ) && WEXITSTATUS( status ) == 0;
   return isGood ? said : "died: " + said;
}
