#include "Drivers/Selvane/SelvaneSystem.h"

#include "Assertion.h"
#include "Drivers/Drivers.h"
#include "Drivers/Dummy.h"
#include "FreshLibrary.h"
#include "ObjectLayout.h"
#include "ScriptedHam.h"

#include <cstring>
#include <memory>

namespace {

using Host::TraceLine;
using testing::ElementsAre;
using testing::HasSubstr;

/** A topology with the CPLD, whose device is there already and has a scripted Ham. */
class System : public FreshLibrary {
protected:
   System() {
      load( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5, "devices": [
         { "did": 20, "label": "CpuCpld", "driver": null, "address": { "address": 48 } } ] } ])" );
      cpld.ham = &ham;
      Component::DeviceBase::devices[20] = &cpld;
      system.reset( ql_system_add( "{}" ) );
      Host::traces.clear();
      strcpy( reason, "untouched" );
      strcpy( version, "before" );
   }

   ~System() override { Component::DeviceBase::devices.clear(); }

   static void load( const char* text ) { ASSERT_EQ( Topology::loadTopology( text ), QL_STATUS_OK ); }

   ql_status getReloadCause() {
      return system->ops->get_reload_cause( system.get(), &reason, nullptr, nullptr );
   }

   /** The lines of an operation, without those of finding the device. */
   std::vector<std::string> lines() const {
      std::vector<std::string> texts;
      for ( auto& line : Host::tracesOf( 0 ) ) {
         if ( !line.starts_with( "looking for already" ) && !line.starts_with( "using previously" ) ) {
            texts.push_back( line );
         }
      }
      return texts;
   }

   ScriptedHam ham;
   Drivers::Dummy cpld;
   std::unique_ptr<ql_system> system;
   char reason[100];
   char version[8];
};

using SystemDeathTest = System;

class SelvaneSystem : public FreshLibrary {};

TEST_F( SelvaneSystem, IsAddedBeforeAnyInit ) {
   ASSERT_EQ( Topology::_topology, nullptr );
   EXPECT_NE( ql_system_add( "{}" ), nullptr );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 0, "SelvaneSystem::ql_system_add( '{}' )" } ) );
}

TEST_F( SelvaneSystem, DoesNotLookAtItsArguments ) {
   EXPECT_NE( ql_system_add( "no %s JSON" ), nullptr );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 0, "SelvaneSystem::ql_system_add( 'no %s JSON' )" } ) );
}

TEST_F( SelvaneSystem, IsAFreshRecordEachTimeWithTheOneTable ) {
   auto first = ql_system_add( "" );
   auto second = ql_system_add( "" );
   EXPECT_NE( first, second );
   EXPECT_EQ( first->ops, second->ops );
}

TEST_F( SelvaneSystem, RecordIsAZeroAndTheTable ) {
   auto system = ql_system_add( "" );
   EXPECT_EQ( sizeof( *system ), 16U );
   EXPECT_EQ( Layout::offsetOf( *system, system->reserved ), 0U );
   EXPECT_EQ( Layout::offsetOf( *system, system->ops ), 8U );
   EXPECT_EQ( system->reserved, 0U );
}

TEST_F( SelvaneSystem, TableHoldsItsSizeAndItsFunctions ) {
   EXPECT_THAT( Layout::wordsOf( *ql_system_add( "" )->ops ),
      ElementsAre( 56, ql_system_poweroff, ql_system_powercycle, ql_system_get_reload_cause,
         ql_system_poe_reboot_action, ql_system_get_chip_info, nullptr ) );
}

