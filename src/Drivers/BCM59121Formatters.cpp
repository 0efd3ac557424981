#include "Drivers/BCM59121Messages.h"
#include "Drivers/BCM59121Reports.h"

#include <fmt/format.h>

#include <span>

namespace Drivers {

namespace {

constexpr char notAvailable[] = "n/a";

// Volts for each step of a 16-bit reading and of a threshold byte.
constexpr double voltStep = 0.06445;
constexpr double uvloBase = 33.0;
constexpr double ovloBase = 57.0;
// Watts for each step of a power reading and of a limit byte.
constexpr double wattStep = 0.1;
constexpr double limitStep = 0.2;

constexpr const char* faults[] = { "OVLO", "MPS absent", "short circuit", "overload",
   "detecting, power denied", "thermal shutdown", "startup failure", "UVLO" };
constexpr const char* channelDetections[] = { "unknown", "short circuit", "high capacitance",
   "low resistance", "valid", "high resistance", "open circuit" };
constexpr const char* channelErrors[] = { "none", "MPS absent", "short", "overload", "power denied",
   "thermal shutdown", "startup failure", "UVLO", "OVLO" };
constexpr const char* channelModes[] = { "15W", "30W", "45W" };
constexpr const char* pseFunctionality[] = { "disabled", "enabled" };
constexpr const char* detectionTypes[] = { "no detection", "legacy capacitive", "4 point", "legacy 4 point",
   "2 point", "legacy 2 point" };
constexpr const char* powerModes[] = { "IEEE 802.3af", "high inrush", "pre IEEE 802.3at", "IEEE 802.3at",
   "pre IEEE 802.3bt", "IEEE 802.3bt Type-3", "IEEE 802.3bt Type-4" };
constexpr const char* violationTypes[] = { "none", "class based", "user defined" };

const char* textOf( std::span<const char* const> texts, uint8_t value ) {
   return value < texts.size() ? texts[value] : notAvailable;
}

const char* portStatusText( uint8_t status, uint8_t fault ) {
   switch ( status ) {
   case 0:
      return "disabled";
   case 1:
      return "detecting";
   case 2:
      return "powered";
   case 4:
   case 5:
      return textOf( faults, fault );
   case 6:
      return "requesting power";
   default:
      return notAvailable;
   }
}

/** The one table whose other values have no text at all. */
const char* powerManagementText( uint8_t value ) {
   switch ( value ) {
   case 0:
      return "none";
   case 1:
   case 3:
      return "static";
   case 2:
   case 4:
      return "dynamic";
   default:
      return "";
   }
}

/** Fields of a reply: labels first, values behind them when there is a reply to decode. */
class Fields {
public:
   explicit Fields( const std::string& reply ) : reply_( reply ) {}

   uint8_t byte( size_t offset ) const { return byteAt( reply_, offset ); }

   bool bit( size_t offset, unsigned number ) const { return byte( offset ) >> number & 1; }

   double word( size_t offset, double scale ) const {
      return getMeasurementVal( byte( offset ), byte( offset + 1 ), scale, 0.0 );
   }

   void add( const char* label, const std::string& value ) {
      texts.push_back( reply_.empty() ? label : label + value );
   }

   void add( const char* label, double value, const char* unit ) {
      add( label, fmt::format( "{:0.2f}{}", value, unit ) );
   }

