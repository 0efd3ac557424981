#ifndef EMULATOR_MODEL_H
#define EMULATOR_MODEL_H

#include "Chip.h"

#include <functional>
#include <string>
#include <vector>

namespace Emulator {

/** A chip whose bench is a table of properties. Models add their rows in the constructor. */
class Model : public Chip {
public:
   // Rows refer to the model that they were added by.
   Model( const Model& ) = delete;
   Model& operator=( const Model& ) = delete;

   std::vector<std::string> properties() const final;
   std::string get( const std::string& property ) const final;
   void set( const std::string& property, const std::string& value ) final;

protected:
   using Getter = std::function<std::string()>;
   /** Throws std::invalid_argument, with words for a person, for a value that can't be. */
   using Setter = std::function<void( const std::string& value )>;

   Model() = default;
   /** Without a setter the property is only looked at. */
   void addProperty( const std::string& name, Getter get, Setter set = nullptr );

   /** The number that a property or option is to have. Throws, by its name, when it is none of the range. */
   static double numberIn( const std::string& name, const std::string& value, double lowest, double highest );
   /** The same for whole numbers, in decimal or as 0x hexadecimal. */
   static uint32_t unsignedIn(
      const std::string& name, const std::string& value, uint32_t lowest, uint32_t highest );

private:
   struct Property {
      std::string name;
      Getter get;
      Setter set;
   };

   const Property& find( const std::string& name ) const;

   std::vector<Property> properties_;
};

} // namespace Emulator

#endif
