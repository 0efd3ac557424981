#include "Components/Xcvr.h"

namespace Component::LogicalDevice {

static_assert( sizeof( ql_xcvr_ops ) == 80 );
static_assert( sizeof( ql_sfp_ops ) == 48 );
static_assert( sizeof( ql_qsfp_ops ) == 72 );

namespace {

/** The transceiver behind a record, after the trace that a getter begins with. */
template <typename Xcvr>
Xcvr* enter( const char* callback, ql_xcvr* record ) {
   auto xcvr = static_cast<Xcvr*>( record->owner );
   ql_trace( 4, "%s(%u)", callback, xcvr->id );
   return xcvr;
}

/** The same for a setter. */
template <typename Xcvr>
Xcvr* enter( const char* callback, ql_xcvr* record, int value ) {
   auto xcvr = static_cast<Xcvr*>( record->owner );
   ql_trace( 4, "%s(%u, %d)", callback, xcvr->id, value );
   return xcvr;
}

} // namespace

const ql_xcvr_ops SfpXcvr::ops_ = {
   .size = sizeof( ql_xcvr_ops ),
   .kind = QL_XCVR_SFP,
   .by_kind = { .sfp = {
      .size = sizeof( ql_sfp_ops ),
      .get_presence = getPresenceCallback,
      .get_tx_fault = getTxFaultCallback,
      .get_rx_los = getRxLosCallback,
      .get_tx_disable = getTxDisableCallback,
      .set_tx_disable = setTxDisableCallback,
   } },
};

SfpXcvr::SfpXcvr( uint32_t number ) : id( number ) {
   record.ops = &ops_;
   record.owner = this;
}

ql_status SfpXcvr::getPresenceCallback( ql_xcvr* record ) {
   return enter<SfpXcvr>( "getPresenceCallback", record )->getPresence();
}

ql_status SfpXcvr::getTxFaultCallback( ql_xcvr* record, int* value ) {
   return enter<SfpXcvr>( "getTxFaultCallback", record )->getTxFault( value );
}

ql_status SfpXcvr::getRxLosCallback( ql_xcvr* record, int* value ) {
   return enter<SfpXcvr>( "getRxLosCallback", record )->getRxLos( value );
}

ql_status SfpXcvr::getTxDisableCallback( ql_xcvr* record, int* value ) {
   return enter<SfpXcvr>( "getTxDisableCallback", record )->getTxDisable( value );
}

ql_status SfpXcvr::setTxDisableCallback( ql_xcvr* record, int value ) {
   return enter<SfpXcvr>( "setTxDisableCallback", record, value )->setTxDisable( value );
}

namespace {

/** The table of a class that has the signals of a QSFP cage. */
template <typename Xcvr>
constexpr ql_xcvr_ops qsfpOps( uint32_t kind ) {
   return {
      .size = sizeof( ql_xcvr_ops ),
      .kind = kind,
      .by_kind = { .qsfp = {
         .size = sizeof( ql_qsfp_ops ),
         .get_presence = Xcvr::getPresenceCallback,
         .get_mod_sel = Xcvr::getModSelCallback,
         .set_mod_sel = Xcvr::setModSelCallback,
         .get_lp_mode = Xcvr::getLpModeCallback,
         .set_lp_mode = Xcvr::setLpModeCallback,
         .get_reset = Xcvr::getResetCallback,
         .set_reset = Xcvr::setResetCallback,
         .get_interrupt = Xcvr::getInterruptCallback,
      } },
   };
}

} // namespace

constinit const ql_xcvr_ops QsfpXcvr::ops_ = qsfpOps<QsfpXcvr>( QL_XCVR_QSFP );

QsfpXcvr::QsfpXcvr( uint32_t number ) : id( number ) {
   record.ops = &ops_;
   record.owner = this;
}

ql_status QsfpXcvr::getPresenceCallback( ql_xcvr* record ) {
   return enter<QsfpXcvr>( "getPresenceCallback", record )->getPresence();
}

ql_status QsfpXcvr::getModSelCallback( ql_xcvr* record, int* value ) {
   return enter<QsfpXcvr>( "getModSelCallback", record )->getModSel( value );
}

ql_status QsfpXcvr::setModSelCallback( ql_xcvr* record, int value ) {
   return enter<QsfpXcvr>( "setModSelCallback", record, value )->setModSel( value );
}

ql_status QsfpXcvr::getLpModeCallback( ql_xcvr* record, int* value ) {
   return enter<QsfpXcvr>( "getLpModeCallback", record )->getLpMode( value );
}

ql_status QsfpXcvr::setLpModeCallback( ql_xcvr* record, int value ) {
   return enter<QsfpXcvr>( "setLpModeCallback", record, value )->setLpMode( value );
}

ql_status QsfpXcvr::getResetCallback( ql_xcvr* record, int* value ) {
   return enter<QsfpXcvr>( "getResetCallback", record )->getReset( value );
}

ql_status QsfpXcvr::setResetCallback( ql_xcvr* record, int value ) {
   return enter<QsfpXcvr>( "setResetCallback", record, value )->setReset( value );
}

ql_status QsfpXcvr::getInterruptCallback( ql_xcvr* record, int* value ) {
   return enter<QsfpXcvr>( "getInterruptCallback", record )->getInterrupt( value );
}

constinit const ql_xcvr_ops CmisXcvr::ops_ = qsfpOps<CmisXcvr>( QL_XCVR_CMIS );

CmisXcvr::CmisXcvr( uint32_t number ) : id( number ) {
   record.ops = &ops_;
   record.owner = this;
}

ql_status CmisXcvr::getPresenceCallback( ql_xcvr* record ) {
   return enter<CmisXcvr>( "getPresenceCallback", record )->getPresence();
}

ql_status CmisXcvr::getModSelCallback( ql_xcvr* record, int* value ) {
   return enter<CmisXcvr>( "getModSelCallback", record )->getModSel( value );
}

ql_status CmisXcvr::setModSelCallback( ql_xcvr* record, int value ) {
   return enter<CmisXcvr>( "setModSelCallback", record, value )->setModSel( value );
}

ql_status CmisXcvr::getLpModeCallback( ql_xcvr* record, int* value ) {
   return enter<CmisXcvr>( "getLpModeCallback", record )->getLpMode( value );
}

ql_status CmisXcvr::setLpModeCallback( ql_xcvr* record, int value ) {
   return enter<CmisXcvr>( "setLpModeCallback", record, value )->setLpMode( value );
}

ql_status CmisXcvr::getResetCallback( ql_xcvr* record, int* value ) {
   return enter<CmisXcvr>( "getResetCallback", record )->getReset( value );
}

ql_status CmisXcvr::setResetCallback( ql_xcvr* record, int value ) {
   return enter<CmisXcvr>( "setResetCallback", record, value )->setReset( value );
}

ql_status CmisXcvr::getInterruptCallback( ql_xcvr* record, int* value ) {
   return enter<CmisXcvr>( "getInterruptCallback", record )->getInterrupt( value );
}

} // namespace Component::LogicalDevice
