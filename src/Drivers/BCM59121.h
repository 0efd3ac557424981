#ifndef DRIVERS_BCM59121_H
#define DRIVERS_BCM59121_H

#include "Components/HardwareDevice.h"
#include "Components/PoePort.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace Drivers {

/**
 * BCM59121 PoE controller: one object for the controller, one PoePort for each switch port.
 *
 * The controller takes 12-byte messages and answers each, some milliseconds later, with one of the same size;
 * all of this blocks. Ports below `numAtPorts` are 2-pair ports with one channel, the others 4-pair ports
 * with two. A port at or above `numPorts` is no error: its messages go out, and the driver remembers nothing
 * of it.
 */
class BCM59121 : public Component::HardwareDevice {
public:
   class PoePort : public Component::LogicalDevice::PoePort {
   public:
      /** Failing CRC polls in a row that are hidden before one is reported. */
      static constexpr uint8_t hiddenCrcFailures = 3;

      PoePort( BCM59121* driver, uint8_t id );
      size_t debugInfo( char** text, bool raw ) override;
      ql_status poePortInit() override;
      ql_status reprogramPoeFirmware( bool skip, char** revision ) override;
      ql_status setPoePortPse( bool enable ) override;
      ql_status setPoePortLimit( ql_poe_power_limit_mode mode, float watts ) override;
      ql_status setPoePortShutOffWithPsu( uint8_t psu, bool shutOff ) override;
      ql_status poePortPowerOn( bool on ) override;
      ql_status setPoePortLegacyDetect( bool legacy ) override;
      ql_status getPoePortPowerState( ql_poe_port_state* state, ql_poe_port_state* primary,
         ql_poe_port_state* alternative, ql_poe_port_pair_state* pairState ) override;
      ql_status getPoeDeviceClass(
         ql_poe_device_class* cls, ql_poe_device_class* primary, ql_poe_device_class* alternative ) override;
      ql_status getPoePortPower( float* total, float* primary, float* alternative ) override;
      ql_status getPoePortVoltage( float* volts ) override;
      ql_status getPoePortCurrent( float* amps ) override;
      ql_status getPoePortTemperature( float* degrees ) override;
      ql_status getPoePortCrcStatus( bool* ok ) override;
      size_t getPoePortInformation( char** text ) override;

      BCM59121* driver;
      /** Counted from 0. */
      uint8_t id;
      uint8_t crcFailCountdown = hiddenCrcFailures;
   };

   /** The last reply of each kind for one port, and the CLOCK_MONOTONIC time of its exchange. */
   struct PoeCache {
      std::string portStatus;
      std::string measurement;
      std::string sysStatus;
      std::string perPairStatus;
      std::string crcStatus;
      std::string perPairPower;
      timespec portStatusTime {};
      timespec measurementTime {};
      timespec sysStatusTime {};
      timespec perPairStatusTime {};
      timespec crcStatusTime {};
      timespec perPairPowerTime {};
   };

   static Component::HardwareDevice* create( const DriverArgs& args, Ham::Ham* ham );

   /**
    * Driver arguments: "numPorts" and "numAtPorts"; optional "firmwarePath", "firmwareDownloadSize",
    * "resetReg" with "outOfResetVal", "mpssValueZero". Numbers are decimal and cut to their field; text that
    * is none throws.
    */
   explicit BCM59121( const DriverArgs& args );

   /** Driver argument "portId". */
   Component::LogicalDevice::PoePort* newPoePort( const DriverArgs& args ) override;

   /* Messages. */

   /**
    * Asks the chip, unless `lastQuery` is less than 2 seconds ago: then `reply` is good as it stands.
    * @retval QL_STATUS_IO_ERROR wrong checksum; `reply` holds the bytes
    * @retval QL_STATUS_DEVICE_ERROR the chip answered with an error code in byte 0; `reply` holds the bytes
    */
   ql_status queryCustom( uint8_t cmd, uint8_t b1, uint8_t b2, uint8_t b3, uint8_t b4, uint8_t b5, uint8_t b6,
      uint8_t b7, uint8_t b8, uint8_t b9, uint8_t b10, std::string& reply, timespec& lastQuery );
   ql_status queryPort( uint8_t port, uint8_t cmd, std::string& reply, timespec& lastQuery );
   /** Always asks the chip. After a failed read `reply` is empty. */
   ql_status queryDebug( uint8_t portOrChip, uint8_t cmd, std::string& reply );
   /** @param waitUnits wait before the reply, in units of 4 ms */
   ql_status configCustom( uint8_t cmd, uint8_t b1, uint8_t b2, uint8_t b3, uint8_t b4, uint8_t b5,
      uint8_t b6, uint8_t b7, uint8_t b8, uint8_t b9, uint8_t b10, uint16_t waitUnits, bool readReply );
   ql_status configPort( PoePort* port, uint8_t cmd, uint8_t value, uint8_t waitUnits );
   ql_status configSystem( uint8_t cmd, uint8_t value, uint8_t waitUnits );

