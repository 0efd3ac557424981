#include "Schema.h"

#include "Nearest.h"
#include "SchemaBundle.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <rapidjson/schema.h>

#include <algorithm>
#include <cassert>
#include <map>
#include <memory>
#include <set>

namespace Schema {

using rapidjson::Value;

namespace {

/** A schema that the validator can work with, which refers to its text. */
struct Compiled {
   explicit Compiled( rapidjson::Document document ) : text( std::move( document ) ), schema( text ) {}

   rapidjson::Document text;
   rapidjson::SchemaDocument schema;
};

/** Compiled schemas by their places. */
using Cache = std::map<std::string, std::unique_ptr<Compiled>>;

/** Whether a value keeps the schema at a place, with all that it is made of. */
bool keeps( const std::string& place, const Value& value ) {
   static Cache cache;
   auto& compiled = cache[place];
   if ( !compiled ) {
      compiled = std::make_unique<Compiled>( bundle().schemaOf( place ) );
   }
   rapidjson::SchemaValidator validator( compiled->schema );
   return value.Accept( validator );
}

/** The schema without the rules that are made of other schemas. */
rapidjson::Document ownRules( const Value& schema ) {
   rapidjson::Document own;
   own.CopyFrom( schema, own.GetAllocator() );
   for ( auto keyword :
      { "allOf", "oneOf", "dependencies", "properties", "additionalProperties", "items", "definitions" } ) {
      own.RemoveMember( keyword );
   }
   return own;
}

/** The first of a schema's own rules that a value breaks, by its keyword, or an empty text. */
std::string brokenRule( const std::string& place, const Value& schema, const Value& value ) {
   static Cache cache;
   auto& compiled = cache[place];
   if ( !compiled ) {
      compiled = std::make_unique<Compiled>( ownRules( schema ) );
   }
   rapidjson::SchemaValidator validator( compiled->schema );
   return value.Accept( validator ) ? "" : validator.GetInvalidSchemaKeyword();
}

/** Whether a value is a text of a number that would keep a schema's own rules. */
bool isQuotedNumber( const std::string& place, const Value& schema, const Value& value ) {
   if ( !value.IsString() ) {
      return false;
   }
   rapidjson::Document inner;
   inner.Parse<rapidjson::kParseIterativeFlag>( value.GetString(), value.GetStringLength() );
   return !inner.HasParseError() && inner.IsNumber() && brokenRule( place, schema, inner ).empty();
}

/** The property that tells the alternatives of a "oneOf" apart: the one with an enumeration. */
const Value::Member* selectorOf( const Value& alternative ) {
   auto properties = member( alternative, "properties" );
   if ( !properties ) {
      return nullptr;
   }
   auto selector = std::find_if( properties->MemberBegin(), properties->MemberEnd(),
      []( auto& property ) { return property.value.HasMember( "enum" ); } );
   return selector == properties->MemberEnd() ? nullptr : &*selector;
}

bool contains( const Value& array, const Value& value ) {
   return std::find( array.Begin(), array.End(), value ) != array.End();
}

bool isMeantFor( const Value& alternative, const Value& object ) {
   auto selector = selectorOf( alternative );
   if ( !selector ) {
      return false;
   }
   auto actual = object.FindMember( selector->name );
   if ( actual != object.MemberEnd() ) {
      return contains( selector->value["enum"], actual->value );
   }
   auto required = member( alternative, "required" );
   return !required || !contains( *required, selector->name );
}

/** Places of the schemas in the list under a keyword. */
std::vector<std::string> listed( const Value& schema, const std::string& place, const char* keyword ) {
   std::vector<std::string> places;
   auto list = member( schema, keyword );
   for ( size_t i = 0; list && i < list->Size(); ++i ) {
      places.push_back( under( under( place, keyword ), i ) );
   }
   return places;
}

std::vector<std::string> keysOf( const Value& schema ) {
   std::vector<std::string> keys;
   if ( auto properties = member( schema, "properties" ) ) {
      for ( auto& property : properties->GetObject() ) {
         keys.push_back( textOf( property.name ) );
      }
   }
   return keys;
}

class Search {
public:
   Search( const JsonFile& file, Findings& findings ) : file_( file ), findings_( findings ) {}

