#ifndef EMULATOR_BOARD_SCHEMA_H
#define EMULATOR_BOARD_SCHEMA_H

#include <rapidjson/fwd.h>

#include <optional>
#include <string>

namespace Emulator {

/** The JSON Schema of a board's document, as it stood when the program was built. */
extern const char boardSchemaText[];

/** Where a document is wrong, as a JSON pointer, and why. */
struct SchemaFailure {
   std::string place;
   std::string reason;
};

/** The first place at which a board's document does not keep its schema. */
std::optional<SchemaFailure> checkBoardSchema( const rapidjson::Document& document );

} // namespace Emulator

#endif
