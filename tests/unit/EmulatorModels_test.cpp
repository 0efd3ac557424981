#include "EmulatorBus.h"

#include "emulator/ChipFactory.h"

#include <gmock/gmock.h>

#include <chrono>

using namespace Emulator;

/** What must hold for every model. Each part of the factory has a row here, from its data sheet. */
namespace {

struct ResetValue {
   uint8_t number;
   Bytes bytes;
   /** What a chip of messages is sent before its reply is read. */
   Bytes request {};
   /** What changes the value; without it a write of 0xa5. */
   Bytes change {};
};

/** A physical value, and what the register then reads. */
struct Physical {
   const char* property;
   const char* value;
   uint8_t number;
   Bytes bytes;
   Bytes request {};
};

struct ModelRow {
   const char* part;
   Options options;
   std::vector<ResetValue> registers;
   /** Register numbers that are not acknowledged. */
   Bytes outside;
   std::vector<Physical> physical;
   /** From power-on until it answers. */
   std::chrono::milliseconds bootTime {};
};

const Bytes noReply( 12, 0xFF );
const Bytes enablePort1 { 0x00, 0xFF, 0x00, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xF9 };
const Bytes askForPort1 { 0x25, 0xFF, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x1C };
const Bytes measurePort1 { 0x30, 0xFF, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x27 };
const Bytes askForGroup5 { 0x2D, 0xFF, 0x05, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x29 };

const ModelRow models[] = {
   // 65 °C is 120 + 60 / 1.25; 48 V are 745 steps of 0.06445 V.
   { "bcm59121", {},
      { { 0xFF, noReply }, { 0xFF, { 0x25, 0xFF, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x26 },
                              askForPort1, enablePort1 } },
      {},
      { { "temperature", "65", 0xFF,
           { 0x30, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xA8, 0x00, 0x00, 0xD7 }, measurePort1 },
         { "supply", "48", 0xFF, { 0x2D, 0xFF, 0x05, 0x00, 0x02, 0xE9, 0x00, 0x00, 0x01, 0x00, 0x00, 0x1D },
            askForGroup5 } },
      std::chrono::milliseconds( 500 ) },
   { "cpld", {},
      { { 0x00, { 0x2A } }, { 0x01, { 0x01 } }, { 0x05, { 0x01 } }, { 0x06, { 0x00 } }, { 0x07, { 0x30 } },
         { 0x10, { 0xFF } }, { 0x1F, { 0x00 } }, { 0x40, { 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF } },
         { 0x4C, { 0xFF } }, { 0x60, { 0x40 } }, { 0x80, Bytes( 48, 0xFF ) } },
      { 0x02, 0x04, 0x08, 0x0F, 0x11, 0x1E, 0x20, 0x3F, 0x48, 0x4B, 0x4D, 0x5F, 0x61, 0x7F, 0xB0, 0xFF },
      { { "sfp1.present", "1", 0x10, { 0xEE } }, { "reset_reason", "0x24", 0x60, { 0x24 } },
         { "version", "0x0203", 0x00, { 0x03, 0x02 } } } },
   // Configuration, status, interrupts, PWM; the first and the last fan's registers; identification.
   { "emc2305", {},
      { { 0x20, { 0x40 } }, { 0x24, { 0x00, 0x00, 0x00, 0x00 } }, { 0x29, { 0x00, 0x00, 0x00, 0x00, 0x00 } },
         { 0x30, { 0x00, 0x01, 0x2B, 0x28 } }, { 0x35, { 0x2A, 0x19, 0x10, 0x66, 0xF5, 0x00, 0x00, 0xF8 } },
         { 0x3D, { 0xFF, 0xFF, 0xF8 } }, { 0x70, { 0x00, 0x01, 0x2B, 0x28 } },
         { 0x75, { 0x2A, 0x19, 0x10, 0x66, 0xF5, 0x00, 0x00, 0xF8 } }, { 0x7D, { 0xFF, 0xFF, 0xF8 } },
         { 0xEF, { 0x00 } }, { 0xFC, { 0x00, 0x34, 0x5D, 0x80 } } },
      { 0x00, 0x1F, 0x21, 0x23, 0x28, 0x2E, 0x34, 0x44, 0x80, 0xEE, 0xF0, 0xFB },
      { { "fan1.drive", "128", 0x30, { 0x80 } }, { "fan5.rpm", "8000", 0x7E, { 0x1E, 0xB8 } } } },
   { "pct2075", {},
      { { 0x00, { 0x19, 0x00 } }, { 0x01, { 0x00 } }, { 0x02, { 0x4B, 0x00 } }, { 0x03, { 0x50, 0x00 } },
         { 0x04, { 0x00 } } },
      { 0x05, 0x06, 0x07, 0x08, 0x80, 0xFF },
      { { "temperature", "71.5", 0x00, { 0x47, 0x80 } },
         { "temperature", "-10.25", 0x00, { 0xF5, 0xC0 } } } },
   { "registers", { { "size", "4" }, { "r0x02", "0x5a" } },
      { { 0x00, { 0x00 } }, { 0x01, { 0x00 } }, { 0x02, { 0x5A } }, { 0x03, { 0x00 } } },
      { 0x04, 0x05, 0x80, 0xFF },
      { { "r0x01", "0x17", 0x01, { 0x17 } }, { "r0x03", "255", 0x03, { 0xFF } } } },
};

class EmulatorModels : public ::testing::TestWithParam<ModelRow> {
protected:
   EmulatorModels() { boot(); }

