#include "TopologyText.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace {

constexpr int devicesPerBus = 12;
constexpr int bussesPerAccelerator = 8;

std::string array( const std::vector<std::string>& elements ) {
   return "[" + fmt::format( "{}", fmt::join( elements, ", " ) ) + "]";
}

/** One device; the kind follows from its number. */
std::string device( int did ) {
   auto address = 16 + did % 100;
   switch ( did % 6 ) {
   case 0:
      return fmt::format(
         R"({{"did": {0}, "label": "Cage{0}", "driver": "SelvaneXcvr", "address": {{"address": {1}, "addrSize": 1}}, )"
         R"("driverArgs": {{"presenceReg": 16, "presenceBit": 0, "presenceActiveHigh": false, )"
         R"("rxLosReg": 16, "rxLosBit": 1, "rxLosActiveHigh": true, )"
         R"("txFaultReg": 16, "txFaultBit": 2, "txFaultActiveHigh": true, )"
         R"("txDisableReg": 31, "txDisableBit": 4, "txDisableActiveHigh": true}}, )"
         R"("components": [{{"uid": {0}1}}, {{"uid": {0}2, "label": "Module{0}"}}]}})",
         did, address );
   case 1:
      return fmt::format(
         R"({{"did": {0}, "label": "Fan{0}", "driver": "EMC2305", "address": {{"address": {1}, "busTimeout": 2}}, )"
         R"("driverArgs": {{"fanId": 1, "maxRpm": 24000, "registerOffset": 0, "model": "FAN-7002-F"}}}})",
         did, address );
   case 2:
      return fmt::format(
         R"({{"did": {0}, "label": "PortLed{0}", "driver": "SelvanePortLed", "address": {{"address": {1}}}, )"
         R"("driverArgs": {{"ledName": "Ethernet{0}", "ledReg": {1}, "portType": "sfp"}}}})",
         did, address );
   case 3:
      return fmt::format( R"({{"did": {0}, "driver": null, "address": {{"address": {1}}}}})", did, address );
   default:
      return fmt::format(
         R"({{"did": {0}, "label": "Sensor{0}", "driver": "PCT2075", "address": {{"address": {1}}}}})", did,
         address );
   }
}

/** Devices of a bus, taken from the numbers that are left. */
std::string devices( int& next, int end, int count ) {
   std::vector<std::string> texts;
   for ( ; count > 0 && next < end; --count ) {
      texts.push_back( device( next++ ) );
   }
   return array( texts );
}

/** A bus whose last devices sit behind a multiplexer. */
std::string bus( int& next, int end, int id ) {
   auto plain = devices( next, end, devicesPerBus - 4 );
   auto left = devices( next, end, 2 );
   auto right = devices( next, end, 2 );
   return fmt::format(
      R"({{"id": {}, "devices": {}, "muxes": [{{"did": 3, "busses": [{{"id": 0, "devices": {}}}, {{"id": 1, "devices": {}}}]}}]}})",
      id, plain, left, right );
}

} // namespace

std::string topologyText( int count, int pci ) {
   int next = 1;
   auto end = count + 1;
   auto filed = devices( next, end, count / 50 );
   auto onI2c = devices( next, end, count / 20 );
   std::vector<std::string> accelerators;
   for ( int id = 0; next < end; ++id ) {
      std::vector<std::string> busses;
      for ( int number = 0; number < bussesPerAccelerator && next < end; ++number ) {
         busses.push_back( bus( next, end, number ) );
      }
      accelerators.push_back(
         fmt::format( R"({{"id": {0}, "label": "Accelerator{0}", "busses": {1}}})", id, array( busses ) ) );
   }
   return array( {
      fmt::format( R"({{"type": "LinuxFs", "ham": "QuillonSmbus", "devices": {}}})", filed ),
      fmt::format(
         R"({{"type": "I2C", "ham": "QuillonSmbus", "label": "Cpu", "id": 0, "devices": {}}})", onI2c ),
      fmt::format( R"({{"type": "SCD", "ham": "QuillonSmbus", "pci": {}, "accelerators": {}}})", pci,
         array( accelerators ) ),
   } );
}

std::string flatTopologyText( int count ) {
   std::vector<std::string> devices;
   for ( int did = 1; did <= count; ++did ) {
      devices.push_back( fmt::format( R"({{"did": {}}})", did ) );
   }
   return fmt::format(
      R"([{{"type": "I2C", "ham": "QuillonSmbus", "id": 3, "devices": {}}}])", array( devices ) );
}