   std::vector<std::string> texts;

private:
   const std::string& reply_;
};

} // namespace

std::string getChannelDetectionStr( uint8_t value ) { return textOf( channelDetections, value & 0x0F ); }

std::string getPdClassStr( uint8_t value ) {
   if ( value < 9 ) {
      return std::to_string( value );
   }
   switch ( value ) {
   case 14:
      return "mismatch";
   case 15:
      return "over current";
   default:
      return notAvailable;
   }
}

std::string getChannelErrorStr( uint8_t value ) { return textOf( channelErrors, value ); }

std::string getChannelModeStr( uint8_t value ) { return textOf( channelModes, value & 3 ); }

size_t getSysStatusStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "4-pair port mapping: ", fields.bit( 9, 3 ) ? "yes" : "no" );
   fields.add( "Firmware version: ", fmt::format( "0x{:02x}.{:02x}", fields.byte( 7 ), fields.byte( 10 ) ) );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getPortStatusStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "Port status: ", portStatusText( fields.byte( 3 ), fields.byte( 4 ) ) );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getPortStatStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "MPS absent count: ", std::to_string( fields.byte( 3 ) ) );
   fields.add( "Overload count: ", std::to_string( fields.byte( 4 ) ) );
   fields.add( "Short count: ", std::to_string( fields.byte( 5 ) ) );
   fields.add( "Power denied count: ", std::to_string( fields.byte( 6 ) ) );
   fields.add( "Invalid signature count: ", std::to_string( fields.byte( 7 ) ) );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getSysPowerStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "Total power allocated: ", fields.word( 2, wattStep ), "W" );
   fields.add( "Available power: ", fields.word( 4, wattStep ), "W" );
   fields.add( "MPSM status: ", fmt::format( "0x{:02x}", fields.byte( 6 ) ) );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getPortConfigStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "PSE functionality: ", textOf( pseFunctionality, fields.byte( 3 ) ) );
   fields.add( "Detection type: ", textOf( detectionTypes, fields.byte( 5 ) ) );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getPortConfigExtStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "Power mode: ", textOf( powerModes, fields.byte( 3 ) ) );
   fields.add( "Violation type: ", textOf( violationTypes, fields.byte( 4 ) ) );
   fields.add( "User defined power limit: ", fields.byte( 5 ) * limitStep, "W" );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getSysPowerManagementStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "Power management: ", powerManagementText( fields.byte( 2 ) ) );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getSysConfigStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "UVLO threshold: ", fields.byte( 2 ) * voltStep + uvloBase, "V" );
   fields.add( "OVLO threshold: ", fields.byte( 7 ) * voltStep + ovloBase, "V" );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getCrcStatusStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "V48 voltage: ", fields.word( 4, voltStep ), "V" );
   fields.add( "CRC status: ", fields.bit( 8, 0 ) ? "ok" : "failed" );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getPortMpssStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "Port MPSS mask: ", fmt::format( "0x{:02x}{:02x}", fields.byte( 3 ), fields.byte( 4 ) ) );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getPortMeasurementStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "Voltage: ", fields.word( 3, voltStep ), "V" );
   fields.add( "Current: ", fields.word( 5, 1.0 ), "mA" );
   fields.add( "Temperature: ", getTemperatureVal( fields.byte( 7 ), fields.byte( 8 ) ), "C" );
   fields.add( "Power: ", fields.word( 9, wattStep ), "W" );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getPortPerPairPowerStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "Primary channel power: ", fields.word( 3, wattStep ), "W" );
   fields.add( "Alternative channel power: ", fields.word( 5, wattStep ), "W" );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getPortPerPairStatusStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "Primary channel detection: ", getChannelDetectionStr( fields.byte( 3 ) ) );
   fields.add( "Primary channel PD class: ", getPdClassStr( fields.byte( 4 ) ) );
   fields.add( "Primary channel error status: ", getChannelErrorStr( fields.byte( 5 ) ) );
   fields.add( "Primary channel mode: ", getChannelModeStr( fields.byte( 6 ) ) );
   fields.add( "Alternative channel detection: ", getChannelDetectionStr( fields.byte( 7 ) ) );
   fields.add( "Alternative channel PD class: ", getPdClassStr( fields.byte( 8 ) ) );
   fields.add( "Alternative channel error status: ", getChannelErrorStr( fields.byte( 9 ) ) );
   fields.add( "Alternative channel mode: ", getChannelModeStr( fields.byte( 10 ) ) );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

size_t getCrcConfigQueryStr( ql_status status, std::string& reply, char* dst, size_t used ) {
   Fields fields( reply );
   fields.add( "CRC functionality: ", fields.bit( 2, 0 ) ? "enabled" : "disabled" );
   fields.add( "Reset on CRC failure: ", fields.bit( 3, 0 ) ? "yes" : "no" );
   return formatDebugStr( dst, used, status, reply, fields.texts );
}

} // namespace Drivers
