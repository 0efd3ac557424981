#ifndef UNREACHABLE_H
#define UNREACHABLE_H

#include <string>
#include <string_view>

/**
 * Why nobody can be talked to on a socket, and what to do about it, in a sentence.
 * @param who who should be there, such as "SMBus server"
 * @param error the errno of the attempt
 * @param remedy what to do where it is not a matter of permission
 */
std::string unreachable( std::string_view who, const std::string& path, int error, std::string_view remedy );

#endif
