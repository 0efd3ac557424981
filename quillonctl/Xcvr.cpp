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

Reading setTxDisable( void* record, const ObjectEntry&, const Arguments& arguments ) {
   auto xcvr = static_cast<ql_xcvr*>( record );
   if ( !xcvr->ops || xcvr->ops->kind != QL_XCVR_SFP ) {
      return Calls::failed( Calls::failure( "set the transmit disable", QL_STATUS_NOT_SUPPORTED ) );
   }
   auto sfp = &xcvr->ops->by_kind.sfp;
   // The library writes the whole register, from its last poll. After a poll that failed it would change the
   // other modules' bits.
   int before = 0;
   auto polled = Calls::call( sfp, &ql_sfp_ops::get_tx_disable, xcvr, &before );
   if ( polled != QL_STATUS_OK ) {
      return Calls::failed( signalFailure( "set the transmit disable", polled ) );
   }
   auto isOn = arguments.front() == "on";
   auto status = Calls::call( sfp, &ql_sfp_ops::set_tx_disable, xcvr, isOn ? 1 : 0 );
   if ( status != QL_STATUS_OK ) {
      return Calls::failed( Calls::failure( "set the transmit disable", status ) );
   }
   return { { isOn }, "ok", {} };
}

const Command commands[] = {
   { "", {}, "Shows presence, transmit fault, loss of signal and transmit disable", fields,
      []( auto record, auto& xcvr, auto& ) { return read( record, xcvr ); } },
   { "tx-disable", { { .choices = { "on", "off" } } }, "Keeps the transmitter off, or lets it send",
      std::span( fields ).last( 1 ), setTxDisable, "transmit disable of {0} is {1}" },
};

} // namespace

const Kind xcvrKind = { "xcvr", "Transceivers", fields, Calls::add<ql_xcvr>, read, "xcvr",
   "Shows the signals of a transceiver, or sets its transmit disable", commands };
