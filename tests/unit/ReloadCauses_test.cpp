#include "Drivers/Selvane/ReloadCauses.h"

#include "Gant.h"

#include <gtest/gtest.h>

namespace {

struct Row {
   const char* text;
   /** Null for a text that explains itself. */
   const char* explanation;
};

const Row rows[] = {
   { "Reload requested by the user.", nullptr },
   { "Manual switchover requested by the user.", nullptr },
   { "The system rebooted due to a watchdog", nullptr },
   { "User-initiated reload interrupted by watchdog", nullptr },
   { "The system rebooted due to a BIOS watchdog", nullptr },
   { "The system rebooted forcibly by user or software at ", nullptr },
   { "The system rebooted due to a watchdog caused by a kernel panic", nullptr },
   { "The system rebooted due to a kernel panic", nullptr },
   { "The system rebooted due to a Power Loss", nullptr },
   { "System reloaded due to Zero Touch Provisioning", nullptr },
   { "Software power-cycled system due to critical system temperature", nullptr },
   { "Software shut down system due to critical system temperature", nullptr },
   { "Software shut down system due to card temperature critical",
      "Software detected that the switch started overheating and hence turned off POS12V causing the switch "
      "to restart. \n" },
   { "Software shut down system due to insufficient fans",
      "If the system was shut down due to insufficient or mismatched fans:   * check you have properly "
      "installed fans with the same airflow direction.   * check that all fans are tightly screwed into "
      "place.   * replace all failed fansIf the system was shut down due to overtemperature:   * check that "
      "all air vents are unobstructed.   * check that the switch is operating within its designed range "
      "of0-40C ambient temperature." },
   { "The system rebooted due to an SEU error on the Scd",
      "Software detected that the switch rebooted due to an SEU error on the Scd.\n" },
   { "The system rebooted due to an SEU error on the Dpm",
      "The system rebooted due to an SEU error on the Dpm.\n" },
   { "The system rebooted due to an SEU error on the Cpld",
      "Software detected that the switch rebooted due to an SEU error on the Cpld.\n" },
   { "The system rebooted due to an SEU error on one of the Application FPGAs",
      "Software detected that the switch rebooted due to an SEU error on one of the Application FPGAs.\n" },
   { "Reload requested by software", nullptr },
   { "Reload requested after FPGA upgrade", nullptr },
   { "The system rebooted due to unknown reasons.", "The system rebooted due to unknown reasons.\n" },
   { "Reload requested by the user using the reset button", nullptr },
   { "The system rebooted due to an internal rail failure",
      "Software detected that the switch rebooted due to an internal rail failure.\n" },
   { "The system rebooted due to a PLX fatal error", "The system rebooted due to a PLX fatal error.\n" },
   { "The system rebooted as fans were not detected", "The system rebooted as fans were not detected.\n" },
   { "The system rebooted due to power loss on the switching chip.",
      "Software detected a power event in a power supply that supplies the switching chip.\n" },
   { "The system rebooted due to a PCI error in the switching ASIC.",
      "Software detected a PCI error in the switching ASIC.\n" },
   { "The system rebooted due to a power event in a port module.",
      "Software detected a power event in a power supply that supplies the port modules.\n" },
   { "The system rebooted due to a PSU fault not caused by mains failure",
      "The system rebooted due to a PSU fault not caused by mains failure.\n" },
   { "The system rebooted due to a CPU S3 sleep state fault",
      "The system rebooted due to a CPU S3 sleep state fault.\n" },
   { "The system rebooted due to a CPU S5 sleep state fault",
      "The system rebooted due to a CPU S5 sleep state fault.\n" },
   { "The system rebooted due to a CPU thermal fault", "The system rebooted due to a CPU thermal fault.\n" },
   { "The system rebooted due to a CPU CATERR fault", "The system rebooted due to a CPU CATERR error.\n" },
   { "The system rebooted due to an unexpected fault on the CPU card.",
      "The system rebooted due to an unexpected fault on the CPU card.\n" },
   { "The system rebooted due to a card being unseated",
      "Check the card is firmly seated and the ejector handle is closed.\n" },
   { "Fatal error occurred.", nullptr },
   { "Hitless reload requested by the user.", nullptr },
   { "User-requested hitless reload interrupted by a fatal error", nullptr },
   { "Fail safe reboot occurred.", nullptr },
   { "User-requested hitless reload followed by a fail safe reboot occurred.",
      "The system rebooted due to a fatal error.\n" },
   { "The system rebooted due to a processor fatal error",
      "The system rebooted due to a processor fatal error.\n" },
   { "The system rebooted due to an SEU error on the MistFpga",
      "Software detected that the switch rebooted due to an SEU error on the MistFpga.\n" },
   { "The system rebooted due to a CPU machine check exception.",
      "The CPU detected an internal error condition and reset the system.\n" },
   { "The system may have rebooted due to a CPU internal error (code: syncflood).",
      "The system may have rebooted due to a CPU internal error (code: syncflood). This can occur during a "
      "forced reboot.\n" },
   { "The system rebooted due to a kill switch fault", "The system rebooted due to a kill switch fault\n " },
   { "The system rebooted due to the heartbeat from the SCD to the CPLD going idle",
      "The system rebooted due to the heartbeat from the SCD to the CPLD going idle\n " },
   { "The system rebooted in an attempt to recover from repeat failures",
      "The system rebooted in an attempt to recover from repeat failures\n" },
   { "The system shutdown to prevent losing traffic due to repeat faliures",
      "The system shutdown to prevent losing traffic due to repeat faliures\n" },
   { "Supervisor switchover during switchover", nullptr },
   { "The system rebooted due to power loss on the CPU card",
      "The system rebooted due to power loss on the CPU card\n" },
};

TEST( ReloadCauses, ComeInOrderWithTheirExplanationsAndWhatToDo ) {
   std::string action = Gant::RecommendedActionMacro::text( 2 ).charPtr();
   ASSERT_FALSE( action.empty() );
   ASSERT_EQ( ReloadCauses::causes.size(), std::size( rows ) );
   for ( size_t i = 0; i < std::size( rows ); ++i ) {
      EXPECT_STREQ( ReloadCauses::causes[i].text.charPtr(), rows[i].text ) << i;
      auto expected = rows[i].explanation ? rows[i].explanation + action : "";
      EXPECT_EQ( ReloadCauses::causes[i].explanation.charPtr(), expected ) << i;
   }
}

TEST( ReloadCauses, HaveTheConstantsThatStandBesideThem ) {
   using namespace ReloadCauses;
   EXPECT_STREQ( separator.charPtr(), "," );
   EXPECT_STREQ( rebootIsImminentKey.charPtr(), "rebootIsImminent" );
   EXPECT_STREQ( preRebootKey.charPtr(), "preReboot" );
   EXPECT_STREQ( kernelPanicHelp.charPtr(), "This may indicate a software or hardware problem.\nContact your "
                                            "customer support representative and provide "
                                            "the contents\nof the \\\"Debugging Information\\\" below." );
   EXPECT_STREQ( kernelPanicHelpWithoutDebugging.charPtr(),
      "This may indicate a software or hardware problem.\nContact your customer support representative." );
   EXPECT_STREQ( noActionNecessary.charPtr(), "No action necessary." );
   EXPECT_STREQ( kernelCrashPath.charPtr(), "/flash/debug/kernelcrash" );
   EXPECT_STREQ( kernelPanicBackTracePath.charPtr(), "/var/tmp/kernelPanicBackTrace" );
   EXPECT_STREQ( kernelPanicBreadCrumbsPath.charPtr(), "/var/tmp/kernelPanicBreadCrumbs" );
   EXPECT_STREQ( rebootTimestampPath.charPtr(), "/var/tmp/rebootTimestamp" );
   EXPECT_STREQ( unknown.charPtr(), "The system rebooted due to unknown reasons." );
}

TEST( ResetEvents, AreExactlySeven ) {
   const std::pair<uint8_t, const char*> events[] = {
      { 0x04, "Reload requested by the user." },
      { 0x08, "Reload requested by the user using the reset button" },
      { 0x10, "The system rebooted due to a BIOS watchdog" },
      { 0x20, "The system rebooted due to a watchdog" },
      { 0x24, "User-initiated reload interrupted by watchdog" },
      { 0x40, "The system rebooted due to a Power Loss" },
      { 0x80, "Software shut down system due to critical system temperature" },
   };
   EXPECT_EQ( resetEvents.size(), std::size( events ) );
   for ( auto& [value, text] : events ) {
      ASSERT_TRUE( resetEvents.contains( value ) ) << int { value };
      EXPECT_STREQ( resetEvents.at( value ).charPtr(), text );
   }
}

TEST( RecommendedAction, IsMadeFromALevelByte ) {
   for ( unsigned level = 1; level <= 3; ++level ) {
      const char bytes[] = { static_cast<char>( level ), 0 };
      EXPECT_STREQ( Gant::RecommendedActionMacro::text( level ).charPtr(),
         Gant::LogMsg::genRecommendedAction( bytes ).charPtr() );
      EXPECT_GT( Gant::RecommendedActionMacro::text( level ).bytes(), 0U );
   }
   EXPECT_EQ( Gant::LogMsg::genRecommendedAction( "x" ).bytes(), 0U );
}

} // namespace
