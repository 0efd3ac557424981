#ifndef COMMON_TEXT_FILE_H
#define COMMON_TEXT_FILE_H

#include <cstddef>
#include <stdexcept>
#include <string>

namespace Common {

/** Why a file cannot be read. */
class TextFileError : public std::runtime_error {
public:
   /** @param code an errno, or 0 where the file itself is not fit */
   TextFileError( int code, const std::string& reason ) : std::runtime_error( reason ), error( code ) {}

   const int error;
};

/** The longest file that is read, in bytes: far beyond any document of a board. */
constexpr size_t longestTextFile = 16 << 20;

/**
 * The text of a regular file; nobody has to wait for a pipe or a device in its place.
 * @throw TextFileError
 */
std::string readTextFile( const std::string& path );

} // namespace Common

#endif
