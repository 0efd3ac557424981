#include "LibraryTrial.h"
#include "Mutator.h"
#include "TemporaryDirectory.h"
#include "support/HostServices.h"

#include "Check.h"

#include <rapidjson/pointer.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <regex>
#include <sstream>

// `quillonctl check` and the library, given the same documents: what check passes the library must take, and
// what the library takes check must pass, but for what the list below says.

namespace {

/** Something that check refuses although the library takes it. */
struct Stricter {
   /** Found in the text of the finding. */
   const char* pattern;
   const char* why;
   /** Whether that is so only for an object on a device that one before has made. */
   bool isForLaterObjects = false;
};

const std::vector<Stricter> stricter = {
   { R"~(this key was there before, in line)~", "of a key that comes twice one value is lost" },
   { R"~(^objects.json:\S+ (/[^/]*: unknown key|lacks the key "objects"|must be|/(objects|.schema): must be))~",
      "objects.json is no document of the library's" },
   { R"~(^objects.json:\S+ /objects/[0-9]+: (must be an object|lacks the keys? "(kind|name|alert|critical|args)"))~",
      "an object that is not asked for" },
   { R"~(^objects.json:\S+ /objects/[0-9]+/[a-zA-Z$]+: unknown key)~", "a key that nobody reads" },
   { R"~(^objects.json:\S+ /objects/[0-9]+/(name|alert|critical): )~", "what a host makes of an object" },
   { R"~(^objects.json:\S+ /objects/[0-9]+/args: must be an object)~", "a system object reads no arguments" },
   { R"~(/args/name: must be a name)~", "the name becomes the name of a file" },

   { R"~(args/driver: (must be|must name|an object before has)|/args: lacks the key "driverArgs"$)~",
      "a device that is there already is taken whatever driver is named", true },
   { R"~(/args/(did|uid): (the topology has no|device [0-9]+ lies))~",
      "a device that is there already is not looked for", true },
   { R"~(/args/(isMultiDevice|provideHam): must not be)~", "no driver works so" },
   { R"~(/driverArgs: lacks the keys? "(numPorts|numAtPorts)(", "numAtPorts)?"$)~",
      "a controller that is there already needs no numbers", true },
   { R"~((numPorts|numAtPorts|firmwareDownloadSize|resetReg|outOfResetVal): must be a)~",
      "a controller that is there already needs no numbers", true },
   { R"~(: must be a whole number of 32 bits, or a text of its digits, not (-?[0-9.]+(\.|e).*|"\s*[+-]?[0-9].*")$)~",
      "a conversion stops at what is no digit" },
   { R"~(/prop: must be a number .*, not "\s*[-+]?([0-9.]|inf|nan).*"$)~",
      "a conversion stops at what is no number" },
   { R"~(ActiveHigh: must be true or false, not [^n])~", "every text but true is false" },
   { R"~(mpssValueZero: must be true or false)~", "every text but true is false" },
   { R"~((modelName|serialNum|airflowDirection|ledName|portType|firmwarePath): must be a string( or null)?, not (?!null))~",
      "a text that is a number is a mistake" },
   { R"~((Bit|bitpos): must be an integer from 0 to 7)~", "a register has eight bits" },
   { R"~((register|resetReg): must be an integer from 0 to 255)~", "a register number has one byte" },
   { R"~((registerOffset: must be an integer from 0 to 4|maxRpm: must be an integer from 1))~",
      "a fan with such registers or speeds is none" },
   { R"~(/driverArgs/id: must be an integer from 0)~", "a transceiver has no negative number" },
   { R"~((portId: must be below|numAtPorts: must not be above) the number of ports)~", "no such port" },
   { R"~(firmwareDownloadSize: must be )~", "a block of one byte holds nothing" },
   { R"~((resetReg|outOfResetVal): does nothing without)~", "one key alone does nothing" },
   { R"~((resetReg|outOfResetVal): must be a whole number)~", "of which nothing is read without the other" },

   { R"~(^topology.json:\S+ \S+/did: a device before has the did)~", "the second could not be found" },
   { R"~(^topology.json:\S+ \S+/uid: a component before has the uid)~", "the second could not be found" },
   { R"~(^topology.json:\S+ \S+/uid: must not be 4294967295)~", "it would be found for every device" },
   { R"~(^topology.json:\S+ \S+/driver: must be one of .*, null, not ")~",
      "a driver that nobody has asked for yet" },
   { R"~(^topology.json:\S+ \S+/did: (there is no device|device [0-9]+, which switches))~",
      "a multiplexer behind which nobody looks yet" },
   { R"~(^topology.json:\S+ (\S+ )?(no device has the label "CpuCpld"|the label "CpuCpld"|the device "CpuCpld"))~",
      "the CPLD is needed when the system is read" },
   { R"~(^topology.json:\S+ \S+/label: device [0-9]+ lies)~", "the CPLD is needed when the system is read" },
   { R"~(^topology.json:\S+ \S+/provideHam: must not be 0)~", "the CPLD is needed when the system is read" },
};

