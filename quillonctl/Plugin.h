#ifndef PLUGIN_H
#define PLUGIN_H

#include "quillon/ql.h"

#include <string>
#include <string_view>

/** The library, loaded. It stays loaded until the process ends, since its objects do. */
class Plugin {
public:
   /** Loads the library. @throw HostError */
   explicit Plugin( const std::string& path );

   /** An entry function. @throw HostError when the library lacks it */
   template <typename Function>
   Function* entry( const std::string& name ) const {
      return reinterpret_cast<Function*>( symbol( name ) );
   }

   /** @throw HostError when the library lacks the entry functions of a kind */
   void require( std::string_view kind ) const;

   /** ql_<kind>_init */
   ql_status init( std::string_view kind, const std::string& topology ) const;

private:
   void* symbol( const std::string& name ) const;

   std::string path_;
   void* handle_;
};

#endif
