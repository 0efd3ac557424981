#include "JsonRepair.h"

#include <algorithm>
#include <cctype>
#include <map>

namespace {

/** "'" and the typographic quotation marks, U+2018 to U+201F. */
bool isOtherQuote( std::string_view rest ) {
   return rest.starts_with( '\'' ) ||
          ( rest.starts_with( "\xE2\x80" ) && rest.size() > 2 && ( rest[2] & 0xF8 ) == 0x98 );
}

/** Whether the reader stopped in a number such as 01 or 0x30, of which it took the 0 alone. */
bool isBehindLeadingZero( std::string_view before, std::string_view rest ) {
   auto other = before.find_last_not_of( "0123456789.eE+" );
   auto number = before.substr( other + 1 );
   return number == "0" && rest.find_first_of( "0123456789xX" ) == 0;
}

/** The word of letters at the start of a text. */
std::string_view wordAt( std::string_view rest ) {
   auto isLetter = []( unsigned char c ) { return std::isalpha( c ); };
   return { rest.begin(), std::find_if_not( rest.begin(), rest.end(), isLetter ) };
}

/** What to do about a word that stands for a value, but not in JSON. */
std::string repairForWord( std::string_view word ) {
   static const std::map<std::string_view, const char*> words {
      { "True", "write true" },
      { "TRUE", "write true" },
      { "False", "write false" },
      { "FALSE", "write false" },
      { "Null", "write null" },
      { "NULL", "write null" },
      { "None", "write null" },
      { "NaN", "JSON has no such number" },
      { "Infinity", "JSON has no such number" },
   };
   auto found = words.find( word );
   return found == words.end() ? "" : found->second;
}

} // namespace

bool hasByteOrderMark( std::string_view text ) {
   return text.starts_with( "\xEF\xBB\xBF" ) || text.starts_with( "\xFF\xFE" ) ||
          text.starts_with( "\xFE\xFF" );
}

std::string repairOfSyntax( rapidjson::ParseErrorCode code, std::string_view text, size_t offset ) {
   auto before = text.substr( 0, offset );
   auto rest = text.substr( offset );
   auto last = before.find_last_not_of( " \t\r\n" );
   auto next = rest.empty() ? '\0' : rest.front();
   if ( ( next == '}' || next == ']' ) && last != before.npos && before[last] == ',' ) {
      return "take away the comma before it";
   }
   if ( isOtherQuote( rest ) ||
        ( code == rapidjson::kParseErrorObjectMissName && !wordAt( rest ).empty() ) ) {
      return "names and texts stand in double quotes";
   }
   if ( next == '/' || next == '#' ) {
      return "JSON has no comments";
   }
   if ( isBehindLeadingZero( before, rest ) ) {
      return "numbers are decimal, without a leading 0";
   }
   return repairForWord( wordAt( rest ) );
}
