#include "Bcm59121PortMap.h"

#include <algorithm>
#include <set>

namespace Emulator {

namespace {

using namespace std::chrono_literals;

constexpr size_t mostGroups = 16;
constexpr auto storeTime = 300ms;

} // namespace

Bcm59121PortMap::Bcm59121PortMap( size_t ports, size_t twoPairPorts )
   : mostPorts_( ports ), isInForce_( twoPairPorts < ports ) {
   size_t channel = 0;
   for ( size_t port = 0; port < ports; ++port ) {
      size_t count = port < twoPairPorts ? 1 : 2;
      // The two channels of a port lie in one group.
      channel += channel % count;
      auto place = [&]( size_t number ) { return static_cast<uint8_t>( number % channelsPerGroup ); };
      rows_.push_back( { count == 2, static_cast<uint8_t>( channel / channelsPerGroup ), place( channel ),
         place( channel + count - 1 ) } );
      channel += count;
   }
}

size_t Bcm59121PortMap::groups() const {
   return std::ranges::max_element( rows_, {}, &Row::group )->group + size_t { 1 };
}

bool Bcm59121PortMap::begin( size_t ports ) {
   abandon();
   if ( ports < 1 || ports > mostPorts_ ) {
      return false;
   }
   given_.resize( ports );
   left_ = storeTime;
   return true;
}

bool Bcm59121PortMap::add( size_t port, const Row& row ) {
   bool hasChannels = row.group < mostGroups && row.primary < channelsPerGroup &&
                      row.alternative < channelsPerGroup &&
                      row.isFourPair == ( row.primary != row.alternative );
   if ( port >= given_.size() || !hasChannels || isComplete_ ) {
      return false;
   }
   given_[port] = row;
   return true;
}

bool Bcm59121PortMap::end() {
   std::set<std::pair<uint8_t, uint8_t>> channels;
   for ( auto& row : given_ ) {
      if ( !row || !channels.emplace( row->group, row->primary ).second ||
           ( row->isFourPair && !channels.emplace( row->group, row->alternative ).second ) ) {
         return false;
      }
   }
   isComplete_ = !given_.empty();
   left_ = isComplete_ ? storeTime : 0s;
   return isComplete_;
}

bool Bcm59121PortMap::putInForce() {
   if ( !isComplete_ ) {
      return false;
   }
   rows_.clear();
   for ( auto& row : given_ ) {
      rows_.push_back( *row );
   }
   abandon();
   isInForce_ = true;
   left_ = storeTime;
   return true;
}

void Bcm59121PortMap::advance( std::chrono::nanoseconds elapsed ) { left_ -= std::min( left_, elapsed ); }

void Bcm59121PortMap::abandon() {
   given_.clear();
   isComplete_ = false;
   left_ = 0s;
}

} // namespace Emulator
