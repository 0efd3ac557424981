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

/** Its signals are those of a CMIS cage too; a host tells the two by the kind in their tables. */
class QsfpXcvr {
public:
   explicit QsfpXcvr( uint32_t id );
   virtual ~QsfpXcvr() = default;
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

class CmisXcvr {
public:
   explicit CmisXcvr( uint32_t id );
   virtual ~CmisXcvr() = default;
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

} // namespace Component::LogicalDevice

#endif
