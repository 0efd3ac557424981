#ifndef SMBUSD_I2C_DEV_ADAPTERS_H
#define SMBUSD_I2C_DEV_ADAPTERS_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace Smbusd::I2cDev {

/** An adapter by its number, N of /dev/i2c-N, or by its name, which stays when numbers change. */
using AdapterReference = std::variant<uint32_t, std::string>;

/** Where the kernel lists adapters: i2c-N/name holds the name of number N. */
extern const std::filesystem::path sysfsDevices;

/** The numbers of the adapters with a name, in ascending order. */
std::vector<uint32_t> findAdapters( const std::string& name, const std::filesystem::path& devices );

/** "i2c-1, i2c-4". */
std::string listAdapters( const std::vector<uint32_t>& numbers );

} // namespace Smbusd::I2cDev

#endif
