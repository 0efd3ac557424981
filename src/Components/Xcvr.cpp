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

template < uint32_t kind >
const ql_xcvr_ops QsfpSignals< kind >::ops_ = {
   .size = sizeof( ql_xcvr_ops ),
   .kind = kind,
   .by_kind = { .qsfp = {
      .size = sizeof( ql_qsfp_ops ),
      .get_presence = getPresenceCallback,
      .get_mod_sel = getModSelCallback,
      .set_mod_sel = setModSelCallback,
      .get_lp_mode = getLpModeCallback,
      .set_lp_mode = setLpModeCallback,
      .get_reset = getResetCallback,
      .set_reset = setResetCallback,
      .get_interrupt = getInterruptCallback,
   } },
};

template <uint32_t kind>
QsfpSignals<kind>::QsfpSignals( uint32_t number ) : id( number ) {
   record.ops = &ops_;
   record.owner = this;
}

template <uint32_t kind>
ql_status QsfpSignals<kind>::getPresenceCallback( ql_xcvr* record ) {
   return enter<QsfpSignals>( "getPresenceCallback", record )->getPresence();
}

template <uint32_t kind>
ql_status QsfpSignals<kind>::getModSelCallback( ql_xcvr* record, int* value ) {
   return enter<QsfpSignals>( "getModSelCallback", record )->getModSel( value );
}

template <uint32_t kind>
ql_status QsfpSignals<kind>::setModSelCallback( ql_xcvr* record, int value ) {
   return enter<QsfpSignals>( "setModSelCallback", record, value )->setModSel( value );
}

template <uint32_t kind>
ql_status QsfpSignals<kind>::getLpModeCallback( ql_xcvr* record, int* value ) {
   return enter<QsfpSignals>( "getLpModeCallback", record )->getLpMode( value );
}

template <uint32_t kind>
ql_status QsfpSignals<kind>::setLpModeCallback( ql_xcvr* record, int value ) {
   return enter<QsfpSignals>( "setLpModeCallback", record, value )->setLpMode( value );
}

template <uint32_t kind>
ql_status QsfpSignals<kind>::getResetCallback( ql_xcvr* record, int* value ) {
   return enter<QsfpSignals>( "getResetCallback", record )->getReset( value );
}

template <uint32_t kind>
ql_status QsfpSignals<kind>::setResetCallback( ql_xcvr* record, int value ) {
   return enter<QsfpSignals>( "setResetCallback", record, value )->setReset( value );
}

template <uint32_t kind>
ql_status QsfpSignals<kind>::getInterruptCallback( ql_xcvr* record, int* value ) {
   return enter<QsfpSignals>( "getInterruptCallback", record )->getInterrupt( value );
}

template class QsfpSignals<QL_XCVR_QSFP>;
template class QsfpSignals<QL_XCVR_CMIS>;

} // namespace Component::LogicalDevice
