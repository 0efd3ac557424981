#ifndef HAM_SIM_HAM_H
#define HAM_SIM_HAM_H

#include "Ham/Ham.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Ham {

/**
 * Register access in simulation. A device's registers live in one file of hexadecimal text, which other
 * processes may read and change under an fcntl lock; the file is the only state. Writes land at once, not at
 * execute.
 *
 * The file is one line: the fields of the driver's expected registers in ascending order, without separators,
 * a number of n bytes as 2n lower-case digits, and a newline at the end. It lies in the directory of the
 * environment variable QUILLONLIB_SIMDIR, else /tmp/QuillonSimulationDevices, and is named "driver" or
 * "driver-name".
 */
class SimHam : public Ham {
public:
   static Ham* create( const Topology::Topology& topology, const Drivers::DriverArgs& args );

   void init() override;
   void prepare() override;
   /** Judges the batch by its last register alone. A device without expected registers always succeeds. */
   ql_status execute() override;
   ResponseId addRecvByte() override;
   ResponseId addRead8( Register reg, uint8_t regSize ) override;
   ResponseId addRead16( Register reg, uint8_t regSize ) override;
   ResponseId addRead( Register reg, uint32_t size, bool noStop, uint8_t regSize ) override;
   ResponseId addReadBlock( Register reg, uint8_t regSize ) override;
   void addSendByte( uint8_t value, bool flag ) override;
   /** Written only if the register is one byte wide. */
   void addWrite8( Register reg, uint8_t value, bool flag, uint8_t regSize ) override;
   /** Written only if the register is two bytes wide. */
   void addWrite16( Register reg, uint16_t value, bool flag, uint8_t regSize ) override;
   /** @param data a std::string with the text of the field; written only if `size` is the register's width */
   void addWrite( Register reg, const void* data, uint32_t size, bool flag, uint8_t regSize ) override;
   void addWriteBlock( Register reg, const void* data, uint32_t size, bool flag, uint8_t regSize ) override;
   /** Reads only: the value is dropped. */
   ResponseId addProcessCall( Register reg, uint16_t value, uint8_t regSize ) override;
   uint8_t get8( ResponseId id ) override;
   uint16_t get16( ResponseId id ) override;
   /** The file's characters, not the bytes that they spell. */
   std::string getBlock( ResponseId id, size_t size ) override;
   void setExpected( std::map<uint32_t, Utils::ExpectedVal>* values ) override;
   void setDriverName( std::string driver, std::string name ) override;

   /** Common start of every queueing form. */
   void requestInit( Register reg );
   /** Whether the current register has an expected value; only once the table is set. */
   bool isAddrSimulated() const;
   /** `size` characters of the current register, padded when the register is narrower. */
   std::string readFromFile( size_t size );
   void writeToFile( const std::string& data );
   /** Writes the file afresh with the expected values. */
   void createSimFile();

   std::map<uint32_t, Utils::ExpectedVal>* expected = nullptr;
   /** Where each register's field starts in the file. */
   std::map<uint32_t, uint32_t> regOffsets;
   std::string driverName;
   std::string deviceName;
   Register currentReg = 0;
   bool simFileExists_ = false;
   /** Length of the fields, without the newline. */
   size_t simFileSize = 0;
   std::string simFileName_;
   ResponseId responseId = 0;
   std::vector<Register> queuedRegs;

private:
   static std::string simulationDirectory();
   size_t fieldOffset() const;
   bool canAccess() const;
   void warnNotSimulated() const;
   void selectQueued( ResponseId id );
   unsigned long readNumber( ResponseId id, size_t digits );
   void writeNumber( Register reg, unsigned value, size_t bytes );
   void writeText( Register reg, const void* data, uint32_t size );
};

} // namespace Ham

#endif
