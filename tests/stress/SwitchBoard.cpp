#include "SwitchBoard.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

std::string boardFile( const std::string& name ) {
   std::ifstream stream( SELVANE "/" + name );
   return { std::istreambuf_iterator<char>( stream ), {} };
}

SwitchBoard::SwitchBoard() {
   objects_.Parse( boardFile( "objects.json" ).c_str() );
   if ( plugin_.system_init( boardFile( "topology.json" ).c_str() ) != QL_STATUS_OK ) {
      throw std::runtime_error( "the topology can't be loaded" );
   }
}

ql_temp_sensor* SwitchBoard::sensor( const char* name ) const {
   auto& object = objectOf( name );
   return plugin_.temp_sensor_add(
      argsOf( name ).c_str(), object["alert"].GetFloat(), object["critical"].GetFloat() );
}

ql_slot* SwitchBoard::slot( const char* name ) {
   slotArgs_ = argsOf( name );
   return plugin_.slot_add( slotArgs_.c_str() );
}

const rapidjson::Value& SwitchBoard::objectOf( const char* name ) const {
   for ( auto& object : objects_["objects"].GetArray() ) {
      if ( object["name"] == name ) {
         return object;
      }
   }
   throw std::invalid_argument( name );
}

std::string SwitchBoard::argsOf( const char* name ) const {
   rapidjson::StringBuffer text;
   rapidjson::Writer<rapidjson::StringBuffer> writer( text );
   objectOf( name )["args"].Accept( writer );
   return text.GetString();
}
