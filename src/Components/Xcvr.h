#ifndef COMPONENTS_XCVR_H
#define COMPONENTS_XCVR_H

#include "quillon/ql.h"

#include <cstdint>

/** The low-speed signals of a module cage as the host sees them, one class for each kind of module. */
namespace Component::LogicalDevice {

class SfpXcvr {
public:
   explicit SfpXcvr( uint32_t id );
   virtual ~SfpXcvr() = default;
   virtual ql_status getPresence() = 0;
   virtual ql_status getTxFault( int* value ) = 0;
   virtual ql_status getRxLos( int* value ) = 0;
   virtual ql_status getTxDisable( int* value ) = 0;
   virtual ql_status setTxDisable( int value ) = 0;

   static ql_status getPresenceCallback( ql_xcvr* record );
   static ql_status getTxFaultCallback( ql_xcvr* record, int* value );
   static ql_status getRxLosCallback( ql_xcvr* record, int* value );
   static ql_status getTxDisableCallback( ql_xcvr* record, int* value );
   static ql_status setTxDisableCallback( ql_xcvr* record, int value );
   static const ql_xcvr_ops ops_;

   uint32_t id;
   ql_xcvr record;
};

/** What QSFP and CMIS cages have in common: all but the kind in their table. */
template <uint32_t kind>
class QsfpSignals {
public:
   explicit QsfpSignals( uint32_t id );
   virtual ~QsfpSignals() = default;
   virtual ql_status getPresence() = 0;
   virtual ql_status getModSel( int* value ) = 0;
   virtual ql_status setModSel( int value ) = 0;
   virtual ql_status getLpMode( int* value ) = 0;
   virtual ql_status setLpMode( int value ) = 0;
   virtual ql_status getReset( int* value ) = 0;
   virtual ql_status setReset( int value ) = 0;
   virtual ql_status getInterrupt( int* value ) = 0;

   static ql_status getPresenceCallback( ql_xcvr* record );
   static ql_status getModSelCallback( ql_xcvr* record, int* value );
   static ql_status setModSelCallback( ql_xcvr* record, int value );
   static ql_status getLpModeCallback( ql_xcvr* record, int* value );
   static ql_status setLpModeCallback( ql_xcvr* record, int value );
   static ql_status getResetCallback( ql_xcvr* record, int* value );
   static ql_status setResetCallback( ql_xcvr* record, int value );
   static ql_status getInterruptCallback( ql_xcvr* record, int* value );
   static const ql_xcvr_ops ops_;

   uint32_t id;
   ql_xcvr record;
};

class QsfpXcvr : public QsfpSignals<QL_XCVR_QSFP> {
public:
   using QsfpSignals::QsfpSignals;
};

class CmisXcvr : public QsfpSignals<QL_XCVR_CMIS> {
public:
   using QsfpSignals::QsfpSignals;
};

extern template class QsfpSignals<QL_XCVR_QSFP>;
extern template class QsfpSignals<QL_XCVR_CMIS>;

} // namespace Component::LogicalDevice

#endif
