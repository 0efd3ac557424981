#include "Board.h"

#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace Emulator {

std::chrono::nanoseconds Board::machineTime() { return std::chrono::steady_clock::now().time_since_epoch(); }

Board::Board( Clock clock ) : clock_( std::move( clock ) ), now_( clock_() ) {}

void Board::advance() {
   auto elapsed = clock_() - now_;
   if ( elapsed <= elapsed.zero() ) {
      return;
   }
   now_ += elapsed;
   for ( auto& place : places_ ) {
      place.chip->advance( elapsed );
   }
   settle();
}

void Board::add( Place place ) {
   if ( find( place.name ) ) {
      throw std::invalid_argument( fmt::format( "name {} is taken", printable( place.name ) ) );
   }
   if ( auto other = at( place.bus, place.address ) ) {
      throw std::invalid_argument(
         fmt::format( "{} is the place of {}", formatPlace( place.bus, place.address ), other->name ) );
   }
   places_.push_back( std::move( place ) );
}

Board::Place* Board::find( const std::string& name ) {
   auto found = std::ranges::find( places_, name, &Place::name );
   return found == places_.end() ? nullptr : &*found;
}

Board::Place& Board::named( std::string_view name ) {
   if ( auto place = find( std::string( name ) ) ) {
      return *place;
   }
   std::vector<std::string> names;
   for ( auto& place : places_ ) {
      names.push_back( place.name );
   }
   throw std::invalid_argument( fmt::format( "no chip {}{}", printable( name ), suggestion( name, names ) ) );
}

Board::Place* Board::at( uint32_t bus, uint8_t address ) {
   auto found = std::ranges::find_if(
      places_, [&]( auto& place ) { return place.bus == bus && place.address == address; } );
   return found == places_.end() ? nullptr : &*found;
}

bool Board::hasBus( uint32_t bus ) const {
   return std::ranges::find( places_, bus, &Place::bus ) != places_.end();
}

Board::Pin Board::pin( const std::string& text ) {
   auto dot = text.find( '.' );
   Pin pin { named( std::string_view( text ).substr( 0, dot ) ).chip.get(), "" };
   if ( dot == text.npos ) {
      throw std::invalid_argument( fmt::format( "{} names no property", printable( text ) ) );
   }
   pin.property = text.substr( dot + 1 );
   pin.chip->get( pin.property );
   return pin;
}

void Board::connect( const Pin& from, const Pin& to ) {
   auto value = from.chip->get( from.property );
   to.chip->set( to.property, value );
   wires_.push_back( { from, to, value } );
}

void Board::settle() {
   for ( auto& [from, to, value] : wires_ ) {
      auto now = from.chip->get( from.property );
      if ( now != value ) {
         value = now;
         try {
            to.chip->set( to.property, value );
         } catch ( const std::invalid_argument& ) {
            // It keeps what it has: nobody is there to be told.
         }
      }
   }
}

namespace {

I2c::Result resultOf( Fault::Kind kind ) {
   switch ( kind ) {
   case Fault::Kind::Busy:
      return I2c::Result::BusBusy;
   case Fault::Kind::Arbitration:
      return I2c::Result::ArbitrationLost;
   case Fault::Kind::Hang:
      return I2c::Result::TimedOut;
   default:
      return I2c::Result::NoAcknowledge;
   }
}

// Two different bits, so that one wrong byte of both kinds is not right again.
constexpr uint8_t corruptBit = 0x80;
constexpr uint8_t checksumBit = 0x01;

/** One transfer with a chip that is there, and the wrong bits on its way back. */
class Exchange {
public:
   Exchange( Board::Place& place, Faults& faults )
      : place_( place ), chip_( *place.chip ), faults_( faults ) {}

   I2c::Result run( std::span<I2c::Message> messages ) {
      auto result = I2c::Result::Ok;
      for ( auto& message : messages ) {
         result = exchange( message );
         if ( result != I2c::Result::Ok ) {
            break;
         }
      }
      chip_.stop();
      if ( result == I2c::Result::Ok ) {
         spoilLast( messages );
      }
      return result;
   }

private:
   I2c::Result exchange( I2c::Message& message ) {
      chip_.start();
      switch ( message.kind ) {
      case I2c::Message::Kind::Write:
         return chip_.write( message.bytes ) ? I2c::Result::Ok : I2c::Result::NoAcknowledge;
      case I2c::Message::Kind::Read:
         read( message, message.length );
         return I2c::Result::Ok;
      case I2c::Message::Kind::ReadBlock:
         break;
      }
      read( message, 1 );
      size_t count = message.bytes[0];
      if ( count < 1 || count > I2c::maxBlock ) {
         message.bytes.clear();
         return I2c::Result::BadBlock;
      }
      read( message, count );
      return I2c::Result::Ok;
   }

   void read( I2c::Message& message, size_t count ) {
      message.bytes.resize( count );
      chip_.read( message.bytes );
      if ( count > 0 && !hasRead_ ) {
         hasRead_ = true;
         if ( faults_.take( Fault::Kind::Corrupt, place_.bus, place_.address ) ) {
            message.bytes.front() ^= corruptBit;
         }
      }
   }

   void spoilLast( std::span<I2c::Message> messages ) {
      auto read = std::find_if( messages.rbegin(), messages.rend(), []( auto& message ) {
         return message.kind != I2c::Message::Kind::Write && !message.bytes.empty();
      } );
      if ( read != messages.rend() && faults_.take( Fault::Kind::Checksum, place_.bus, place_.address ) ) {
         read->bytes.back() ^= checksumBit;
      }
   }

   Board::Place& place_;
   Chip& chip_;
   Faults& faults_;
   bool hasRead_ = false;
};

} // namespace

Transfer Board::transfer( uint32_t bus, uint8_t address, std::span<I2c::Message> messages ) {
   advance();
   for ( auto& message : messages ) {
      if ( message.kind != I2c::Message::Kind::Write ) {
         message.bytes.clear();
      }
   }
   if ( !hasBus( bus ) ) {
      return { I2c::Result::NoBus };
   }
   if ( auto fault = faults.takeFailure( bus, address ) ) {
      return { resultOf( fault->kind ), fault->duration };
   }
   auto place = at( bus, address );
   if ( !place || !place->chip->listens() ) {
      return { I2c::Result::NoAcknowledge };
   }
   Transfer transfer { I2c::Result::Ok };
   if ( auto slow = faults.take( Fault::Kind::Slow, bus, address ) ) {
      transfer.duration = slow->duration;
   }
   transfer.result = Exchange( *place, faults ).run( messages );
   settle();
   return transfer;
}

} // namespace Emulator
