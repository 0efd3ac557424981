#ifndef OUTPUT_SCHEMA_H
#define OUTPUT_SCHEMA_H

#include <rapidjson/document.h>

#include <memory>
#include <string>

/** A JSON Schema of what a command writes. */
class OutputSchema {
public:
   /**
    * @param command its schema is schemas/output/<command>.schema.json
    * @param row what each of its objects must be: "fan.schema.json#/definitions/rpm"; nothing for anything
    * that the command's schema has
    */
   explicit OutputSchema( const std::string& command, const std::string& row = "" );
   ~OutputSchema();
   OutputSchema( const OutputSchema& ) = delete;
   OutputSchema& operator=( const OutputSchema& ) = delete;

   bool accepts( const rapidjson::Value& document ) const;

   /**
    * What is wrong with a line of output, or nothing: it must be a document that the schema accepts, while
    * the schema must refuse the document with a member more, a member less, or a value of another type, in
    * any object of it. So no member is unknown to the schema, and none is without a type.
    */
   std::string complaint( const std::string& line ) const;

private:
   struct Schemas;

   std::unique_ptr<Schemas> schemas_;
};

#endif
