#ifndef HAM_HAM_H
#define HAM_HAM_H

#include "Ham/ExpectedVal.h"
#include "Topology.h"

#include "quillon/ql.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <string>

/** What an operation throws that a class declares and does not offer. */
class NotImplementedException : public std::exception {
public:
   explicit NotImplementedException( const std::string& operation );
   const char* what() const noexcept override;

private:
   std::string text_;
};

namespace Utils {

/** Whether the process runs in simulation: 0 or 1, and -1 until that is decided. */
extern int isInSimulation;

/** Decides by the environment at the first call; the answer holds for the life of the process. */
bool simulationIsOn();

} // namespace Utils

namespace Ham {

/**
 * Hardware access method: the one way in which a driver reaches a register.
 *
 * Deferred model, in this order: prepare, any number of add operations, execute, and after QL_STATUS_OK the
 * get operations with the ids that the reads gave. The one-shot forms do the whole round for one register.
 * `regSize` is the number of bytes of the register number. A Ham lives until the process ends.
 */
class Ham {
public:
   using Register = uint32_t;
   /** Position of a queued request in the current batch, from 0. */
   using ResponseId = uint32_t;
   /** Also what the counter holds after prepare, so that the first request gets 0. */
   static constexpr ResponseId INVALID_RESPONSE_ID = 0xFFFFFFFF;

   uint32_t retryCount = 0;
   bool retryCountIsSet = false;

   /** Runs once, after a factory has made the Ham. */
   virtual void init();
   virtual void prepare() = 0;
   /** Runs the batch. Nothing is sent before. */
   virtual ql_status execute() = 0;
   virtual ResponseId addRecvByte();
   virtual ResponseId addRead8( Register reg, uint8_t regSize );
   virtual ResponseId addRead16( Register reg, uint8_t regSize );
   virtual ResponseId addRead32( Register reg, uint8_t regSize );
   /** @param noStop asks for the form in which the write before the read is not followed by a stop */
   virtual ResponseId addRead( Register reg, uint32_t size, bool noStop, uint8_t regSize );
   virtual ResponseId addReadBlock( Register reg, uint8_t regSize );
   /** @param flag is passed on to the server untouched, here and below */
   virtual void addSendByte( uint8_t value, bool flag );
   virtual void addWrite8( Register reg, uint8_t value, bool flag, uint8_t regSize );
   /** On a bus the low byte goes out first. */
   virtual void addWrite16( Register reg, uint16_t value, bool flag, uint8_t regSize );
   virtual void addWrite32( Register reg, uint32_t value, bool flag, uint8_t regSize );
   virtual void addWrite( Register reg, const void* data, uint32_t size, bool flag, uint8_t regSize );
   virtual void addWriteBlock( Register reg, const void* data, uint32_t size, bool flag, uint8_t regSize );
   virtual ResponseId addProcessCall( Register reg, uint16_t value, uint8_t regSize );
   virtual uint8_t get8( ResponseId id );
   /** On a bus the byte that comes first is the low one. */
   virtual uint16_t get16( ResponseId id );
   virtual uint32_t get32( ResponseId id );
   virtual std::string getBlock( ResponseId id, size_t size );
   /** The driver's registers with their starting values, for simulation. The map outlives the Ham. */
   virtual void setExpected( std::map<uint32_t, Utils::ExpectedVal>* values );
   virtual void setDriverName( std::string driver, std::string name );

   /* One-shot forms: on a failure the output is left as it was and the status of execute is returned. */
   ql_status recvByte( uint8_t* value );
   ql_status read8( Register reg, uint8_t* value, uint8_t regSize );
   ql_status read16( Register reg, uint16_t* value, uint8_t regSize );
   ql_status read32( Register reg, uint32_t* value, uint8_t regSize );
   ql_status read( Register reg, uint32_t size, std::string* data, bool noStop, uint8_t regSize );
   ql_status readBlock( Register reg, std::string* data, uint8_t regSize );
   ql_status sendByte( uint8_t value, bool flag );
   ql_status write8( Register reg, uint8_t value, bool flag, uint8_t regSize );
   ql_status write16( Register reg, uint16_t value, bool flag, uint8_t regSize );
   ql_status write32( Register reg, uint32_t value, bool flag, uint8_t regSize );
   ql_status write( Register reg, const void* data, size_t size, bool flag, uint8_t regSize );
   ql_status writeBlock( Register reg, const void* data, size_t size, bool flag, uint8_t regSize );
   ql_status processCall( Register reg, uint16_t value, uint16_t* result, uint8_t regSize );

   /** How often the server is to try a failing request again; holds for the life of the Ham. */
   void retryCountIs( uint32_t count );

   /** A Ham by its name in Ham::hams, initialised; null after a trace line. */
   static Ham* create(
      const std::string& name, const Topology::Topology& topology, const Drivers::DriverArgs& args );
};

/**
 * The Ham of a device: the one that its medium names in the topology, or the simulated one in simulation. A
 * topology must be loaded.
 * @return null, after a trace line, when the topology has no such device or component, or no such Ham exists
 */
Ham* createHam( const Drivers::DriverArgs& args );

/** Finds a device or component, and on the way up from it the name of its Ham. */
class SearchVisitor : public Topology::TopologyVisitor {
public:
   using TopologyVisitor::visit;
   bool visit( const Topology::Component* component ) override;
   bool visit( const Topology::Device* candidate ) override;
   bool visit( const Topology::Mux* mux ) override;
   bool visit( const Topology::Bus* bus ) override;
   bool visit( const Topology::Accelerator* accelerator ) override;
   bool visit( const Topology::SCD* medium ) override;
   bool visit( const Topology::I2C* medium ) override;
   bool visit( const Topology::IOPort* medium ) override;
   bool visit( const Topology::Celestica* medium ) override;
   bool visit( const Topology::PLM* medium ) override;
   bool visit( const Topology::SccSpi* medium ) override;
   bool visit( const Topology::FbDomFpga* medium ) override;

   uint32_t uid = 0;
   uint32_t did = 0;
   bool found = false;
   const Topology::Device* device = nullptr;
   std::string hamName;
};

using HamFactory = Ham* (*)( const Topology::Topology&, const Drivers::DriverArgs& );

/** The Hams of this library by the name that a medium gives; filled at load. */
extern std::map<std::string, HamFactory> hams;

class IpmiHam;

/** Extension point: empty, and nobody reads it. */
extern std::map<std::string, std::shared_ptr<IpmiHam> ( * )()> ipmiHams;

} // namespace Ham

#endif
