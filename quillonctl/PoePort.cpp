#include "Poe.h"

namespace {

using Choices = std::vector<std::string>;

constexpr Field details[] = {
   // At a glance: Poe::readingFields.
   { "device_class", "CLASS" },
   { "power_watts", "POWER", "W", 1 },
   { "voltage_volts", "VOLTAGE", "V", 1 },
   { "current_amperes", "CURRENT", "A", 3 },
   { "temperature_celsius", "TEMPERATURE", "°C", 1 },
   // In the table of all ports.
   { "limited_by", "LIMITED BY" },
   { "limit_watts", "LIMIT", "W", 1 },
   // Of one port.
   { "primary_state", "PRIMARY" },
   { "alternative_state", "ALTERNATIVE" },
   { "pair_state", "PAIRS" },
   { "crc_ok", "CRC OK" },
};

constexpr auto glance = std::span( details ).first( Poe::readingFields );
constexpr auto row = std::span( details ).first( Poe::readingFields + 2 );
constexpr auto limit = row.last( 2 );

constexpr Field powerFields[] = { { "power", "POWER" } };
constexpr Field pseFields[] = { { "pse_enabled", "PSE" } };
constexpr Field legacyFields[] = { { "legacy_detection", "LEGACY" } };
constexpr Field shutOffFields[] = { { "power_supply", "SUPPLY" }, { "shut_off", "SHUT OFF" } };
constexpr Field initFields[] = { { "started", "STARTED" } };
constexpr Field reportFields[] = { { "report", "" } };
constexpr Field firmwareFields[] = { { "firmware", "FIRMWARE" } };
constexpr Field updateFields[] = { { "firmware", "FIRMWARE" }, { "previous_firmware", "BEFORE" } };

const Argument onOrOff { .choices = { "on", "off" } };

const Command commands[] = {
   { "status", {}, "Shows the ports that have something plugged in, and sums up all", row, Poe::readRow, "",
      Scope::All, Poe::isWorthARow },
   { "status", { { .choices = { "--all" } } }, "Shows all ports", row, Poe::readRow, "", Scope::All },
   { "firmware", { { .choices = { "show" } } }, "Shows the revision that the controller runs", firmwareFields,
      Poe::showFirmware, "", Scope::OnePerDevice },
   { "firmware", { { .choices = { "update" } } },
      "Loads the file that the board names, if it is another revision; ports lose their power then",
      updateFields, Poe::updateFirmware, "", Scope::OnePerDevice },
   { "", {}, "Shows all that is known of a port", details, Poe::readDetails },
   { "init", {}, "Starts a port, and the controller before it", initFields, Poe::init, "{0} was started" },
   { "pse", { onOrOff }, "Lets a port look for devices, or not", pseFields, Poe::setPse,
      "power sourcing of {0} is {1}" },
   { "on", {}, "Gives power to the device that was found", powerFields, Poe::powerOn, "{0} was switched on" },
   { "off", {}, "Takes the power away", powerFields, Poe::powerOff, "{0} was switched off" },
   { "limit", { { .name = "class|WATTS", .wanted = Poe::wantedLimit } },
      "Limits the power to what the device's class may take, or for each channel to a number of watts", limit,
      Poe::setLimit },
   { "legacy", { onOrOff }, "Looks for devices from before the standard too, or not", legacyFields,
      Poe::setLegacy, "legacy detection of {0} is {1}" },
   { "shutoff", { { .choices = { "1", "2", "3" } }, onOrOff },
      "Shuts a port off when a power supply fails, or not", shutOffFields, Poe::setShutOff,
      "shut-off of {0} with power supply {1}" },
   { "report", {}, "Shows every reply that the controller has about a port", reportFields, Poe::report },
   { "report", { { .choices = { "--raw" } } }, "Shows their bytes", reportFields, Poe::report },
};

constexpr Summary summary { Poe::readForSummary, Poe::summary };

constexpr Step steps[] = {
   { "Global level configurations.", "starting the controller", 1 },
   { "Clearing current image", "clearing the firmware", 4 },
   { "Writing firmware", "writing the firmware", 1 },
   { "Loading firmware", "loading the firmware", 8 },
   { "New firmware revision ", "starting the controller", 1 },
};

} // namespace

const Kind poePortKind = { "poe_port", "PoE ports", glance, Calls::add<ql_poe_port>, Poe::read, "poe",
   "Shows PoE ports, or sets what they do", commands, true, false, &summary, steps, true };
