#ifndef DRIVERS_SELVANE_SELVANE_XCVR_H
#define DRIVERS_SELVANE_SELVANE_XCVR_H

#include "Components/HardwareDevice.h"
#include "Components/Xcvr.h"

#include <cstdint>
#include <map>

namespace Drivers {

/**
 * The CPLD logic that carries the low-speed signals of the SFP cages, each signal a bit of an 8-bit register.
 *
 * All registers that a cage names are polled once a second in one batch. Reads are answered from that cache,
 * without traffic; after a poll that failed they fail until one succeeds. A write goes straight to the
 * hardware, changes one bit against the cache, and then updates the cache.
 */
class SelvaneXcvr : public Component::PollingDevice<Component::HardwareDevice> {
public:
   /** Where a signal is found. */
   struct Signal {
      uint8_t reg;
      uint8_t bit;
      bool activeHigh;
   };

   class SfpXcvr : public Component::LogicalDevice::SfpXcvr {
   public:
      SfpXcvr(
         SelvaneXcvr* device, uint32_t id, Signal presence, Signal rxLos, Signal txFault, Signal txDisable );
      /** QL_STATUS_OK with a module in the cage, QL_STATUS_NOT_PRESENT without. */
      ql_status getPresence() override;
      ql_status getTxFault( int* value ) override;
      ql_status getRxLos( int* value ) override;
      ql_status getTxDisable( int* value ) override;
      ql_status setTxDisable( int value ) override;

      SelvaneXcvr* device;
      uint8_t presenceReg, presenceBit;
      bool presenceActiveHigh;
      uint8_t rxLosReg, rxLosBit;
      bool rxLosActiveHigh;
      uint8_t txFaultReg, txFaultBit;
      bool txFaultActiveHigh;
      uint8_t txDisableReg, txDisableBit;
      bool txDisableActiveHigh;
   };

   static Component::HardwareDevice* create( const DriverArgs& args, Ham::Ham* ham );
   /** Starts polling. A host whose timer can't be set ends the process. */
   void init() override;
   /** Driver arguments: "Reg", "Bit" and "ActiveHigh" of presence, rxLos, txFault and txDisable. */
   Component::LogicalDevice::SfpXcvr* newSfpXcvr( uint32_t id, const DriverArgs& args ) override;
   std::map<uint32_t, Utils::ExpectedVal>* expectedValues() override;
   void pollCallback() override;

   void updateRegisterCache();
   /** QL_STATUS_IO_ERROR after a failed poll; the value is not written then. */
   ql_status getRegisterBit( uint8_t reg, uint8_t bit, int* value, bool activeHigh );
   ql_status setRegisterBit( uint8_t reg, uint8_t bit, int value, bool activeHigh );

   /** The last poll has failed. */
   bool cacheStale = false;
   /** Last known content by register number. A register enters when a cage names it, and never leaves. */
   std::map<uint8_t, uint8_t> registerCache;

   static std::map<uint32_t, Utils::ExpectedVal> values;

private:
   Signal newSignal( const DriverArgs& args, const std::string& name );
};

} // namespace Drivers

#endif
