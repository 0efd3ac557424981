#ifndef FIELD_ORDER_H
#define FIELD_ORDER_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>

/** Whether fields of an object lie behind one another as they are given. */
template <typename... Fields>
bool inOrder( const Fields&... fields ) {
   std::array addresses { reinterpret_cast<uintptr_t>( std::addressof( fields ) )... };
   return std::adjacent_find( addresses.begin(), addresses.end(), std::greater_equal() ) == addresses.end();
}

#endif
