#include "Calls.h"

namespace {

constexpr Field fields[] = {
   { "present", "PRESENT" },
   { "tx_fault", "TX FAULT" },
   { "rx_los", "RX LOS" },
   { "tx_disable", "TX DISABLE" },
};

/** Signals are answered from the last poll of their registers, which has told why it failed. */
Failure signalFailure( std::string_view action, ql_status status ) {
   auto failure = Calls::failure( action, status );
   if ( status == QL_STATUS_IO_ERROR ) {
      auto reason = HostServices::lastPollFailure();
      failure.message =
         fmt::format( "cannot {}: the last poll failed{}{}", action, reason.empty() ? "" : ": ", reason );
   }
   return failure;
}

struct Signal {
   std::string_view action;
   ql_status ( *ql_sfp_ops::*get )( ql_xcvr* xcvr, int* value );
};

constexpr Signal signals[] = {
   { "read the transmit fault", &ql_sfp_ops::get_tx_fault },
   { "read the loss of signal", &ql_sfp_ops::get_rx_los },
   { "read the transmit disable", &ql_sfp_ops::get_tx_disable },
};

ql_status presenceOf( ql_xcvr* xcvr ) {
   if ( !xcvr->ops ) {
      return QL_STATUS_NOT_SUPPORTED;
   }
   auto& tables = xcvr->ops->by_kind;
   return xcvr->ops->kind == QL_XCVR_SFP ? Calls::call( &tables.sfp, &ql_sfp_ops::get_presence, xcvr )
                                         : Calls::call( &tables.qsfp, &ql_qsfp_ops::get_presence, xcvr );
}

Reading read( void* record, const ObjectEntry& ) {
   Reading reading { { {}, {}, {}, {} }, "failed", {} };
   auto xcvr = static_cast<ql_xcvr*>( record );
   if ( !xcvr ) {
      return reading;
   }
   auto presence = presenceOf( xcvr );
   if ( presence != QL_STATUS_OK && presence != QL_STATUS_NOT_PRESENT ) {
      reading.failure = signalFailure( "read the presence", presence );
      return reading;
   }
   reading.values[0] = presence == QL_STATUS_OK;
   if ( xcvr->ops->kind == QL_XCVR_SFP ) {
      for ( size_t i = 0; i < std::size( signals ); ++i ) {
         int value = 0;
         auto status = Calls::call( &xcvr->ops->by_kind.sfp, signals[i].get, xcvr, &value );
         if ( status != QL_STATUS_OK ) {
            reading.failure = signalFailure( signals[i].action, status );
            return reading;
         }
         reading.values[i + 1] = value != 0;
      }
   }
   reading.state = presence == QL_STATUS_NOT_PRESENT    ? "absent"
                   : reading.values[1] == Value( true ) ? "fault"
                                                        : "ok";
   return reading;
}

} // namespace

const Kind xcvrKind = { "xcvr", "Transceivers", fields, Calls::add<ql_xcvr>, read };