   /* Control. */

   ql_status setPse( PoePort* port, bool enable );
   ql_status setLegacyDetect( PoePort* port, bool legacy );
   /** Sends only what differs from the mask sent last. */
   ql_status setShutOffWithPsu( PoePort* port, uint8_t psu, bool shutOff );
   ql_status powerOn( PoePort* port, bool on );
   /** The limit sent is 3 percent above the one asked for, and at most 31 W. */
   ql_status setPowerLimit( PoePort* port, ql_poe_power_limit_mode mode, float watts );
   /** With a firmware path autocorrect can't be turned off. */
   ql_status setCrcAutocorrect( bool enable );

   /* Monitoring: outputs are written on QL_STATUS_OK only. */

   ql_status getPowerState( PoePort* port, ql_poe_port_state* state, ql_poe_port_state* primary,
      ql_poe_port_state* alternative, ql_poe_port_pair_state* pairState );
   ql_status getDeviceClass( PoePort* port, ql_poe_device_class* cls, ql_poe_device_class* primary,
      ql_poe_device_class* alternative );
   ql_status getCurrent( PoePort* port, float* amps );
   ql_status getVoltage( PoePort* port, float* volts );
   ql_status getTemperature( PoePort* port, float* degrees );
   ql_status getPower( PoePort* port, float* total, float* primary, float* alternative );
   ql_status getCrcStatus( PoePort* port, bool* ok );

   /* Firmware, reports, start-up. */

   /**
    * Loads the firmware file if its revision differs from the chip's, which blocks for more than 13 seconds.
    * @param skip only tells the revision
    * @param revision a new text that the caller frees, whatever the status
    */
   ql_status reprogramFirmware( PoePort* port, bool skip, char** revision );

   /** @param text a new text that the caller frees; null without memory. @return its length */
   size_t getInformation( PoePort* port, char** text );
   size_t getInformationRaw( PoePort* port, char** text );
   size_t getDebugStrRaw( uint8_t portOrChip, char* dst, size_t size, uint8_t cmd );

   /** Starts the controller at the first call, then the port. Gives the greatest status met. */
   ql_status portInit( PoePort* port );
   /** Tells the chip which channels make up each port, unless it knows. Gives the greatest status met. */
   ql_status configPortMap( PoePort* port );

   /** The chip's group of 8 channels in which a port lies. */
   uint8_t portChipIndex( uint8_t port ) const;

   bool globalConfigDone;
   /** By port number. */
   std::vector<PoeCache> poeCache;
   uint8_t numPorts;
   /** The first 4-pair port. */
   uint8_t numAtPorts;
   std::string firmwarePath;
   /** Bytes of a firmware block, with the register byte. */
   uint8_t firmwareDownloadSize;
   bool hasFirmwarePath;
   bool mpssValueZero;
   /** The mask last sent for each port. */
   std::unique_ptr<uint8_t[]> portMpssMask;
   /** The chip group that turned CRC autocorrect on. */
   uint8_t crcAutocorrectChip;
   bool crcAutocorrect;
   bool hasResetControl;
   uint16_t resetReg;
   uint8_t outOfResetVal;
   ql_poe_device_class maxPdClass;
   ql_poe_device_class maxDualSigPdClass;

private:
   bool isFourPair( uint8_t port ) const { return port >= numAtPorts; }

   /** A setting whose bytes behind `message` are unused. */
   ql_status config( std::initializer_list<uint8_t> message, uint16_t waitUnits, bool readReply = true );
   ql_status receiveReply( uint8_t cmd, std::string& reply );

   /** A copy, empty for a port that the driver has no element for. */
   PoeCache copyCache( size_t port ) const;
   void storeCache( size_t port, const PoeCache& cache );
   /** The status of the port and of its two channels, into a copy of its cache. */
   ql_status queryStatus( PoePort* port, PoeCache& cache );
   ql_status measure( PoePort* port, std::string* reply );
   bool judgeCrc( PoePort* port, const std::string& reply );

   void recoverFirmware( PoePort* port );
};

} // namespace Drivers

#endif
