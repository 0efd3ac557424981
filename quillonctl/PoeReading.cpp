#include "Poe.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <cstdlib>

namespace Poe {

namespace {

struct Word {
   ql_poe_port_state state;
   std::string_view text;
};

/** In the order of the summary. */
constexpr Word words[] = {
   { QL_POE_PORT_POWERED, "powered" },
   { QL_POE_PORT_REQUESTING, "requesting" },
   { QL_POE_PORT_REQUESTING_DUAL, "requesting dual" },
   { QL_POE_PORT_OVERLOAD, "overload" },
   { QL_POE_PORT_FAULT, "fault" },
   { QL_POE_PORT_DETECTING, "detecting" },
   { QL_POE_PORT_DISABLED, "disabled" },
};

constexpr std::string_view failedWord = "failed";

std::string_view wordOf( ql_poe_port_state state ) {
   auto word = std::find_if(
      std::begin( words ), std::end( words ), [=]( auto& candidate ) { return candidate.state == state; } );
   return word == std::end( words ) ? "unknown" : word->text;
}

bool isIdle( ql_poe_port_state state ) {
   return state == QL_POE_PORT_DISABLED || state == QL_POE_PORT_DETECTING;
}

struct PowerState {
   ql_poe_port_state port = QL_POE_PORT_DISABLED;
   ql_poe_port_state primary = QL_POE_PORT_DISABLED;
   ql_poe_port_state alternative = QL_POE_PORT_DISABLED;
   ql_poe_port_pair_state pairs = QL_POE_PAIR_STATE_0;

   /** A valid device shows on its channel also while the port denies it power. */
   bool hasDevice() const { return !isIdle( port ) || !isIdle( primary ) || !isIdle( alternative ); }
};

/** The decimal number that the library has narrowed, without the noise of widening it. */
double widened( float number ) { return std::strtod( fmt::format( "{}", number ).c_str(), nullptr ); }

/** Reads a port value by value, until something fails. */
class Reader {
public:
   explicit Reader( ql_poe_port* port ) : port_( port ) { reading.state = "ok"; }

   template <typename Slot, typename... Outputs>
   bool get( std::string_view action, Slot slot, Outputs*... outputs ) {
      if ( !reading.failure ) {
         auto status = Calls::call( port_->ops, slot, port_, outputs... );
         if ( status != QL_STATUS_OK ) {
            reading.failure = unanswered( action, status );
         }
      }
      return !reading.failure;
   }

   void put( size_t field, Value value ) {
      reading.values.resize( std::max( reading.values.size(), field + 1 ) );
      reading.values[field] = std::move( value );
   }

   PowerState readState() {
      PowerState state;
      if ( get( "read the state", &ql_poe_port_ops::get_power_state, &state.port, &state.primary,
              &state.alternative, &state.pairs ) ) {
         reading.state = wordOf( state.port );
      }
      return state;
   }

   /** The chip has a class for a port without a device too, 0. */
   void readClass( bool hasDevice ) {
      ql_poe_device_class pdClass {}, primary {}, alternative {};
      if ( get( "read the class", &ql_poe_port_ops::get_device_class, &pdClass, &primary, &alternative ) &&
           hasDevice && pdClass < QL_POE_CLASS_INVALID ) {
         put( 0, static_cast<double>( pdClass ) );
      }
   }

   void readPower() {
      float total = 0, primary = 0, alternative = 0;
      if ( get( "read the power", &ql_poe_port_ops::get_power, &total, &primary, &alternative ) ) {
         put( powerField, widened( total ) );
      }
   }

   void readMeasurements() {
      struct Measurement {
         std::string_view action;
         ql_status ( *ql_poe_port_ops::*get )( ql_poe_port*, float* );
      };

      constexpr Measurement measurements[] = {
         { "read the voltage", &ql_poe_port_ops::get_voltage },
         { "read the current", &ql_poe_port_ops::get_current },
         { "read the temperature", &ql_poe_port_ops::get_temperature },
      };
      auto field = powerField + 1;
      for ( auto& measurement : measurements ) {
         float value = 0;
         if ( get( measurement.action, measurement.get, &value ) ) {
            put( field, widened( value ) );
         }
         ++field;
      }
   }

