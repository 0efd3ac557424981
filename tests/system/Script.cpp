#include "Script.h"

#include <cstdlib>
#include <stdexcept>

Script scriptOf( const std::string& args ) {
   const std::string key = R"("script":")";
   auto begin = args.find( key );
   if ( begin == std::string::npos ) {
      return {};
   }
   begin += key.size();
   auto text = args.substr( begin, args.find( '"', begin ) - begin );
   auto blank = text.find( ' ' );
   return { text.substr( 0, blank ), blank == std::string::npos ? 0 : std::stof( text.substr( blank ) ) };
}

bool begin( const Script& script ) {
   if ( script.word == "unknownDriver" ) {
      ql_trace( 0, "driver PCT2076 not found" );
      ql_trace( 0, "factory function returned a null object" );
      return false;
   }
   if ( script.word == "throwsAtOnce" ) {
      throw std::runtime_error( "Not implemented newThing" );
   }
   if ( script.word == "abortsAtOnce" ) {
      ql_trace( 0, "setting alert threshold" );
      ql_trace( 3, "execute: failure in response request 0: no acknowledge" );
      abort();
   }
   return script.word != "silent";
}

ql_status answer( const Script& script ) {
   auto& [word, number] = script;
   if ( word == "fails" ) {
      ql_trace( 4, "someCallback" );
      ql_trace( 3, "execute: failure in response request 0: no acknowledge" );
      ql_trace( 6, "fine detail" );
      return QL_STATUS_IO_ERROR;
   }
   if ( word == "throws" ) {
      throw std::runtime_error( "Not implemented addRead32" );
   }
   if ( word == "aborts" ) {
      ql_trace( 3, "execute: failure in response request 0: no acknowledge" );
      abort();
   }
   return word == "answers" ? static_cast<ql_status>( number ) : QL_STATUS_OK;
}
