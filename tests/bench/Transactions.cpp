#include "Transactions.h"

#include "Ham/QuillonSmbusHam.h"

#include <cstdlib>
#include <fstream>

namespace {

constexpr size_t frameHead = 4;

Ham::QuillonSmbusHam* sensorHam() {
   HamAddress address {};
   address.address = 0x48;
   address.bus = 3;
   static auto ham =
      static_cast<Ham::QuillonSmbusHam*>( Ham::QuillonSmbusHam::createFromAddress( address, { 0 } ) );
   return ham;
}

} // namespace

void describeBoard( const std::string& folder ) {
   std::ofstream( folder + "/emulator.json" ) << R"({ "chips": [ { "name": "inlet", "part": "pct2075",
      "bus": 3, "address": 72, "set": { "temperature": 24.5 } } ] })";
}

bool readBatch( int reads ) {
   auto ham = sensorHam();
   ham->prepare();
   Ham::Ham::ResponseId last = 0;
   for ( int i = 0; i < reads; ++i ) {
      last = ham->addRead16( 0, 1 );
   }
   return ham->execute() == QL_STATUS_OK && ham->get16( last ) != 0;
}

std::unique_ptr<PingPong> pingPongOfOneRead() {
   if ( !readBatch( 1 ) ) {
      abort();
   }
   return std::make_unique<PingPong>(
      frameHead + sensorHam()->request_.ByteSizeLong(), frameHead + sensorHam()->response_.ByteSizeLong() );
}
