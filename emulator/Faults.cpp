#include "Faults.h"

namespace Emulator {

void Faults::put( const FaultPlace& place, const Fault& fault ) {
   places_[place].insert_or_assign( fault.kind, fault );
}

void Faults::clear( const FaultPlace& place ) { places_.erase( place ); }

std::optional<Fault> Faults::takeFailure( uint32_t bus, uint8_t address ) {
   if ( places_.empty() ) {
      return std::nullopt;
   }
   for ( FaultPlace place : { FaultPlace { bus }, FaultPlace { bus, address } } ) {
      for ( auto kind :
         { Fault::Kind::Busy, Fault::Kind::Arbitration, Fault::Kind::Nack, Fault::Kind::Hang } ) {
         if ( auto fault = use( place, kind ) ) {
            return fault;
         }
      }
   }
   return std::nullopt;
}

std::optional<Fault> Faults::take( Fault::Kind kind, uint32_t bus, uint8_t address ) {
   if ( places_.empty() ) {
      return std::nullopt;
   }
   auto fault = use( { bus }, kind );
   return fault ? fault : use( { bus, address }, kind );
}

std::optional<Fault> Faults::use( const FaultPlace& place, Fault::Kind kind ) {
   auto kinds = places_.find( place );
   if ( kinds == places_.end() ) {
      return std::nullopt;
   }
   auto found = kinds->second.find( kind );
   if ( found == kinds->second.end() ) {
      return std::nullopt;
   }
   auto& left = found->second.transfers;
   if ( left && --*left == 0 ) {
      auto fault = found->second;
      kinds->second.erase( found );
      if ( kinds->second.empty() ) {
         places_.erase( kinds );
      }
      return fault;
   }
   return found->second;
}

} // namespace Emulator
