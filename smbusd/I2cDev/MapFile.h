#ifndef SMBUSD_I2C_DEV_MAP_FILE_H
#define SMBUSD_I2C_DEV_MAP_FILE_H

#include "Adapters.h"

#include "smbusd/Bus.h"

#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Smbusd::I2cDev {

/** Which adapter is which bus. */
using BusMap = std::map<BusKey, AdapterReference>;

/** What is wrong with a map file, for a person: "FILE: place: reason", without a place if it can't be read.
 */
class MapFileError : public std::runtime_error {
public:
   using std::runtime_error::runtime_error;
};

/**
 * Reads a map file; schemas/i2c-map.schema.json tells its form. A named adapter that is not there may come
 * later and only gets a warning; a name that several of them have is an error. Throws MapFileError.
 */
BusMap loadMap( const std::string& file, const std::filesystem::path& devices = sysfsDevices );
/** The same for a text that comes from `file`. */
BusMap parseMap( const std::string& file, std::string_view text, const std::filesystem::path& devices );

} // namespace Smbusd::I2cDev

#endif
