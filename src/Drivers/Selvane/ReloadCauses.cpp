#include "Drivers/Selvane/ReloadCauses.h"

#include "Gant.h"

#include <algorithm>
#include <cassert>

namespace ReloadCauses {

namespace {

/** Level of the recommended action that every explanation ends with. */
constexpr unsigned actionLevel = 2;

Lumo::String explained( const char* text ) {
   return text + Gant::RecommendedActionMacro::text( actionLevel );
}

} // namespace

const Lumo::String separator = ",";
const Lumo::String rebootIsImminentKey = "rebootIsImminent";
const Lumo::String preRebootKey = "preReboot";

const std::vector<Cause> causes = {
   { "Reload requested by the user.", {} },
   { "Manual switchover requested by the user.", {} },
   { "The system rebooted due to a watchdog", {} },
   { "User-initiated reload interrupted by watchdog", {} },
   { "The system rebooted due to a BIOS watchdog", {} },
   { "The system rebooted forcibly by user or software at ", {} },
   { "The system rebooted due to a watchdog caused by a kernel panic", {} },
   { "The system rebooted due to a kernel panic", {} },
   { "The system rebooted due to a Power Loss", {} },
   { "System reloaded due to Zero Touch Provisioning", {} },
   { "Software power-cycled system due to critical system temperature", {} },
   { "Software shut down system due to critical system temperature", {} },
   { "Software shut down system due to card temperature critical",
      explained( "Software detected that the switch started overheating and hence turned off POS12V causing "
                 "the switch to restart. \n" ) },
   { "Software shut down system due to insufficient fans",
      explained( "If the system was shut down due to insufficient or mismatched fans:   * check you have "
                 "properly installed fans with the same airflow direction.   * check that all fans are "
                 "tightly screwed into place.   * replace all failed fansIf the system was shut down due to "
                 "overtemperature:   * check that all air vents are unobstructed.   * check that the switch "
                 "is operating within its designed range of0-40C ambient temperature." ) },
   { "The system rebooted due to an SEU error on the Scd",
      explained( "Software detected that the switch rebooted due to an SEU error on the Scd.\n" ) },
   { "The system rebooted due to an SEU error on the Dpm",
      explained( "The system rebooted due to an SEU error on the Dpm.\n" ) },
   { "The system rebooted due to an SEU error on the Cpld",
      explained( "Software detected that the switch rebooted due to an SEU error on the Cpld.\n" ) },
   { "The system rebooted due to an SEU error on one of the Application FPGAs",
      explained( "Software detected that the switch rebooted due to an SEU error on one of the Application "
                 "FPGAs.\n" ) },
   { "Reload requested by software", {} },
   { "Reload requested after FPGA upgrade", {} },
   { "The system rebooted due to unknown reasons.",
      explained( "The system rebooted due to unknown reasons.\n" ) },
   { "Reload requested by the user using the reset button", {} },
   { "The system rebooted due to an internal rail failure",
      explained( "Software detected that the switch rebooted due to an internal rail failure.\n" ) },
   { "The system rebooted due to a PLX fatal error",
      explained( "The system rebooted due to a PLX fatal error.\n" ) },
   { "The system rebooted as fans were not detected",
      explained( "The system rebooted as fans were not detected.\n" ) },
   { "The system rebooted due to power loss on the switching chip.",
      explained( "Software detected a power event in a power supply that supplies the switching chip.\n" ) },
   { "The system rebooted due to a PCI error in the switching ASIC.",
      explained( "Software detected a PCI error in the switching ASIC.\n" ) },
   { "The system rebooted due to a power event in a port module.",
      explained( "Software detected a power event in a power supply that supplies the port modules.\n" ) },
   { "The system rebooted due to a PSU fault not caused by mains failure",
      explained( "The system rebooted due to a PSU fault not caused by mains failure.\n" ) },
   { "The system rebooted due to a CPU S3 sleep state fault",
      explained( "The system rebooted due to a CPU S3 sleep state fault.\n" ) },
   { "The system rebooted due to a CPU S5 sleep state fault",
      explained( "The system rebooted due to a CPU S5 sleep state fault.\n" ) },
   { "The system rebooted due to a CPU thermal fault",
      explained( "The system rebooted due to a CPU thermal fault.\n" ) },
   { "The system rebooted due to a CPU CATERR fault",
      explained( "The system rebooted due to a CPU CATERR error.\n" ) },
   { "The system rebooted due to an unexpected fault on the CPU card.",
      explained( "The system rebooted due to an unexpected fault on the CPU card.\n" ) },
   { "The system rebooted due to a card being unseated",
      explained( "Check the card is firmly seated and the ejector handle is closed.\n" ) },
   { "Fatal error occurred.", {} },
   { "Hitless reload requested by the user.", {} },
   { "User-requested hitless reload interrupted by a fatal error", {} },
   { "Fail safe reboot occurred.", {} },
   { "User-requested hitless reload followed by a fail safe reboot occurred.",
      explained( "The system rebooted due to a fatal error.\n" ) },
   { "The system rebooted due to a processor fatal error",
      explained( "The system rebooted due to a processor fatal error.\n" ) },
   { "The system rebooted due to an SEU error on the MistFpga",
      explained( "Software detected that the switch rebooted due to an SEU error on the MistFpga.\n" ) },
   { "The system rebooted due to a CPU machine check exception.",
      explained( "The CPU detected an internal error condition and reset the system.\n" ) },
   { "The system may have rebooted due to a CPU internal error (code: syncflood).",
      explained( "The system may have rebooted due to a CPU internal error (code: syncflood). This can occur "
                 "during a forced reboot.\n" ) },
   { "The system rebooted due to a kill switch fault",
      explained( "The system rebooted due to a kill switch fault\n " ) },
   { "The system rebooted due to the heartbeat from the SCD to the CPLD going idle",
      explained( "The system rebooted due to the heartbeat from the SCD to the CPLD going idle\n " ) },
   { "The system rebooted in an attempt to recover from repeat failures",
      explained( "The system rebooted in an attempt to recover from repeat failures\n" ) },
   { "The system shutdown to prevent losing traffic due to repeat faliures",
      explained( "The system shutdown to prevent losing traffic due to repeat faliures\n" ) },
   { "Supervisor switchover during switchover", {} },
   { "The system rebooted due to power loss on the CPU card",
      explained( "The system rebooted due to power loss on the CPU card\n" ) },
};

const Lumo::String kernelPanicHelp =
   "This may indicate a software or hardware problem.\nContact your customer support representative and "
   "provide the contents\nof the \\\"Debugging Information\\\" below.";
const Lumo::String kernelPanicHelpWithoutDebugging =
   "This may indicate a software or hardware problem.\nContact your customer support representative.";
const Lumo::String noActionNecessary = "No action necessary.";
const Lumo::String kernelCrashPath = "/flash/debug/kernelcrash";
const Lumo::String kernelPanicBackTracePath = "/var/tmp/kernelPanicBackTrace";
const Lumo::String kernelPanicBreadCrumbsPath = "/var/tmp/kernelPanicBreadCrumbs";
const Lumo::String rebootTimestampPath = "/var/tmp/rebootTimestamp";

namespace {

const Lumo::String& cause( const Lumo::String& text ) {
   auto entry = std::find_if(
      causes.begin(), causes.end(), [&text]( const Cause& candidate ) { return candidate.text == text; } );
   assert( entry != causes.end() );
   return entry->text;
}

} // namespace

const Lumo::String unknown = cause( "The system rebooted due to unknown reasons." );

} // namespace ReloadCauses

using ReloadCauses::cause;

std::map<uint8_t, Lumo::String> resetEvents = {
   { 0x04, cause( "Reload requested by the user." ) },
   { 0x08, cause( "Reload requested by the user using the reset button" ) },
   { 0x10, cause( "The system rebooted due to a BIOS watchdog" ) },
   { 0x20, cause( "The system rebooted due to a watchdog" ) },
   { 0x24, cause( "User-initiated reload interrupted by watchdog" ) },
   { 0x40, cause( "The system rebooted due to a Power Loss" ) },
   { 0x80, cause( "Software shut down system due to critical system temperature" ) },
};
