#ifndef MUTATOR_H
#define MUTATOR_H

#include <rapidjson/document.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

/**
 * Changes JSON documents as people get them wrong: drops keys and elements, changes types, puts values at
 * their edges, repeats and exchanges. The same seed gives the same changes on every machine.
 */
class Mutator {
public:
   explicit Mutator( uint64_t seed ) : random_( seed ) {}

   /** A number below `count`. */
   size_t below( size_t count ) { return static_cast<size_t>( random_() % count ); }

   /** Changes something somewhere in the document. */
   void mutate( rapidjson::Document& document );

private:
   using Value = rapidjson::Value;

   /** A value in the document, and where it is: a member of an object, or an element of an array. */
   struct Spot {
      Value* parent;
      size_t index;

      Value& value() const;
      std::string key() const;
   };

   static void collect( Value& value, std::vector<Spot>& spots );

   void drop( const Spot& spot );
   void repeat( const Spot& spot );
   void rename( const Spot& spot );
   void insertKey( Value& object );
   void convert( Value& value );
   void step( Value& value );
   void wrap( Value& value );
   void takeFromNamesake( const Spot& spot, const std::vector<Spot>& spots );
   Value edge();

   std::mt19937_64 random_;
   rapidjson::Document::AllocatorType* memory_ = nullptr;
};

#endif