TEST_F( SelvaneSystem, CannotSwitchThePowerEvenBeforeAnyInit ) {
   auto system = ql_system_add( "" );
   Host::traces.clear();
   EXPECT_EQ( system->ops->poweroff( system ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_EQ( system->ops->powercycle( system ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_EQ( ql_system_poweroff( nullptr ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_EQ( ql_system_powercycle( nullptr ), QL_STATUS_NOT_SUPPORTED );
   EXPECT_TRUE( Host::traces.empty() );
}

struct CauseRow {
   uint16_t value;
   const char* text;
};

TEST_F( System, TellsTheCauseByTheExactRegisterValue ) {
   const CauseRow rows[] = {
      { 0x04, "Reload requested by the user." },
      { 0x08, "Reload requested by the user using the reset button" },
      { 0x10, "The system rebooted due to a BIOS watchdog" },
      { 0x20, "The system rebooted due to a watchdog" },
      { 0x24, "User-initiated reload interrupted by watchdog" },
      { 0x40, "The system rebooted due to a Power Loss" },
      { 0x80, "Software shut down system due to critical system temperature" },
      { 0x0C, "The system rebooted due to unknown reasons." },
      { 0x01, "The system rebooted due to unknown reasons." },
      { 0xFF, "The system rebooted due to unknown reasons." },
   };
   for ( auto& row : rows ) {
      ham.registers[0x60] = row.value;
      ham.log.clear();
      Host::traces.clear();
      EXPECT_EQ( getReloadCause(), QL_STATUS_OK ) << row.value;
      EXPECT_STREQ( reason, row.text );
      EXPECT_THAT( ham.log,
         ElementsAre( "prepare", "read8 0x60 /1", "execute", "prepare", "write8 0x60=00 /1", "execute" ) );
      EXPECT_THAT( lines(),
         ElementsAre( fmt::format( "Reset Event Register: 0x60\tRegister Value: 0x{:x}", row.value ) ) );
   }
}

TEST_F( System, ConsumesTheCauseByReadingIt ) {
   ham.registers[0x60] = 0x20;
   EXPECT_EQ( getReloadCause(), QL_STATUS_OK );
   EXPECT_STREQ( reason, "The system rebooted due to a watchdog" );
   strcpy( reason, "untouched" );
   Host::traces.clear();
   EXPECT_EQ( getReloadCause(), QL_STATUS_FAILED );
   EXPECT_STREQ( reason, "untouched" );
   EXPECT_THAT( lines(), ElementsAre( "Reset Event Register: 0x60\tRegister Value: 0" ) );
}

TEST_F( System, LeavesTimeAndDebugTextAlone ) {
   ham.registers[0x60] = 0x20;
   time_t when = 42;
   char debugInfo[500] = "untouched";
   EXPECT_EQ( system->ops->get_reload_cause( system.get(), &reason, &when, &debugInfo ), QL_STATUS_OK );
   EXPECT_EQ( when, 42 );
   EXPECT_STREQ( debugInfo, "untouched" );
}

TEST_F( System, TriesToClearAfterAFailedReadAndGivesTheReadsStatus ) {
   ham.statuses = { QL_STATUS_IO_ERROR, QL_STATUS_FAILED };
   EXPECT_EQ( getReloadCause(), QL_STATUS_IO_ERROR );
   EXPECT_STREQ( reason, "untouched" );
   EXPECT_THAT( ham.log, testing::Contains( "write8 0x60=00 /1" ) );
   EXPECT_THAT( lines(), ElementsAre( "Reading Reset Reason Register FAILED" ) );
}

TEST_F( System, GivesTheStatusOfAFailedClearAndNoText ) {
   ham.registers[0x60] = 0x20;
   ham.statuses = { QL_STATUS_OK, QL_STATUS_FAILED };
   EXPECT_EQ( getReloadCause(), QL_STATUS_FAILED );
   EXPECT_STREQ( reason, "untouched" );
   EXPECT_EQ( ham.registers[0x60], 0x20 );
   EXPECT_THAT( lines(), ElementsAre( "Clearing Reset Reason Register FAILED" ) );
}

TEST_F( System, TellsTheCpldVersionMajorFirst ) {
   ham.registers = { { 0, 0x2A }, { 1, 0x01 } };
   EXPECT_EQ( system->ops->get_chip_info( system.get(), &version ), QL_STATUS_OK );
   EXPECT_STREQ( version, "0x01.2a" );
   EXPECT_THAT(
      ham.log, ElementsAre( "prepare", "read8 0x00 /1", "execute", "prepare", "read8 0x01 /1", "execute" ) );
   EXPECT_EQ( lines().at( 0 ), "ql_system_get_chip_info" );
}

TEST_F( System, PassesAFailedVersionReadOn ) {
   ham.statuses = { QL_STATUS_FAILED };
   EXPECT_EQ( system->ops->get_chip_info( system.get(), &version ), QL_STATUS_FAILED );
   EXPECT_THAT(
      lines(), ElementsAre( "ql_system_get_chip_info", "Reading CPLD minor version Register FAILED" ) );
   Host::traces.clear();
   ham.statuses = { QL_STATUS_OK, QL_STATUS_IO_ERROR };
   EXPECT_EQ( system->ops->get_chip_info( system.get(), &version ), QL_STATUS_IO_ERROR );
   EXPECT_THAT(
      lines(), ElementsAre( "ql_system_get_chip_info", "Reading CPLD major version Register FAILED" ) );
   EXPECT_STREQ( version, "before" );
}

struct RebootRow {
   bool keep;
   unsigned value;
   const char* text;
};

const RebootRow reboots[] = {
   { true, 0, "Updating reboot action config register to NOT reset Poe" },
   { false, 1, "Updating reboot action config register to reset Poe" },
};

TEST_F( System, TellsTheCpldWhatARebootDoesToPoe ) {
   for ( auto& row : reboots ) {
      ham.log.clear();
      Host::traces.clear();
      EXPECT_EQ( system->ops->poe_reboot_action( system.get(), row.keep ), QL_STATUS_OK );
      EXPECT_THAT(
         ham.log, ElementsAre( "prepare", fmt::format( "write8 0x06={:02x} /1", row.value ), "execute" ) );
      EXPECT_THAT( lines(), ElementsAre( row.text ) );
   }
}

TEST_F( System, TellsOfTheRebootActionAlsoWhenItsWriteFails ) {
   for ( auto& row : reboots ) {
      Host::traces.clear();
      ham.statuses = { QL_STATUS_FAILED };
      EXPECT_EQ( system->ops->poe_reboot_action( system.get(), row.keep ), QL_STATUS_FAILED );
      EXPECT_THAT( lines(), ElementsAre( row.text, "Writing Reboot action config register FAILED" ) );
   }
}

TEST_F( System, LooksForTheCpldAtEachCall ) {
   ham.registers[0] = 0x2A;
   EXPECT_EQ( system->ops->get_chip_info( system.get(), &version ), QL_STATUS_OK );
   load( R"([ { "type": "I2C", "ham": "QuillonSmbus", "id": 5, "devices": [
      { "did": 21, "label": "CpuCpld", "driver": null, "address": { "address": 48 } } ] } ])" );
   ScriptedHam otherHam;
   Drivers::Dummy other;
   other.ham = &otherHam;
   otherHam.registers[0] = 0x2B;
   Component::DeviceBase::devices[21] = &other;
   EXPECT_EQ( system->ops->get_chip_info( system.get(), &version ), QL_STATUS_OK );
   EXPECT_STREQ( version, "0x00.2b" );
}

TEST_F( System, DoesNotLookAtTheRecord ) {
   ham.registers = { { 0, 0x2A }, { 0x60, 0x20 } };
   EXPECT_EQ( ql_system_get_chip_info( nullptr, &version ), QL_STATUS_OK );
   EXPECT_EQ( ql_system_get_reload_cause( nullptr, &reason, nullptr, nullptr ), QL_STATUS_OK );
   EXPECT_EQ( ql_system_poe_reboot_action( nullptr, true ), QL_STATUS_OK );
}

TEST_F( System, WritesTheRebootActionBeforeItTellsOfIt ) {
   class TracingHam : public ScriptedHam {
      ql_status execute() override {
         ql_trace( 9, "execute" );
         return ScriptedHam::execute();
      }
   } tracing;

   cpld.ham = &tracing;
   system->ops->poe_reboot_action( system.get(), true );
   std::vector<TraceLine> tail( Host::traces.end() - 2, Host::traces.end() );
   EXPECT_THAT( tail, ElementsAre( TraceLine { 9, "execute" }, TraceLine { 0, reboots[0].text } ) );
}

TEST_F( System, MakesTheCpldADummyWhenTheTopologyGivesItNoDriver ) {
   ham.registers[0x60] = 0x20;
   getReloadCause();
   EXPECT_EQ( Topology::getDeviceByLabel( "CpuCpld" )->args->driver, "Dummy" );
}

TEST_F( SystemDeathTest, NeedsTheLabel ) {
   load( "[]" );
   Host::echoTraces = true;
   auto missing =
      testing::AllOf( assertionFailed( "device" ), HasSubstr( "0: Unable to locate device CpuCpld" ) );
   EXPECT_DEATH( getReloadCause(), missing );
   EXPECT_DEATH( system->ops->get_chip_info( system.get(), &version ),
      testing::AllOf( missing, HasSubstr( "0: ql_system_get_chip_info" ) ) );
   EXPECT_DEATH( system->ops->poe_reboot_action( system.get(), true ), missing );
}

TEST_F( SystemDeathTest, NeedsAHamForTheCpld ) {
   cpld.ham = nullptr;
   EXPECT_DEATH( getReloadCause(), assertionFailed( "ham" ) );
   EXPECT_DEATH( system->ops->get_chip_info( system.get(), &version ), assertionFailed( "ham" ) );
   EXPECT_DEATH( system->ops->poe_reboot_action( system.get(), true ), assertionFailed( "ham" ) );
}

} // namespace
