#ifndef TEXT_CELLS_H
#define TEXT_CELLS_H

#include "Kind.h"

#include <string>

/** The texts that tables are made of, for people and without control characters. */
namespace TextCells {

/** Columns that a text in UTF-8 takes. */
size_t widthOf( const std::string& text );

/** A value with its unit; "-" for none. */
std::string textOf( const Value& value, const Field& field );

/** The state, or the status of a failure. */
std::string statusOf( const Reading& reading );

/** A text with a "?" for each control character but some. */
std::string printable( std::string text, std::string_view kept = "" );

} // namespace TextCells

#endif
