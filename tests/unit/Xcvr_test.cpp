#include "Components/Xcvr.h"

#include "Assertion.h"
#include "FakeDriver.h"
#include "Ham/Ham.h"
#include "HostServices.h"
#include "MockDevices.h"
#include "ObjectLayout.h"

#include <stdexcept>

using Component::LogicalDevice::CmisXcvr;
using Component::LogicalDevice::QsfpXcvr;
using Component::LogicalDevice::SfpXcvr;
using Host::TraceLine;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Return;

namespace {

class LogicalSfpXcvr : public Host::Test {
protected:
   const ql_sfp_ops& ops() const { return xcvr.record.ops->by_kind.sfp; }

   testing::StrictMock<MockSfpXcvr> xcvr { 4000000000 };
   int value = 0;
};

} // namespace

TEST_F( LogicalSfpXcvr, HasItsIdBeforeTheRecord ) {
   SfpXcvr& base = xcvr;
   EXPECT_EQ( Layout::offsetOf( base, base.id ), 8U );
   EXPECT_EQ( Layout::offsetOf( base, base.record ), 16U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.reserved ), 0U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.ops ), 8U );
   EXPECT_EQ( Layout::offsetOf( base.record, base.record.owner ), 16U );
   EXPECT_EQ( sizeof( SfpXcvr ), 40U );
}

TEST_F( LogicalSfpXcvr, LeavesTheFirstWordOfItsRecordAlone ) {
   Layout::InFilledMemory<MockSfpXcvr> filled( 5U );
   EXPECT_EQ( filled->id, 5U );
   EXPECT_EQ( filled->record.reserved, filled.pattern );
   EXPECT_EQ( filled->record.ops, &SfpXcvr::ops_ );
   EXPECT_EQ( filled->record.owner, static_cast<SfpXcvr*>( &*filled ) );
}

TEST_F( LogicalSfpXcvr, HasATableWithFiveFunctionsAndThreeNulls ) {
   EXPECT_EQ( SfpXcvr::ops_.size, 80U );
   EXPECT_EQ( SfpXcvr::ops_.kind, 0U );
   EXPECT_EQ( QL_XCVR_SFP, 0 );
   EXPECT_EQ( MockSfpXcvr( 1 ).record.ops, MockSfpXcvr( 2 ).record.ops );
   EXPECT_THAT( Layout::wordsOf( SfpXcvr::ops_ ),
      ElementsAre( 80, 48, SfpXcvr::getPresenceCallback, SfpXcvr::getTxFaultCallback,
         SfpXcvr::getRxLosCallback, SfpXcvr::getTxDisableCallback, SfpXcvr::setTxDisableCallback, nullptr,
         nullptr, nullptr ) );
}

TEST_F( LogicalSfpXcvr, HasItsOperationsInTheirSlots ) {
   EXPECT_EQ( Layout::slotOf( &SfpXcvr::getPresence ), 2U );
   EXPECT_EQ( Layout::slotOf( &SfpXcvr::getTxFault ), 3U );
   EXPECT_EQ( Layout::slotOf( &SfpXcvr::getRxLos ), 4U );
   EXPECT_EQ( Layout::slotOf( &SfpXcvr::getTxDisable ), 5U );
   EXPECT_EQ( Layout::slotOf( &SfpXcvr::setTxDisable ), 6U );
}

TEST_F( LogicalSfpXcvr, PassesThePresenceCallbackOn ) {
   EXPECT_CALL( xcvr, getPresence ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops().get_presence( &xcvr.record ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "getPresenceCallback(4000000000)" } ) );
}

TEST_F( LogicalSfpXcvr, PassesTheTxFaultCallbackOn ) {
   EXPECT_CALL( xcvr, getTxFault( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops().get_tx_fault( &xcvr.record, &value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "getTxFaultCallback(4000000000)" } ) );
}

TEST_F( LogicalSfpXcvr, PassesTheRxLosCallbackOn ) {
   EXPECT_CALL( xcvr, getRxLos( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops().get_rx_los( &xcvr.record, &value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "getRxLosCallback(4000000000)" } ) );
}

TEST_F( LogicalSfpXcvr, PassesTheTxDisableCallbackOn ) {
   EXPECT_CALL( xcvr, getTxDisable( &value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops().get_tx_disable( &xcvr.record, &value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "getTxDisableCallback(4000000000)" } ) );
}