   /** Finds the breaches of the schema at `place` by the value at `pointer`, and by what is in it. */
   void run( std::string place, const Value& value, const std::string& pointer ) {
      auto& schema = bundle().at( place );
      auto rule = brokenRule( place, schema, value );
      if ( rule == "required" ) {
         for ( auto& key : schema["required"].GetArray() ) {
            lack( pointer, value, textOf( key ) );
         }
      } else if ( !rule.empty() ) {
         auto words = breach( schema, rule, value );
         if ( rule == "type" && isQuotedNumber( place, schema, value ) ) {
            words.repair = "take the quotes away";
         }
         find( pointer, words );
      }
      if ( value.IsObject() ) {
         members( schema, place, value, pointer );
      } else if ( value.IsArray() && schema.HasMember( "items" ) ) {
         size_t index = 0;
         for ( auto& element : value.GetArray() ) {
            run( under( place, "items" ), element, under( pointer, index++ ) );
         }
      }
      parts( schema, place, value, pointer );
   }

   /** Tells of the keys that are missing, all those of an object at once. */
   void finish() {
      for ( auto& [pointer, object] : missing_ ) {
         findings_.push_back(
            file_.error( pointer, missing( object.keys ), misspelt( object, known_[pointer] ) ) );
      }
   }

private:
   /** An object that lacks keys. */
   struct Lacking {
      const Value* json = nullptr;
      std::vector<std::string> keys = {};
   };

   /** Different schemas can have something against the same value; one reason is enough. */
   void find( const std::string& pointer, const Words& words ) {
      if ( told_.insert( pointer ).second ) {
         findings_.push_back( file_.error( pointer, words.reason, words.repair ) );
      }
   }

   void lack( const std::string& pointer, const Value& object, const std::string& key ) {
      auto& lacking = missing_[pointer];
      auto& keys = lacking.keys;
      lacking.json = &object;
      if ( !member( object, key.c_str() ) && std::find( keys.begin(), keys.end(), key ) == keys.end() ) {
         keys.push_back( key );
      }
   }

   /** What to do where keys that nobody knows are near to missing ones. */
   static std::string misspelt( const Lacking& object, const std::set<std::string>& known ) {
      std::vector<std::string> changes;
      for ( auto& entry : object.json->GetObject() ) {
         auto key = textOf( entry.name );
         auto near = known.contains( key ) ? std::vector<std::string> {} : nearest( key, object.keys );
         if ( !near.empty() ) {
            changes.push_back( fmt::format( "\"{}\" for \"{}\"", near.front(), key ) );
         }
      }
      return changes.empty() ? "" : fmt::format( "write {}", fmt::join( changes, " and " ) );
   }

   void members(
      const Value& schema, const std::string& place, const Value& object, const std::string& pointer ) {
      auto properties = member( schema, "properties" );
      auto further = member( schema, "additionalProperties" );
      auto keys = keysOf( schema );
      known_[pointer].insert( keys.begin(), keys.end() );
      for ( auto& [name, value] : object.GetObject() ) {
         if ( isDoubled( object, name ) ) {
            continue;
         }
         auto key = textOf( name );
         auto inner = under( pointer, key );
         if ( properties && properties->HasMember( name ) ) {
            run( under( under( place, "properties" ), key ), value, inner );
         } else if ( further && further->IsObject() ) {
            run( under( place, "additionalProperties" ), value, inner );
         } else if ( further && !further->GetBool() && told_.insert( inner ).second ) {
            findings_.push_back( unknownKey( inner, key, keysOf( schema ) ) );
         }
      }
   }

   Finding unknownKey(
      const std::string& pointer, const std::string& key, const std::vector<std::string>& known ) const {
      auto meant = didYouMeanKey( key, known );
      return file_.errorAtKey( pointer, "unknown key",
         meant.empty() ? fmt::format( "the keys here are \"{}\"", fmt::join( known, "\", \"" ) ) : meant );
   }

