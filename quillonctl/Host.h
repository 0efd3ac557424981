#ifndef HOST_H
#define HOST_H

#include "Board.h"
#include "Plugin.h"
#include "Supervisor.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

/** Failures by index of the object. */
using KnownFailures = std::map<size_t, Failure>;

/** The library with the objects of a board, as a host sees them. */
class Host {
public:
   /**
    * Loads the library, gives it the topology and makes the objects.
    * @param known objects that have failed before; the library is not asked for them
    * @throw HostError
    */
   Host( const std::string& pluginPath, const Board& board, const std::vector<const ObjectEntry*>& objects,
      const KnownFailures& known, Supervisor::Progress& progress );

   /** Reads every object. */
   std::vector<Reading> read();

private:
   struct Object {
      const ObjectEntry* entry;
      void* record;
      std::optional<Failure> failure;
   };

   void init( const std::string& topology );
   void initKind( std::string_view kind, const std::string& topology );
   void add( Object& object );
   Reading read( const Object& object );
   /** Calls the library for an object. @return what it threw, if anything */
   std::optional<std::string> attempt( const Object& object, const std::function<void()>& call );

   Plugin plugin_;
   std::vector<Object> objects_;
   Supervisor::Progress& progress_;
};

#endif
