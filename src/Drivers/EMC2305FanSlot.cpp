#include "Drivers/EMC2305.h"

#include <cassert>
#include <cstdio>
#include <string>

namespace Drivers {

namespace {

constexpr float defaultProportion = 0.9F;

/** Text that the host evaluates; its own % conversions are left for the host. */
constexpr char identification[] = "FruFactoryIds: QLDevice\n"
                                  "device.group = 'FanTray'\n"
                                  "slotId = %hhu\n"
                                  "device.fanTray = ( 'FanTray%%d' %% slotId, )\n"
                                  "fanTray = device.fanTray\n"
                                  "fanTray.slotId = slotId\n"
                                  "fanTray.modelName = '%s'\n"
                                  "fanTray.serialNum = '%s'\n"
                                  "fan = fanTray.newFan( 'Fan%%d' %% ( slotId ) )\n"
                                  "fan.airflowDirection = '%s'\n"
                                  "fan.maxRpm = %u\n"
                                  "fan.p = %f\n"
                                  "fan.libPath = '%s'\n"
                                  "fan.devArgs = '%s'\n";

} // namespace

Component::LogicalDevice::Slot* EMC2305::newSlot( const DriverArgs& args ) {
   auto fanIdIt = args.driverArgs.find( "fanId" );
   if ( fanIdIt == args.driverArgs.end() ) {
      ql_trace( 0, "Error: expected 'fanId' in driverArgs" );
      return nullptr;
   }
   auto fanId = static_cast<uint8_t>( std::stoi( fanIdIt->second ) );
   ql_trace( 5, "Creating new EMC2305 Slot for Fan id %hhu", fanId );
   assert( fanId >= 1 && fanId <= 5 );
   auto maxRpmIt = args.driverArgs.find( "maxRpm" );
   assert( maxRpmIt != args.driverArgs.end() );
   auto maxRpm = static_cast<uint32_t>( std::stoi( maxRpmIt->second ) );
   auto propIt = args.driverArgs.find( "prop" );
   auto p = propIt == args.driverArgs.end() ? defaultProportion : std::stof( propIt->second );
   auto modelName = args.driverArgs.at( "modelName" );
   auto& serialNum = args.driverArgs.at( "serialNum" );
   auto& airflowDirection = args.driverArgs.at( "airflowDirection" );
   modelName += airflowDirection == "frontToBackAirflow" ? "-F" : "-B";
   return new FanSlot(
      static_cast<uint8_t>( fanId - 1 ), args, p, maxRpm, modelName, serialNum, airflowDirection );
}

EMC2305::FanSlot::FanSlot( uint8_t slotId, const DriverArgs& args, float proportion, uint32_t topRpm,
   const std::string& model, const std::string& serial, const std::string& airflow )
   : Slot( slotId, args.driverArgs, args.jsonText )
   , p( proportion )
   , maxRpm( topRpm )
   , modelName( model )
   , serialNum( serial )
   , airflowDirection( airflow ) {}

ql_status EMC2305::FanSlot::getPresence( char** text ) {
   ql_trace( 5, "FanSlot::getPresence id: %d", id );
   auto length = asprintf( text, identification, static_cast<uint8_t>( id + 1 ), modelName.c_str(),
      serialNum.c_str(), airflowDirection.c_str(), maxRpm, static_cast<double>( p ), "", devArgs );
   return length < 0 ? QL_STATUS_FAILED : QL_STATUS_OK;
}

} // namespace Drivers