   void readLimit() {
      if ( reading.failure ) {
         return;
      }
      auto limit = limitOf( port_ );
      if ( !limit ) {
         reading.failure = unanswered( "read the limit", QL_STATUS_IO_ERROR );
         return;
      }
      put( readingFields, limit->by );
      put( readingFields + 1, limit->watts ? Value( *limit->watts ) : Value() );
   }

   Reading reading;

private:
   ql_poe_port* port_;
};

/** What stands in a row, and the state of the channels. */
PowerState readGlance( Reader& reader ) {
   auto state = reader.readState();
   reader.readClass( state.hasDevice() );
   reader.readPower();
   reader.readMeasurements();
   return state;
}

} // namespace

Reading read( void* record, const ObjectEntry& ) {
   if ( !record ) {
      return { std::vector<Value>( readingFields ), failedWord, {} };
   }
   Reader reader( static_cast<ql_poe_port*>( record ) );
   reader.put( readingFields - 1, {} );
   readGlance( reader );
   return reader.reading;
}

Reading readForSummary( void* record, const ObjectEntry& ) {
   if ( !record ) {
      return { std::vector<Value>( readingFields ), failedWord, {} };
   }
   Reader reader( static_cast<ql_poe_port*>( record ) );
   reader.put( readingFields - 1, {} );
   if ( reader.readState().port == QL_POE_PORT_POWERED ) {
      reader.readPower();
   }
   return reader.reading;
}

bool isWorthARow( const Reading& reading ) {
   // A device that is found shows its class, also on a port that is kept from power.
   auto hasClass = !std::holds_alternative<std::monostate>( reading.values.front() );
   return hasClass || ( reading.state != "disabled" && reading.state != "detecting" );
}

Reading readRow( void* record, const ObjectEntry&, const Arguments& arguments ) {
   Reader reader( static_cast<ql_poe_port*>( record ) );
   auto state = readGlance( reader );
   // The chip tells its limit in a report alone, which costs three times as much as all the rest.
   if ( state.hasDevice() || !arguments.empty() ) {
      reader.readLimit();
   }
   return reader.reading;
}

Reading readDetails( void* record, const ObjectEntry&, const Arguments& ) {
   Reader reader( static_cast<ql_poe_port*>( record ) );
   auto state = readGlance( reader );
   reader.readLimit();
   bool isCrcOk = false;
   if ( reader.get( "read the CRC status", &ql_poe_port_ops::get_crc_status, &isCrcOk ) ) {
      auto field = readingFields + 2;
      reader.put( field++, std::string( wordOf( state.primary ) ) );
      reader.put( field++, std::string( wordOf( state.alternative ) ) );
      reader.put( field++, static_cast<double>( state.pairs ) );
      reader.put( field, isCrcOk );
   }
   return reader.reading;
}

std::string summary( const std::vector<const Reading*>& readings ) {
   std::vector<std::string> counts;
   auto count = [&]( std::string_view word ) {
      auto number = std::count_if(
         readings.begin(), readings.end(), [=]( auto reading ) { return reading->state == word; } );
      if ( number > 0 ) {
         counts.push_back( fmt::format( "{} {}", number, word ) );
      }
   };
   for ( auto& word : words ) {
      count( word.text );
   }
   count( "unknown" );
   count( failedWord );
   double watts = 0;
   for ( auto reading : readings ) {
      auto power = std::get_if<double>( &reading->values[powerField] );
      watts += power ? *power : 0;
   }
   return fmt::format( "{} port{}: {}; {:.1f} W\n", readings.size(), readings.size() == 1 ? "" : "s",
      fmt::join( counts, ", " ), watts );
}

} // namespace Poe
