#ifndef DRIVERS_BCM59121_MESSAGES_H
#define DRIVERS_BCM59121_MESSAGES_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace Drivers {

/** A message byte that a command does not use. */
constexpr uint8_t unusedByte = 0xFF;

/** Commands, byte 0 of a message. */
namespace PoeCommand {
constexpr uint8_t setPse = 0x00;
constexpr uint8_t powerOn = 0x01;
constexpr uint8_t portMap = 0x02;
constexpr uint8_t powerOff = 0x03;
constexpr uint8_t portStart2 = 0x08;
constexpr uint8_t globalStart2 = 0x0A;
constexpr uint8_t portMapRow = 0x0E;
constexpr uint8_t detectionType = 0x10;
constexpr uint8_t portStart1 = 0x12;
constexpr uint8_t violationType = 0x15;
constexpr uint8_t powerLimit = 0x16;
constexpr uint8_t globalStart1 = 0x17;
constexpr uint8_t powerMode = 0x1C;
constexpr uint8_t mpssMask = 0x1E;
constexpr uint8_t crcAutocorrect = 0x4E;
/** Its sub-command stands in byte 1. As a register it takes firmware blocks. */
constexpr uint8_t image = 0xE0;

constexpr uint8_t getSystemStatus = 0x20;
constexpr uint8_t getPortStatus = 0x21;
constexpr uint8_t getPortStatistics = 0x22;
constexpr uint8_t getSystemPower = 0x23;
constexpr uint8_t getPortConfig = 0x25;
constexpr uint8_t getPortConfigExt = 0x26;
constexpr uint8_t getPowerManagement = 0x27;
constexpr uint8_t getSystemConfig = 0x2B;
constexpr uint8_t getChipStatus = 0x2D;
constexpr uint8_t getMpssMask = 0x2E;
constexpr uint8_t getMeasurement = 0x30;
constexpr uint8_t getPerPairPower = 0x3C;
constexpr uint8_t getPerPairStatus = 0x3D;
constexpr uint8_t getChannelCrc = 0x4C;
constexpr uint8_t getCrcConfig = 0x4F;
} // namespace PoeCommand

/** Blocks for the whole time, in microseconds, also when the host takes signals meanwhile. */
void waitMicroseconds( unsigned time );
/** The same in seconds. */
void waitSeconds( unsigned time );

/** Sum of the first 11 bytes of a message. */
uint8_t calcCheckSum( const uint8_t* msg );
/** Stores the sum behind them. */
void setCheckSum( uint8_t* msg );

/** A byte of a reply; 0 beyond the end of one that is too short. */
uint8_t byteAt( const std::string& reply, size_t offset );

/** A 16-bit value, scaled and shifted. */
double getMeasurementVal( uint8_t hi, uint8_t lo, double scale, double offset );
/** Degrees Celsius. */
double getTemperatureVal( uint8_t hi, uint8_t lo );
/** Whether a dual-signature device asks for power, from the replies 0x21 and 0x3D. */
bool isDualSigPd( std::string portStatus, std::string perPairStatus );

} // namespace Drivers

#endif
