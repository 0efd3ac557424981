#ifndef FUZZ_OBJECTS_H
#define FUZZ_OBJECTS_H

#include "Input.h"

#include "quillon/ql.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/** Where actions take from what they hand over. */
extern Input input;

using Action = std::function<void()>;

/** An object as a host asks for it. */
struct Object {
   std::string kind;
   std::string args;
   float alert = 60;
   float critical = 70;
};

/** The objects of a host, and all that it can do with them. */
class Objects {
public:
   /** @param updatesFirmware whether that is to be done too, for which there must be a firmware file */
   explicit Objects( bool updatesFirmware ) : updatesFirmware_( updatesFirmware ) {}

   /** @return whether the library has made it */
   bool add( const Object& object );

   std::vector<Action> actions;

private:
   template <typename Record>
   bool keep( Record* record );

   bool updatesFirmware_;
   std::vector<std::unique_ptr<std::string>> texts_;
};

#endif