   /** The rules that are made of other schemas. */
   void parts(
      const Value& schema, const std::string& place, const Value& value, const std::string& pointer ) {
      for ( auto& part : listed( schema, place, "allOf" ) ) {
         run( part, value, pointer );
      }
      if ( schema.HasMember( "oneOf" ) ) {
         alternatives( schema, place, value, pointer );
      }
      if ( auto dependencies = member( schema, "dependencies" ); dependencies && value.IsObject() ) {
         for ( auto& dependency : dependencies->GetObject() ) {
            if ( value.HasMember( dependency.name ) ) {
               run( under( under( place, "dependencies" ), textOf( dependency.name ) ), value, pointer );
            }
         }
      }
   }

   void alternatives(
      const Value& schema, const std::string& place, const Value& value, const std::string& pointer ) {
      auto places = listed( schema, place, "oneOf" );
      auto isMeant = [&]( std::string part ) { return isMeantFor( bundle().at( part ), value ); };
      auto meant = value.IsObject() ? std::find_if( places.begin(), places.end(), isMeant ) : places.end();
      if ( meant != places.end() ) {
         run( *meant, value, pointer );
      } else if ( std::none_of(
                     places.begin(), places.end(), [&]( auto& part ) { return keeps( part, value ); } ) ) {
         noAlternative( schema, places, value, pointer );
      }
   }

   /** For a value that none of the alternatives is meant for. */
   void noAlternative( const Value& schema, const std::vector<std::string>& places, const Value& value,
      const std::string& pointer ) {
      std::vector<std::string> values;
      std::string key;
      for ( auto place : places ) {
         if ( auto selector = selectorOf( bundle().at( place ) ) ) {
            key = textOf( selector->name );
            for ( auto& choice : selector->value["enum"].GetArray() ) {
               values.push_back( compact( choice ) );
            }
         }
      }
      if ( key.empty() ) {
         find( pointer, { mismatch( wanted( schema ), value ) } );
      } else if ( !value.IsObject() ) {
         find( pointer, { mismatch( "an object", value ) } );
      } else if ( auto actual = member( value, key.c_str() ) ) {
         find( under( pointer, key ), noneOf( values, *actual ) );
      } else {
         lack( pointer, value, key );
      }
   }

   const JsonFile& file_;
   Findings& findings_;
   std::set<std::string> told_;
   std::map<std::string, Lacking> missing_;
   /** The keys that some schema has for an object. */
   std::map<std::string, std::set<std::string>> known_;
};

} // namespace

bool isDoubled( const Value& object, const Value& name ) {
   return std::count_if( object.MemberBegin(), object.MemberEnd(),
             [&]( auto& entry ) { return entry.name == name; } ) > 1;
}

std::vector<std::string> partsFor( std::string place, const Value& value ) {
   auto& schema = bundle().at( place );
   auto inner = listed( schema, place, "allOf" );
   auto choices = listed( schema, place, "oneOf" );
   auto isMeant = [&]( std::string part ) { return isMeantFor( bundle().at( part ), value ); };
   auto meant = std::find_if( choices.begin(), choices.end(), isMeant );
   if ( meant != choices.end() ) {
      choices = { *meant };
   }
   inner.insert( inner.end(), choices.begin(), choices.end() );
   if ( auto dependencies = member( schema, "dependencies" ) ) {
      for ( auto& [key, dependent] : dependencies->GetObject() ) {
         if ( value.HasMember( key ) ) {
            inner.push_back( under( under( place, "dependencies" ), textOf( key ) ) );
         }
      }
   }
   std::vector<std::string> parts { place };
   for ( auto& part : inner ) {
      auto more = partsFor( part, value );
      parts.insert( parts.end(), more.begin(), more.end() );
   }
   return parts;
}

void check( const std::string& name, const JsonFile& file, Findings& findings ) {
   auto place = "/definitions/" + name;
   if ( !keeps( place, file.document() ) ) {
      Search search( file, findings );
      search.run( place, file.document(), "" );
      search.finish();
   }
}

std::vector<std::string> keysAt( const std::string& place ) {
   auto inBundle = place;
   auto& schema = bundle().at( inBundle );
   auto keys = keysOf( schema );
   for ( auto& part : listed( schema, inBundle, "allOf" ) ) {
      auto more = keysAt( part );
      keys.insert( keys.end(), more.begin(), more.end() );
   }
   return keys;
}

} // namespace Schema
