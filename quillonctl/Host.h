#ifndef HOST_H
#define HOST_H

#include "Board.h"
#include "Plugin.h"
#include "SoleUse.h"
#include "Supervisor.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

/** What a command does with an object. @param record null for an object that could not be made */
using Action = std::function<Reading( void* record, const ObjectEntry& object )>;

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

   /** Does the same with each of the objects; with those that failed, with a null record. */
   std::vector<Reading> doWithEach( const Action& action );

   /**
    * Does it with one of them, unless another process is at its device.
    * @param index its place among those that were given
    */
   std::optional<Reading> tryWith( size_t index, const Action& action );

   /** Whether none of the objects has failed to be made, or before. */
   bool isComplete() const;

private:
   struct Object {
      const ObjectEntry* entry;
      void* record;
      std::optional<Failure> failure;
   };

   /** Appends what has to be made for the objects beside them. */
   void appendHelper( const Board& board );
   void init( const std::string& topology );
   void initKind( std::string_view kind, const std::string& topology );
   void add( Object& object );
   std::optional<Reading> doWith( const Object& object, const Action& action, SoleUse::Mode mode );
   Reading doAlone( const Object& object, const Action& action );
   /** Where the SMBus server has gone, says so in place of the library's words about its socket. */
   void nameMissingServer( std::vector<Reading>& readings ) const;
   /** Why nothing can be done with an object, if that is so. */
   std::optional<Failure> obstacle( const Object& object ) const;
   /** Calls the library for an object. @return what it threw, if anything */
   std::optional<std::string> attempt( const Object& object, const std::function<void()>& call );

   Plugin plugin_;
   /** The objects that are worked on, and behind them their helper. */
   std::vector<Object> objects_;
   size_t count_;
   uint32_t cpld_;
   Supervisor::Progress& progress_;
};

/** An object of which nothing could be read: its settings, and why. */
Reading unreadable( const ObjectEntry& object, const Action& action, const Failure& failure );

#endif