   void boot() { chip->advance( GetParam().bootTime ); }

   template <typename Value>
   Bytes bytesOf( const Value& row ) {
      if ( !row.request.empty() ) {
         EXPECT_TRUE( sendTo( *chip, row.request ) ) << +row.request[0];
         chip->advance( std::chrono::milliseconds( 20 ) );
      }
      return readRegister( *chip, row.number, row.bytes.size() );
   }

   void expectResetValues() {
      for ( auto& row : GetParam().registers ) {
         EXPECT_EQ( bytesOf( row ), row.bytes ) << +row.number;
      }
   }

   std::unique_ptr<Chip> chip = makeChip( GetParam().part, GetParam().options );
};

INSTANTIATE_TEST_SUITE_P( Part, EmulatorModels, ::testing::ValuesIn( models ),
   []( auto& row ) { return std::string( row.param.part ); } );

} // namespace

TEST( EmulatorFactory, HasARowInThisFileForEachPart ) {
   std::vector<std::string> rows;
   for ( auto& model : models ) {
      rows.push_back( model.part );
   }
   EXPECT_THAT( rows, ::testing::UnorderedElementsAreArray( parts() ) );
}

TEST_P( EmulatorModels, KnowsItsPart ) { EXPECT_EQ( chip->part(), GetParam().part ); }

TEST_P( EmulatorModels, ReadsTheResetValuesAtPowerOn ) { expectResetValues(); }

TEST_P( EmulatorModels, AnswersAReadWithAsManyBytesAsAskedFor ) {
   for ( size_t count : { size_t { 0 }, size_t { 1 }, size_t { 1000 } } ) {
      EXPECT_EQ( receiveFrom( *chip, count ).size(), count );
   }
}

TEST_P( EmulatorModels, DoesNotAcknowledgeARegisterThatThePartLacks ) {
   for ( auto number : GetParam().outside ) {
      EXPECT_FALSE( sendTo( *chip, { number } ) ) << +number;
      EXPECT_FALSE( sendTo( *chip, { number, 0x00 } ) ) << +number;
   }
   expectResetValues();
}

TEST_P( EmulatorModels, GivesPhysicalValuesToItsRegisters ) {
   for ( auto& row : GetParam().physical ) {
      chip->set( row.property, row.value );
      EXPECT_EQ( bytesOf( row ), row.bytes ) << row.property << " " << row.value;
   }
}

TEST_P( EmulatorModels, ResetRestoresEveryRegister ) {
   bool changed = false;
   for ( auto& row : GetParam().registers ) {
      auto change = row.change.empty() ? Bytes { row.number, 0xA5 } : row.change;
      EXPECT_TRUE( sendTo( *chip, change ) ) << +row.number;
      changed = changed || bytesOf( row ) != row.bytes;
   }
   ASSERT_TRUE( changed ) << "nothing to restore";
   chip->reset();
   boot();
   expectResetValues();
}

