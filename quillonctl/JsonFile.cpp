#include "JsonFile.h"

#include "JsonRepair.h"
#include "common/TextFile.h"

#include <fmt/format.h>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cerrno>

namespace {

/** Far beyond any board, and far below what the library, which parses by recursion, can take. */
constexpr size_t deepest = 64;

// Nesting in a file must not be able to use up our own stack, and names go out again as JSON.
constexpr unsigned parseFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;

/**
 * Tells its offset inside of tokens too, where the reader works on a copy of its own streams, and has an end
 * that a cut-off character can't run over.
 */
struct OffsetStream : rapidjson::MemoryStream {
   explicit OffsetStream( const std::string& text ) : MemoryStream( text.data(), text.size() ) {}
};

} // namespace

/** Notes where each value stands, and finds what the library would take, but not as it was meant. */
class Positions : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Positions> {
public:
   Positions( JsonFile& file, const OffsetStream& stream ) : file_( file ), stream_( stream ) {}

   bool Default() {
      note( nextToken() );
      cursor_ = stream_.Tell();
      return true;
   }

   bool String( const char* text, rapidjson::SizeType length, bool ) {
      auto offset = nextToken();
      auto pointer = note( offset );
      refuseZero( { text, length }, pointer, offset );
      cursor_ = stream_.Tell();
      return true;
   }

   bool Key( const char* key, rapidjson::SizeType length, bool ) {
      auto& object = open_.back();
      object.keyOffset = nextToken();
      object.key.assign( key, length );
      refuseZero( object.key, object.pointer, object.keyOffset );
      cursor_ = stream_.Tell();
      return true;
   }

   bool StartObject() { return enter( false ); }

   bool EndObject( rapidjson::SizeType ) { return leave(); }

   bool StartArray() { return enter( true ); }

   bool EndArray( rapidjson::SizeType ) { return leave(); }

   Findings findings;
   bool tooDeep = false;

   size_t cursor() const { return cursor_; }

private:
   /** An object or array that is not yet closed, and where in it we are. */
   struct Container {
      std::string pointer;
      bool isArray;
      size_t index;
      std::string key;
      size_t keyOffset;
      /** Whether another value stands at this pointer already. */
      bool isRepeated;
   };

   /** The reader tells the end of a token; it begins behind the last one and what stands between them. */
   size_t nextToken() const { return file_.text_.find_first_not_of( " \t\r\n:,", cursor_ ); }

   std::string note( size_t offset ) {
      if ( open_.empty() ) {
         file_.positions_.emplace( "", JsonFile::Position { offset, offset } );
         return "";
      }
      auto& in = open_.back();
      auto pointer = in.isArray ? under( in.pointer, in.index++ ) : under( in.pointer, in.key );
      auto keyOffset = in.isArray ? offset : in.keyOffset;
      auto [first, isNew] = file_.positions_.emplace( pointer, JsonFile::Position { keyOffset, offset } );
      // Below a key that is repeated, that has been told.
      if ( !isNew && !in.isArray && !in.isRepeated ) {
         auto line = file_.placeOf( first->second.key ).line;
         find( keyOffset, pointer, fmt::format( "this key was there before, in line {}", line ) );
      }
      return pointer;
   }

   void find( size_t offset, const std::string& pointer, const std::string& reason ) {
      findings.push_back( { Severity::Error, file_.name_, file_.placeOf( offset ), pointer, reason, "" } );
   }

   /** The library, and file names, would see only what stands before it. */
   void refuseZero( std::string_view text, const std::string& pointer, size_t offset ) {
      if ( text.find( '\0' ) != std::string_view::npos ) {
         find( offset, pointer, "must not hold the character \\u0000" );
      }
   }

   bool enter( bool isArray ) {
      auto offset = nextToken();
      auto pointer = note( offset );
      cursor_ = offset + 1;
      open_.push_back( { pointer, isArray, 0, "", 0, file_.positions_.at( pointer ).value != offset } );
      tooDeep = open_.size() > deepest;
      return !tooDeep;
   }

   bool leave() {
      open_.pop_back();
      cursor_ = nextToken() + 1;
      return true;
   }

   JsonFile& file_;
   const OffsetStream& stream_;
   size_t cursor_ = 0;
   std::vector<Container> open_;
};

namespace {

/** What to do about a file that cannot be read. @param reason an errno, or 0 where it is not fit */
std::string repairFor( int reason ) {
   return reason == EISDIR || reason == 0 ? "put the document there, or name another board with --board"
          : reason == EACCES              ? "make it readable, or name another board with --board"
                             : "name a folder that holds topology.json and objects.json with --board";
}

} // namespace