struct Documents {
   std::string topology;
   std::string objects;
};

std::string textOf( const std::string& file ) {
   std::ostringstream text;
   text << std::ifstream( file ).rdbuf();
   return text.str();
}

std::string textOf( const rapidjson::Document& document ) {
   rapidjson::StringBuffer text;
   rapidjson::Writer<rapidjson::StringBuffer> writer( text );
   document.Accept( writer );
   return text.GetString();
}

rapidjson::Document parsed( const std::string& text ) {
   rapidjson::Document document;
   document.Parse( text.c_str() );
   return document;
}

Documents board( const std::string& folder ) {
   return { textOf( folder + "/topology.json" ), textOf( folder + "/objects.json" ) };
}

/** The errors that check finds. */
Findings errorsIn( const Documents& documents ) {
   Findings findings;
   auto topology = JsonFile::parse( "topology.json", documents.topology, findings );
   auto objects = JsonFile::parse( "objects.json", documents.objects, findings );
   Check::documents( topology.get(), objects.get(), findings );
   std::erase_if( findings, []( auto& finding ) { return finding.severity == Severity::Warning; } );
   return findings;
}

/** Whether an object before the one of a finding names the same device. */
bool isOnDeviceOfBefore( const Finding& finding, const rapidjson::Document& objects ) {
   auto didOf = []( const rapidjson::Value& object ) -> const rapidjson::Value* {
      return object.IsObject() ? rapidjson::Pointer( "/args/did" ).Get( object ) : nullptr;
   };
   auto index = std::stoul( finding.pointer.substr( strlen( "/objects/" ) ) );
   auto array = objects["objects"].GetArray();
   auto did = didOf( array[static_cast<rapidjson::SizeType>( index )] );
   return did && std::any_of( array.begin(), array.begin() + index, [&]( auto& before ) {
      auto other = didOf( before );
      return other && *other == *did;
   } );
}

/** Whether a finding is in an object of which no host could ask for anything. */
bool isNotAskedFor( const Finding& finding, const rapidjson::Document& objects ) {
   std::smatch index;
   if ( !std::regex_search( finding.pointer, index, std::regex( "^/objects/([0-9]+)" ) ) ) {
      return false;
   }
   auto kind = rapidjson::Pointer( ( index.str() + "/kind" ).c_str() ).Get( objects );
   static const std::regex kinds( "temp_sensor|fan|psu|led|slot|xcvr|gpio|poe_port" );
   return !kind || !kind->IsString() || !std::regex_match( kind->GetString(), kinds );
}