TEST_F( LogicalSfpXcvr, PassesTheSetTxDisableCallbackOn ) {
   EXPECT_CALL( xcvr, setTxDisable( -2 ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( ops().set_tx_disable( &xcvr.record, -2 ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "setTxDisableCallback(4000000000, -2)" } ) );
}

namespace {

/** For QsfpXcvr and CmisXcvr, which differ in the kind word alone. */
template <typename Xcvr>
class LogicalQsfpXcvr : public Host::Test {
protected:
   const ql_qsfp_ops& ops() const { return xcvr.record.ops->by_kind.qsfp; }

   testing::StrictMock<MockQsfpSignals<Xcvr>> xcvr { 4000000000 };
   int value = 0;
};

using QsfpAndCmis = testing::Types<QsfpXcvr, CmisXcvr>;
TYPED_TEST_SUITE( LogicalQsfpXcvr, QsfpAndCmis );

} // namespace

TYPED_TEST( LogicalQsfpXcvr, HasItsIdBeforeTheRecord ) {
   TypeParam& base = this->xcvr;
   EXPECT_EQ( Layout::offsetOf( base, base.id ), 8U );
   EXPECT_EQ( Layout::offsetOf( base, base.record ), 16U );
   EXPECT_EQ( sizeof( TypeParam ), 40U );
}

TYPED_TEST( LogicalQsfpXcvr, LeavesTheFirstWordOfItsRecordAlone ) {
   Layout::InFilledMemory<MockQsfpSignals<TypeParam>> filled( 5U );
   EXPECT_EQ( filled->id, 5U );
   EXPECT_EQ( filled->record.reserved, filled.pattern );
   EXPECT_EQ( filled->record.ops, &TypeParam::ops_ );
   EXPECT_EQ( filled->record.owner, static_cast<TypeParam*>( &*filled ) );
}

TYPED_TEST( LogicalQsfpXcvr, HasATableWithEightFunctions ) {
   constexpr uint64_t kind = std::is_same_v<TypeParam, QsfpXcvr> ? 1 : 2;
   EXPECT_EQ( TypeParam::ops_.size, 80U );
   EXPECT_EQ( TypeParam::ops_.kind, kind );
   EXPECT_EQ( MockQsfpSignals<TypeParam>( 1 ).record.ops, MockQsfpSignals<TypeParam>( 2 ).record.ops );
   EXPECT_THAT( Layout::wordsOf( TypeParam::ops_ ),
      ElementsAre( kind << 32 | 80, 72, TypeParam::getPresenceCallback, TypeParam::getModSelCallback,
         TypeParam::setModSelCallback, TypeParam::getLpModeCallback, TypeParam::setLpModeCallback,
         TypeParam::getResetCallback, TypeParam::setResetCallback, TypeParam::getInterruptCallback ) );
}

TYPED_TEST( LogicalQsfpXcvr, HasItsOperationsInTheirSlots ) {
   EXPECT_EQ( Layout::slotOf( &TypeParam::getPresence ), 2U );
   EXPECT_EQ( Layout::slotOf( &TypeParam::getModSel ), 3U );
   EXPECT_EQ( Layout::slotOf( &TypeParam::setModSel ), 4U );
   EXPECT_EQ( Layout::slotOf( &TypeParam::getLpMode ), 5U );
   EXPECT_EQ( Layout::slotOf( &TypeParam::setLpMode ), 6U );
   EXPECT_EQ( Layout::slotOf( &TypeParam::getReset ), 7U );
   EXPECT_EQ( Layout::slotOf( &TypeParam::setReset ), 8U );
   EXPECT_EQ( Layout::slotOf( &TypeParam::getInterrupt ), 9U );
}

TYPED_TEST( LogicalQsfpXcvr, PassesThePresenceCallbackOn ) {
   EXPECT_CALL( this->xcvr, getPresence ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( this->ops().get_presence( &this->xcvr.record ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "getPresenceCallback(4000000000)" } ) );
}

TYPED_TEST( LogicalQsfpXcvr, PassesTheModSelCallbackOn ) {
   EXPECT_CALL( this->xcvr, getModSel( &this->value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( this->ops().get_mod_sel( &this->xcvr.record, &this->value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "getModSelCallback(4000000000)" } ) );
}

TYPED_TEST( LogicalQsfpXcvr, PassesTheSetModSelCallbackOn ) {
   EXPECT_CALL( this->xcvr, setModSel( 1 ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( this->ops().set_mod_sel( &this->xcvr.record, 1 ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "setModSelCallback(4000000000, 1)" } ) );
}

TYPED_TEST( LogicalQsfpXcvr, PassesTheLpModeCallbackOn ) {
   EXPECT_CALL( this->xcvr, getLpMode( &this->value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( this->ops().get_lp_mode( &this->xcvr.record, &this->value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "getLpModeCallback(4000000000)" } ) );
}

TYPED_TEST( LogicalQsfpXcvr, PassesTheSetLpModeCallbackOn ) {
   EXPECT_CALL( this->xcvr, setLpMode( -1 ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( this->ops().set_lp_mode( &this->xcvr.record, -1 ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "setLpModeCallback(4000000000, -1)" } ) );
}

TYPED_TEST( LogicalQsfpXcvr, PassesTheResetCallbackOn ) {
   EXPECT_CALL( this->xcvr, getReset( &this->value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( this->ops().get_reset( &this->xcvr.record, &this->value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "getResetCallback(4000000000)" } ) );
}

TYPED_TEST( LogicalQsfpXcvr, PassesTheSetResetCallbackOn ) {
   EXPECT_CALL( this->xcvr, setReset( 0 ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( this->ops().set_reset( &this->xcvr.record, 0 ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "setResetCallback(4000000000, 0)" } ) );
}

TYPED_TEST( LogicalQsfpXcvr, PassesTheInterruptCallbackOn ) {
   EXPECT_CALL( this->xcvr, getInterrupt( &this->value ) ).WillOnce( Return( oddStatus ) );
   EXPECT_EQ( this->ops().get_interrupt( &this->xcvr.record, &this->value ), oddStatus );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 4, "getInterruptCallback(4000000000)" } ) );
}

namespace {

class AddedXcvr : public Host::Test {
protected:
   ql_xcvr* add( const std::string& driverArgs ) {
      return ql_xcvr_add( deviceText( "Fake", driverArgs ).c_str() );
   }

   FakeDriver driver;
};

class AddedXcvrDeathTest : public AddedXcvr {
protected:
   AddedXcvrDeathTest() { Host::echoTraces = true; }
};

} // namespace

TEST_F( AddedXcvr, IsOfTheKindThatItsTypeNames ) {
   struct {
      std::string type;
      std::string call;
      uint32_t kind;
   } const rows[] = {
      { "qsfp", "newQsfpXcvr 3", QL_XCVR_QSFP },
      { "qsfp+", "newQsfpXcvr 3", QL_XCVR_QSFP },
      { "sfp", "newSfpXcvr 3", QL_XCVR_SFP },
      { "sfp+", "newSfpXcvr 3", QL_XCVR_SFP },
      { "qsfpDd", "newCmisXcvr 3", QL_XCVR_CMIS },
      { "qsfpCmis", "newCmisXcvr 3", QL_XCVR_CMIS },
   };

   MockSfpXcvr sfp { 3 };
   MockQsfpXcvr qsfp { 3 };
   MockCmisXcvr cmis { 3 };
   driver.device.sfpXcvr = &sfp;
   driver.device.qsfpXcvr = &qsfp;
   driver.device.cmisXcvr = &cmis;
   for ( auto& [type, call, kind] : rows ) {
      SCOPED_TRACE( type );
      driver.device.calls.clear();
      auto record = add( fmt::format( R"({{ "id": 3, "type": "{}" }})", type ) );
      ASSERT_NE( record, nullptr );
      EXPECT_EQ( record->ops->kind, kind );
      EXPECT_THAT( driver.device.calls, ElementsAre( call ) );
   }
}

TEST_F( AddedXcvr, SaysWhichKindTheDriverFailedToMake ) {
   struct {
      std::string type;
      std::string line;
   } const rows[] = {
      { "qsfp", "newQsfpXcvr() failed" },
      { "qsfp+", "newQsfpXcvr() failed" },
      { "sfp", "newSfpXcvr() failed" },
      { "sfp+", "newSfpXcvr() failed" },
      { "qsfpDd", "newCmisXcvr() failed" },
      { "qsfpCmis", "newCmisXcvr() failed" },
   };

   for ( auto& [type, line] : rows ) {
      SCOPED_TRACE( type );
      EXPECT_EQ( add( fmt::format( R"({{ "id": 3, "type": "{}" }})", type ) ), nullptr );
      EXPECT_EQ( Host::traces.back(), ( TraceLine { 0, line } ) );
   }
}

TEST_F( AddedXcvr, TakesItsIdFromTheStartOfTheText ) {
   struct {
      std::string json;
      std::string call;
   } const rows[] = {
      { "12", "newSfpXcvr 12" },
      { "\"12\"", "newSfpXcvr 12" },
      { "\"12abc\"", "newSfpXcvr 12" },
      { "\"0x10\"", "newSfpXcvr 0" },
      { "\" 7\"", "newSfpXcvr 7" },
      { "\"010\"", "newSfpXcvr 10" },
      { "1.5", "newSfpXcvr 1" },
      { "2147483647", "newSfpXcvr 2147483647" },
      { "-1", "newSfpXcvr 4294967295" },
   };

   for ( auto& [json, call] : rows ) {
      driver.device.calls.clear();
      add( fmt::format( R"({{ "id": {}, "type": "sfp" }})", json ) );
      EXPECT_THAT( driver.device.calls, ElementsAre( call ) ) << json;
   }
}

TEST_F( AddedXcvr, ThrowsForAnIdThatIsNoNumber ) {
   for ( std::string json : { "\"\"", "\"abc12\"", "true", "[ 1 ]", "5000000000" } ) {
      SCOPED_TRACE( json );
      try {
         add( fmt::format( R"({{ "id": {}, "type": "sfp" }})", json ) );
         ADD_FAILURE() << "nothing was thrown";
      } catch ( const std::invalid_argument& exception ) {
         EXPECT_STREQ( exception.what(), "stoi" );
      }
      EXPECT_TRUE( driver.device.calls.empty() );
      EXPECT_EQ( Component::DeviceBase::devices.count( 7 ), 1U ) << "the device is kept";
   }
}

TEST_F( AddedXcvr, ThrowsForAnIdBeyond32Bits ) {
   for ( std::string json : { "2147483648", "\"-2147483649\"", "\"99999999999999999999\"" } ) {
      SCOPED_TRACE( json );
      try {
         add( fmt::format( R"({{ "id": {}, "type": "sfp" }})", json ) );
         ADD_FAILURE() << "nothing was thrown";
      } catch ( const std::out_of_range& exception ) {
         EXPECT_STREQ( exception.what(), "stoi" );
      }
   }
}

TEST_F( AddedXcvr, LooksAtTheIdBeforeTheType ) {
   EXPECT_THROW( add( R"({ "id": "none" })" ), std::invalid_argument );
}

TEST_F( AddedXcvr, IsAskedForBeforeItsArgumentsAreLookedAt ) {
   EXPECT_EQ( ql_xcvr_add( deviceText( "Missing" ).c_str() ), nullptr );
   EXPECT_EQ( Host::traces.back(), ( TraceLine { 0, "DeviceBase::create() failed" } ) );
}

TEST_F( AddedXcvrDeathTest, WithoutAnIdEndsTheProcess ) {
   for ( std::string args : { "{}", R"({ "type": "sfp" })", R"({ "id": null, "type": "sfp" })" } ) {
      EXPECT_DEATH(
         add( args ), AllOf( HasSubstr( "0: No id argument given for Xcvr\n" ), assertionFailed( "false" ) ) )
         << args;
   }
}

TEST_F( AddedXcvrDeathTest, WithoutATypeEndsTheProcess ) {
   EXPECT_DEATH( add( R"({ "id": 3 })" ),
      AllOf( HasSubstr( "0: No type argument given for Xcvr\n" ), assertionFailed( "false" ) ) );
}

TEST_F( AddedXcvrDeathTest, OfAnUnknownTypeEndsTheProcess ) {
   for ( std::string type : { "QSFP", "SFP", "Sfp+", "qsfpdd", "qsfpcmis", "sfp ", "sfp28", "" } ) {
      EXPECT_DEATH( add( fmt::format( R"({{ "id": 3, "type": "{}" }})", type ) ),
         AllOf( HasSubstr( "0: Xcvr type " + type + " not supported\n" ), assertionFailed( "false" ) ) );
   }
}