std::unique_ptr<JsonFile> JsonFile::load( const std::filesystem::path& path, Findings& findings ) {
   auto name = path.string();
   try {
      return parse( name, Common::readTextFile( path ), findings );
   } catch ( const Common::TextFileError& failure ) {
      auto reason = failure.error == EISDIR ? "it is a folder" : failure.what();
      findings.push_back( { Severity::Error, name, {}, "", fmt::format( "cannot read {}: {}", name, reason ),
         repairFor( failure.error ) } );
      return nullptr;
   }
}

std::unique_ptr<JsonFile> JsonFile::parse( const std::string& name, std::string text, Findings& findings ) {
   std::unique_ptr<JsonFile> file( new JsonFile( name, std::move( text ) ) );
   return file->parse( findings ) ? std::move( file ) : nullptr;
}

bool JsonFile::parse( Findings& findings ) {
   auto fail = [&]( size_t offset, const std::string& reason, const std::string& repair = "" ) {
      findings.push_back( { Severity::Error, name_, placeOf( offset ), "", reason, repair } );
      return false;
   };
   if ( hasByteOrderMark( text_ ) ) {
      return fail( 0, "begins with a byte order mark", "save it as UTF-8 without one" );
   }
   // The library takes a C string, and would see only what stands before it.
   if ( auto zero = text_.find( '\0' ); zero != std::string::npos ) {
      return fail( zero, "there is a zero byte in the text" );
   }

   OffsetStream stream( text_ );
   Positions positions( *this, stream );
   rapidjson::Reader reader;
   auto result = reader.Parse<parseFlags>( stream, positions );
   if ( positions.tooDeep ) {
      return fail( positions.cursor() - 1, fmt::format( "nested deeper than {} levels", deepest ) );
   }
   if ( result.IsError() ) {
      std::string reason = rapidjson::GetParseError_En( result.Code() );
      reason.erase( reason.find_last_not_of( '.' ) + 1 );
      return fail( result.Offset(), reason, repairOfSyntax( result.Code(), text_, result.Offset() ) );
   }
   findings.insert( findings.end(), positions.findings.begin(), positions.findings.end() );
   OffsetStream again( text_ );
   document_.ParseStream<parseFlags>( again );
   return true;
}

Place JsonFile::placeOf( size_t offset ) const {
   Place place { 1, 1 };
   for ( auto c : std::string_view( text_ ).substr( 0, offset ) ) {
      if ( c == '\n' ) {
         ++place.line;
         place.column = 1;
      } else if ( ( c & 0xC0 ) != 0x80 ) { // the further bytes of a character don't count
         ++place.column;
      }
   }
   return place;
}

JsonFile::Position JsonFile::positionOf( const std::string& pointer ) const {
   auto found = positions_.find( pointer );
   return found != positions_.end() ? found->second : positionOf( pointer.substr( 0, pointer.rfind( '/' ) ) );
}

Finding JsonFile::error(
   const std::string& pointer, const std::string& reason, const std::string& repair ) const {
   return { Severity::Error, name_, placeOf( positionOf( pointer ).value ), pointer, reason, repair };
}

Finding JsonFile::errorAtKey(
   const std::string& pointer, const std::string& reason, const std::string& repair ) const {
   return { Severity::Error, name_, placeOf( positionOf( pointer ).key ), pointer, reason, repair };
}

Finding JsonFile::warning(
   const std::string& pointer, const std::string& reason, const std::string& repair ) const {
   return { Severity::Warning, name_, placeOf( positionOf( pointer ).value ), pointer, reason, repair };
}

Finding JsonFile::warningAtKey(
   const std::string& pointer, const std::string& reason, const std::string& repair ) const {
   return { Severity::Warning, name_, placeOf( positionOf( pointer ).key ), pointer, reason, repair };
}

const rapidjson::Value* member( const rapidjson::Value& object, const char* key ) {
   auto found = object.FindMember( key );
   return found == object.MemberEnd() ? nullptr : &found->value;
}

std::string textOf( const rapidjson::Value& string ) {
   return { string.GetString(), string.GetStringLength() };
}

std::string under( const std::string& pointer, std::string_view token ) {
   auto longer = pointer + '/';
   for ( auto c : token ) {
      longer += c == '~' ? "~0" : c == '/' ? "~1" : std::string( 1, c );
   }
   return longer;
}

std::string under( const std::string& pointer, size_t index ) {
   return under( pointer, std::to_string( index ) );
}

std::string compact( const rapidjson::Value& value ) {
   rapidjson::StringBuffer buffer;
   rapidjson::Writer<rapidjson::StringBuffer> writer( buffer );
   value.Accept( writer );
   return { buffer.GetString(), buffer.GetSize() };
}

std::optional<std::string> textIn( const rapidjson::Value& object, const char* key ) {
   auto value = member( object, key );
   return value && value->IsString() ? std::optional( textOf( *value ) ) : std::nullopt;
}

std::optional<uint32_t> unsignedIn( const rapidjson::Value& object, const char* key ) {
   auto value = member( object, key );
   return value && value->IsUint() ? std::optional( value->GetUint() ) : std::nullopt;
}
