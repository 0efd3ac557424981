#ifndef HAM_QUILLON_SMBUS_HAM_H
#define HAM_QUILLON_SMBUS_HAM_H

#include "Ham/Ham.h"
#include "Ham/HamAddress.h"

#include "smbus.pb.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/** PCI address of an accelerator; 0 means none. */
struct PCIAddress {
   uint32_t value;
};

namespace Component::LogicalDevice {
class Mux;
}

namespace Ham {

/**
 * Register access on real hardware: a batch becomes one transaction over the process's socket to the SMBus
 * server. Each device has a Ham of its own with its address in it, and the requests that select its
 * multiplexer channels at the head of every transaction.
 *
 * A transport that fails gives QL_STATUS_IO_ERROR, a transaction that the server refuses or answers with
 * another number of entries QL_STATUS_FAILED. Nothing is retried here.
 */
class QuillonSmbusHam : public Ham {
public:
   /** The Ham of a device of the topology, or null if it has none such. */
   static Ham* create( const Topology::Topology& topology, const Drivers::DriverArgs& args );
   /** A Ham for a chip address on a bus of the topology; the caller runs init. Null for a bus outside the
    * tree. */
   static Ham* createOnBus(
      const Topology::Topology& topology, const Topology::Bus* bus, const uint32_t& address );
   /** A Ham without a topology and without multiplexers; the caller runs init. */
   static Ham* createFromAddress( const HamAddress& address, const PCIAddress& pci );

   /** Builds the fixed head that selects the multiplexer channels, outermost first. */
   void init() override;
   void prepare() override;
   ql_status execute() override;
   ResponseId addRecvByte() override;
   ResponseId addRead8( Register reg, uint8_t regSize ) override;
   ResponseId addRead16( Register reg, uint8_t regSize ) override;
   ResponseId addRead( Register reg, uint32_t size, bool noStop, uint8_t regSize ) override;
   ResponseId addReadBlock( Register reg, uint8_t regSize ) override;
   /** The value travels as the register number. */
   void addSendByte( uint8_t value, bool flag ) override;
   void addWrite8( Register reg, uint8_t value, bool flag, uint8_t regSize ) override;
   void addWrite16( Register reg, uint16_t value, bool flag, uint8_t regSize ) override;
   void addWrite( Register reg, const void* data, uint32_t size, bool flag, uint8_t regSize ) override;
   void addWriteBlock( Register reg, const void* data, uint32_t size, bool flag, uint8_t regSize ) override;
   ResponseId addProcessCall( Register reg, uint16_t value, uint8_t regSize ) override;
   uint8_t get8( ResponseId id ) override;
   uint16_t get16( ResponseId id ) override;
   /** Everything that came, whatever its length. */
   std::string getBlock( ResponseId id, size_t size ) override;

   /** Chip address and bus, 7 bits each. */
   virtual void setAddress( uint8_t value );
   virtual uint8_t getAddress() const;
   virtual void setBus( uint8_t value );
   virtual uint8_t getBus() const;

   /**
    * Fills one request and counts it. The address word keeps the register, and once a read has asked for
    * `noStop`, every later request of this Ham carries that bit.
    */
   void requestInit( Smbus::Request* request, Register reg, Smbus::RequestType type, size_t size, bool flag,
      bool noStop, uint8_t regSize );
   /** The answer to a request, counted from the first one behind the fixed head. */
   const Smbus::Response& response( ResponseId idx ) const;

   /** Length of the fixed head. */
   uint32_t prepareRequestCount_ = 0;
   ResponseId responseId = 0;
   HamAddress address {};
   uint32_t pciAddress = 0;
   Smbus::TransactionRequest request_;
   Smbus::TransactionResponse response_;
   Smbus::MasterType masterType = Smbus::SIMULATED;
   /** Outermost first. */
   std::vector<Component::LogicalDevice::Mux*> muxes;
};

} // namespace Ham

#endif
