#ifndef TOPOLOGY_TEXT_H
#define TOPOLOGY_TEXT_H

#include "Topology.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/**
 * Pieces of topology documents, and what the reading of a document asserts. `keys` is the inside of a JSON
 * object; it may be empty where other keys stand before it.
 */
namespace TopologyText {

inline std::string more( const std::string& keys ) { return keys.empty() ? "" : ", " + keys; }

/** A document of one medium. */
inline std::string medium( const std::string& type, const std::string& keys = "" ) {
   return R"([ { "type": ")" + type + R"(", "ham": "SimHam")" + more( keys ) + " } ]";
}

/** A document of one bus, with id 1. */
inline std::string bus( const std::string& keys = "" ) {
   return medium( "PLM", R"("id": 1)" + more( keys ) );
}

/** A document of one device. */
inline std::string device( const std::string& keys ) {
   return medium( "LinuxFs", R"("devices": [ { )" + keys + " } ]" );
}

/** A document of one multiplexer. */
inline std::string mux( const std::string& keys ) { return bus( R"("muxes": [ { )" + keys + " } ]" ); }

/** A document of one accelerator. */
inline std::string accelerator( const std::string& keys ) {
   return medium( "Celestica", R"("accelerators": [ { )" + keys + " } ]" );
}

/** Makes the document the current topology. */
inline const Topology::Topology& load( const std::string& text ) {
   EXPECT_EQ( Topology::loadTopology( text.c_str() ), QL_STATUS_OK ) << text;
   return *Topology::_topology;
}

/** The medium of a document of one medium, which becomes the current topology. */
template <typename Medium>
const Medium& loadMedium( const std::string& text ) {
   return dynamic_cast<const Medium&>( *load( text ).nodes.at( 0 ) );
}

/** The text with `value` in the place of its "$". */
inline std::string with( const std::string& value, std::string text ) {
   return text.replace( text.find( '$' ), 1, value );
}

/** The type of a key's value: what the parser asserts of it, and JSON values that do not meet it. */
struct ValueType {
   const char* assertion;
   std::vector<const char*> wrong;
};

inline const ValueType unsignedValue { "data_.f.flags & kUintFlag",
   { "-1", "-2147483648", "1.0", "0.5", "1e3", "4294967296", "18446744073709551615", "18446744073709551616",
      "true", "\"1\"", "null", "[]", "{}" } };
inline const ValueType intValue { "data_.f.flags & kIntFlag",
   { "-2147483649", "2147483648", "4294967295", "1.0", "-0.5", "1e3", "false", "\"1\"", "null", "[]",
      "{}" } };
inline const ValueType boolValue { "IsBool()", { "0", "1", "1.0", "\"true\"", "null", "[]", "{}" } };
inline const ValueType stringValue { "IsString()", { "0", "1.5", "true", "null", "[]", "{}" } };
inline const ValueType arrayValue { "IsArray()", { "0", "true", "\"[]\"", "null", "{}" } };
inline const ValueType objectValue { "IsObject()", { "0", "1.5", "true", "\"{}\"", "[]" } };

/** A text that is no JSON, and what the parser says of it. */
struct ParseError {
   const char* text;
   const char* message;
};

/** Every error of the parser that a text can bring about; it has two more, for readers that stop it. */
inline const ParseError parseErrors[] = {
   { "", "The document is empty. offset 0" },
   { " \n\t", "The document is empty. offset 3" },
   { "[] []", "The document root must not be followed by other values. offset 3" },
   { "{},", "The document root must not be followed by other values. offset 2" },
   { "nul", "Invalid value. offset 3" },
   { "[ yes ]", "Invalid value. offset 2" },
   { "[", "Invalid value. offset 1" },
   { "[ 1, ]", "Invalid value. offset 5" },
   { "[ -x ]", "Invalid value. offset 3" },
   { "[ 'a' ]", "Invalid value. offset 2" },
   { "[ NaN ]", "Invalid value. offset 2" },
   { "[ /* none */ ]", "Invalid value. offset 2" },
   { "// none\n[]", "Invalid value. offset 0" },
   { "{ did: 7 }", "Missing a name for object member. offset 2" },
   { "{ \"did\": 7, }", "Missing a name for object member. offset 12" },
   { "{ \"did\" 7 }", "Missing a colon after a name of object member. offset 8" },
   { "{ \"did\": 7 \"uid\": 1 }", "Missing a comma or '}' after an object member. offset 11" },
   { "[ 1 2 ]", "Missing a comma or ']' after an array element. offset 4" },
   { "[ 01 ]", "Missing a comma or ']' after an array element. offset 3" },
   { "[ \"\\u12G4\" ]", "Incorrect hex digit after \\u escape in string. offset 3" },
   { "[ \"\\ud800\" ]", "The surrogate pair in string is invalid. offset 3" },
   { "[ \"\\ud800\\u0041\" ]", "The surrogate pair in string is invalid. offset 3" },
   { "[ \"\\x\" ]", "Invalid escape character in string. offset 3" },
   { "[ \"a\nb\" ]", "Invalid escape character in string. offset 4" },
   { "[ \"abc", "Missing a closing quotation mark in string. offset 6" },
   { "[ 1e400 ]", "Number too big to be stored in double. offset 2" },
   { "[ 1. ]", "Miss fraction part in number. offset 4" },
   { "[ 1e ]", "Miss exponent in number. offset 4" },
};

} // namespace TopologyText

#endif