TEST_P( EmulatorModels, HasAValueForEachProperty ) {
   EXPECT_FALSE( chip->properties().empty() );
   for ( auto& property : chip->properties() ) {
      EXPECT_NE( chip->get( property ), "" ) << property;
   }
}

TEST_P( EmulatorModels, RefusesAPropertyThatItLacks ) {
   EXPECT_THROW( chip->get( "colour" ), std::invalid_argument );
   EXPECT_THROW( chip->set( "colour", "1" ), std::invalid_argument );
   EXPECT_THROW( chip->get( "" ), std::invalid_argument );
}

TEST_P( EmulatorModels, RefusesAnOptionThatItLacks ) {
   EXPECT_THROW( makeChip( GetParam().part, { { "colour", "1" } } ), std::invalid_argument );
}

TEST( EmulatorFactory, RefusesAPartThatItLacks ) {
   try {
      makeChip( "pct2057" );
      FAIL() << "it made one";
   } catch ( const std::invalid_argument& error ) {
      EXPECT_STREQ( error.what(), "no part pct2057; did you mean pct2075?" );
   }
}

TEST( EmulatorGenericRegisters, AreAllThatAPointerCanReachUnlessASizeIsGiven ) {
   EXPECT_EQ( makeChip( "registers" )->properties().size(), 256U );
   EXPECT_EQ( makeChip( "registers", { { "size", "0x10" } } )->properties().size(), 16U );
}

TEST( EmulatorGenericRegisters, ReadAndWriteOneAfterTheOther ) {
   auto chip = makeChip( "registers", { { "size", "4" } } );
   EXPECT_TRUE( sendTo( *chip, { 1, 0x11, 0x22, 0x33 } ) );
   EXPECT_EQ( readRegister( *chip, 0, 4 ), ( Bytes { 0x00, 0x11, 0x22, 0x33 } ) );
}

TEST( EmulatorGenericRegisters, EndBehindTheLast ) {
   auto chip = makeChip( "registers" );
   EXPECT_FALSE( sendTo( *chip, { 0xFF, 0x77, 0x88 } ) );
   EXPECT_EQ( readRegister( *chip, 0xFF, 3 ), ( Bytes { 0x77, 0xFF, 0xFF } ) );
   EXPECT_EQ( readRegister( *chip, 0x00, 1 ), Bytes { 0x00 } );
}

TEST( EmulatorGenericRegisters, ShowOnTheBenchWhatWasWritten ) {
   auto chip = makeChip( "registers", { { "size", "0x11" } } );
   EXPECT_TRUE( sendTo( *chip, { 0x10, 0x5C } ) );
   EXPECT_EQ( chip->get( "r0x10" ), "0x5c" );
}

TEST( EmulatorGenericRegisters, RefuseOptionsThatCannotBe ) {
   const std::pair<Options, const char*> rows[] = {
      { { { "size", "0" } }, "size must be a whole number from 1 to 256, not 0" },
      { { { "size", "257" } }, "size must be a whole number from 1 to 256, not 257" },
      { { { "size", "many" } }, "size must be a whole number from 1 to 256, not many" },
      { { { "size", "4" }, { "r0x04", "1" } }, "no option r0x04" },
      { { { "r0x00", "256" } }, "r0x00 must be a whole number from 0 to 255, not 256" },
      { { { "r0x00", "-1" } }, "r0x00 must be a whole number from 0 to 255, not -1" },
      { { { "width", "2" } }, "no option width" },
      { { { "r0x0", "1" }, { "size", "1" } }, "no option r0x0; did you mean r0x00?" },
   };
   for ( auto& [options, words] : rows ) {
      try {
         makeChip( "registers", options );
         ADD_FAILURE() << "it took them: " << words;
      } catch ( const std::invalid_argument& error ) {
         EXPECT_STREQ( error.what(), words );
      }
   }
}