const Stricter* stricterFor( const Finding& finding, const rapidjson::Document& objects ) {
   static const std::vector<std::regex> patterns = [] {
      std::vector<std::regex> made;
      for ( auto& row : stricter ) {
         made.emplace_back( row.pattern );
      }
      return made;
   }();
   if ( isNotAskedFor( finding, objects ) ) {
      static const Stricter notAskedFor { "", "an object that is not asked for" };
      return &notAskedFor;
   }
   auto bare = finding;
   bare.repair.clear();
   auto text = bare.text();
   for ( size_t i = 0; i < patterns.size(); ++i ) {
      auto& row = stricter[i];
      if ( std::regex_search( text, patterns[i] ) &&
           ( !row.isForLaterObjects || isOnDeviceOfBefore( finding, objects ) ) ) {
         return &row;
      }
   }
   return nullptr;
}

size_t numberFrom( const char* variable, size_t otherwise ) {
   auto text = getenv( variable );
   return text ? std::stoul( text ) : otherwise;
}

class Agreement : public Host::Test {
protected:
   /** What the library does with documents that it does not take, with either way of access. */
   std::string refusalOf( const Documents& documents ) {
      auto objects = parsed( documents.objects );
      if ( objects.HasParseError() ) {
         objects.SetObject();
      }
      for ( auto access : { Access::Server, Access::Simulation } ) {
         auto refusal = tryOut( plugin, documents.topology, objects, access, registerFiles.path() );
         if ( !refusal.empty() ) {
            return refusal;
         }
      }
      return "";
   }

   /** @return how they disagree about documents, or an empty text */
   std::string disagreement( const Documents& documents ) {
      auto refusal = refusalOf( documents );
      auto errors = errorsIn( documents );
      if ( errors.empty() ) {
         ++counts[refusal.empty() ? "passed and taken" : "PASSED AND REFUSED"];
         return refusal.empty() ? "" : "check passes what the library refuses: " + refusal;
      }
      if ( !refusal.empty() ) {
         ++counts["found and refused"];
         return "";
      }
      std::string unexplained;
      for ( auto& error : errors ) {
         if ( auto reason = stricterFor( error, parsed( documents.objects ) ) ) {
            ++counts[std::string( "stricter: " ) + reason->why];
         } else {
            unexplained += "\n   " + error.text();
         }
      }
      ++counts[unexplained.empty() ? "found and taken, with reason" : "FOUND AND TAKEN"];
      return unexplained.empty() ? "" : "check refuses what the library takes:" + unexplained;
   }

   Plugin plugin;
   TemporaryDirectory registerFiles;
   std::map<std::string, size_t> counts;
};

TEST_F( Agreement, HoldsForTheBoards ) {
   EXPECT_EQ( disagreement( board( SELVANE ) ), "" );
   EXPECT_EQ( disagreement( board( SMALL_BOARD ) ), "" );
   EXPECT_EQ( counts["passed and taken"], 2U );
}

TEST_F( Agreement, HoldsForMutatedDocuments ) {
   auto seed = numberFrom( "QUILLON_CHECK_SEED", 1 );
   auto count = numberFrom( "QUILLON_CHECK_DOCUMENTS", DOCUMENTS );
   const Documents boards[] = { board( SMALL_BOARD ), board( SELVANE ) };
   constexpr size_t seldom = 40; // the large board, which says little that the small one does not
   Mutator mutator( seed );

   for ( size_t i = 0; i < count; ++i ) {
      auto& origin = boards[mutator.below( seldom ) == 0];
      auto topology = parsed( origin.topology );
      auto objects = parsed( origin.objects );
      for ( auto changes = 1 + mutator.below( 3 ); changes > 0; --changes ) {
         mutator.mutate( mutator.below( 3 ) ? objects : topology );
      }
      Documents documents { textOf( topology ), textOf( objects ) };

      EXPECT_EQ( disagreement( documents ), "" ) << "document " << i << " of seed " << seed << "\n"
                                                 << documents.topology << "\n"
                                                 << documents.objects;
   }
   for ( auto& [what, times] : counts ) {
      std::cout << times << " " << what << "\n";
   }
   EXPECT_GT( counts["passed and taken"], 0U );
   EXPECT_GT( counts["found and refused"], 0U );
}

} // namespace
