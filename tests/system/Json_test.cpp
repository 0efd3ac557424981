// What every command writes with --json, good and failing, before the schemas that it promises to keep.

#include "OutputSchema.h"
#include "SystemTest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

/** A command in the form that help shows, with words that make one of it. */
struct Form {
   const char* form;
   Process::Arguments words;
   /** What its schema has for each object; nothing for anything that it has. */
   const char* row;
};

const Form forms[] = {
   { "status", { "status" }, "" },
   { "fan NAME rpm", { "fan", "fan1", "rpm" }, "fan.schema.json#/definitions/rpm" },
   { "fan NAME rpm RPM", { "fan", "fan1", "rpm", "9000" }, "fan.schema.json#/definitions/rpm_request" },
   { "slot NAME", { "slot", "tray1" }, "status.schema.json#/definitions/slot" },
   { "xcvr NAME", { "xcvr", "sfp1" }, "status.schema.json#/definitions/xcvr" },
   { "xcvr NAME tx-disable on|off", { "xcvr", "sfp1", "tx-disable", "on" },
      "xcvr.schema.json#/definitions/tx_disable" },
   { "led NAME off|good|warning|bad|inactive|unknown|beacon|release", { "led", "led1", "bad" },
      "led.schema.json#/definitions/setting" },
   { "gpio NAME get", { "gpio", "bit", "get" }, "status.schema.json#/definitions/gpio" },
   { "gpio NAME set", { "gpio", "bit", "set" }, "status.schema.json#/definitions/gpio" },
   { "gpio NAME clear", { "gpio", "bit", "clear" }, "status.schema.json#/definitions/gpio" },
   { "system version", { "system", "version" }, "status.schema.json#/definitions/system" },
   { "system reload-cause", { "system", "reload-cause" }, "system.schema.json#/definitions/reload_cause" },
   { "system poe-reboot keep|reset", { "system", "poe-reboot", "keep" },
      "system.schema.json#/definitions/poe_reboot" },
   { "poe status", { "poe", "status" }, "poe.schema.json#/definitions/row" },
   { "poe status --all", { "poe", "status", "--all" }, "poe.schema.json#/definitions/row" },
   { "poe firmware show", { "poe", "firmware", "show" }, "poe.schema.json#/definitions/firmware" },
   { "poe firmware update", { "poe", "firmware", "update" }, "poe.schema.json#/definitions/update" },
   { "poe NAME", { "poe", "port1" }, "poe.schema.json#/definitions/details" },
   { "poe NAME init", { "poe", "port1", "init" }, "poe.schema.json#/definitions/init" },
   { "poe NAME pse on|off", { "poe", "port1", "pse", "on" }, "poe.schema.json#/definitions/pse" },
   { "poe NAME on", { "poe", "port1", "on" }, "poe.schema.json#/definitions/power" },
   { "poe NAME off", { "poe", "port1", "off" }, "poe.schema.json#/definitions/power" },
   { "poe NAME limit class|WATTS", { "poe", "port1", "limit", "16" }, "poe.schema.json#/definitions/limit" },
   { "poe NAME legacy on|off", { "poe", "port1", "legacy", "on" }, "poe.schema.json#/definitions/legacy" },
   { "poe NAME shutoff 1|2|3 on|off", { "poe", "port1", "shutoff", "2", "on" },
      "poe.schema.json#/definitions/shutoff" },
   { "poe NAME report", { "poe", "port1", "report" }, "poe.schema.json#/definitions/report" },
   { "poe NAME report --raw", { "poe", "port1", "report", "--raw" }, "poe.schema.json#/definitions/report" },
   { "watch", { "watch", "--interval", "0.01", "--count", "1" }, "" },
   { "check", { "check" }, "" },
   { "emu LINE", { "emu", "list" }, "" },
};

std::vector<std::string> linesOf( const std::string& text ) {
   std::istringstream stream( text );
   std::vector<std::string> lines;
   for ( std::string line; std::getline( stream, line ); ) {
      lines.push_back( line );
   }
   return lines;
}

class Json : public SystemTest {
protected:
   /** A board with an object of each kind that the library has a driver for, which all do what the script
    * says. */
   std::string boardOf( const std::string& script ) const {
      auto objects = sensor( "inlet", 1, fmt::format( R"(, "driverArgs": {{ "script": "{}" }})", script ) );
      for ( auto& [kind, name] : { std::pair( "fan", "fan1" ), std::pair( "slot", "tray1" ),
               std::pair( "xcvr", "sfp1" ), std::pair( "poe_port", "port1" ), std::pair( "led", "led1" ),
               std::pair( "gpio", "bit" ), std::pair( "system", "switch" ) } ) {
         objects += "," + scriptedObject( kind, name, script );
      }
      return boardWith( objects );
   }

   static Process::Arguments with( Process::Arguments options, const Process::Arguments& words ) {
      options.insert( options.begin(), "--json" );
      options.insert( options.end(), words.begin(), words.end() );
      return options;
   }

   const OutputSchema& schemaOf( const std::string& command, const std::string& row = "" ) {
      auto& schema = schemas_[command + row];
      if ( !schema ) {
         schema = std::make_unique<OutputSchema>( command, row );
      }
      return *schema;
   }

   /** Runs a command with --json, and holds its one line against the schema; of a watch, each of them. */
   Result runChecked(
      const Process::Arguments& options, const Process::Arguments& words, const std::string& row = "" ) {
      auto result = run( with( options, words ) );
      auto name = fmt::format( "{}: {}", fmt::join( options, " " ), fmt::join( words, " " ) );
      auto lines = linesOf( result.out );
      EXPECT_TRUE( lines.size() == 1 || ( words.front() == "watch" && lines.size() > 1 ) )
         << name << ": " << result.out;
      for ( auto& line : lines ) {
         EXPECT_EQ( schemaOf( words.front(), row ).complaint( line ), "" ) << name;
      }
      EXPECT_EQ( result.signal, 0 ) << name;
      return result;
   }

private:
   std::map<std::string, std::unique_ptr<OutputSchema>> schemas_;
};

/** The forms of a command that its help tells. */
std::set<std::string> formsIn( const std::string& help ) {
   const std::string begin = "  quillonctl ";
   std::set<std::string> told;
   for ( auto& line : linesOf( help.substr( std::min( help.find( "Commands:" ), help.size() ) ) ) ) {
      if ( line.starts_with( begin ) ) {
         told.insert( line.substr( begin.size() ) );
      }
   }
   return told;
}

} // namespace

TEST_F( Json, HasARowHereForEveryCommand ) {
   std::set<std::string> tested;
   for ( auto& form : forms ) {
      tested.insert( form.form );
   }

   // What help tells of these is no list of forms; serve, which does not end, has tests of its own.
   std::set<std::string> told = { "status", "watch", "check", "emu LINE" };
   std::set<std::string> words = { "status", "watch", "check", "serve", "emu" };
   for ( auto& command : linesOf( run( { "complete", "0", "" } ).out ) ) {
      auto formsOfIt = formsIn( run( { command, "--help" } ).out );
      EXPECT_TRUE( !formsOfIt.empty() || words.contains( command ) ) << command;
      told.merge( formsOfIt );
   }
   EXPECT_EQ( told, tested );
}

TEST_F( Json, KeepsItsSchemaWhenAllIsWell ) {
   auto board = boardOf( "is 1" );
   for ( auto& [form, words, row] : forms ) {
      if ( words.front() != "emu" && words != Process::Arguments { "poe", "firmware", "update" } ) {
         auto result = runChecked( { "--sim", "--plugin", SCRIPTED_PLUGIN, "--board", board }, words, row );

         EXPECT_EQ( result.exitStatus, 0 ) << form << ": " << result.err;
         EXPECT_EQ( result.err, "" ) << form;
      }
   }
}

TEST_F( Json, KeepsItsSchemaWhenEverythingFails ) {
   // The library refuses the objects; chips are gone; the library throws, or ends its process; a table has no
   // callbacks; a status is none that anybody knows.
   for ( auto script : { "unknownDriver", "fails", "throws", "aborts", "noTable", "answers 77" } ) {
      auto board = boardOf( script );
      for ( auto& [form, words, row] : forms ) {
         if ( words.front() != "emu" ) {
            auto result =
               runChecked( { "--sim", "--plugin", SCRIPTED_PLUGIN, "--board", board }, words, row );

            EXPECT_LE( result.exitStatus, 1 ) << script << ", " << form;
         }
      }
   }
}

TEST_F( Json, KeepsItsSchemaWithoutTheLibrary ) {
   auto board = boardOf( "" );
   environment["QUILLON_SMBUS_CONTROL"] = "/nowhere";
   for ( auto& [form, words, row] : forms ) {
      for ( auto& options : { Process::Arguments { "--socket", "/nowhere" },
               Process::Arguments { "--sim", "--plugin", NO_PLUGIN } } ) {
         auto all = options;
         all.insert( all.end(), { "--board", board } );

         auto result = runChecked( all, words, row );

         // A check needs no library.
         auto isCheck = words.front() == "check";
         EXPECT_EQ( result.exitStatus, isCheck ? 0 : 1 ) << form;
         EXPECT_EQ( result.err.empty(), isCheck ) << form;
      }
   }
}

TEST_F( Json, KeepsItsSchemaWhenTheDocumentsAreWrong ) {
   auto board = boardWith( R"({ "kind": "fan" })" );
   for ( auto& [form, words, row] : forms ) {
      if ( words.front() != "emu" ) {
         EXPECT_EQ( runChecked( { "--sim", "--board", board }, words, row ).exitStatus, 2 ) << form;
      }
   }
}

TEST_F( Json, KeepsItsSchemaWhenTheUsageIsWrong ) {
   auto board = boardOf( "" );
   for ( auto& [form, words, row] : forms ) {
      EXPECT_EQ( runChecked( { "--sim", "--board", board, "--nonsense" }, words, row ).exitStatus, 2 )
         << form;
   }
   for ( auto& words : { Process::Arguments { "status", "nobody" }, Process::Arguments { "fan", "nobody" },
            Process::Arguments { "led", "led1", "purple" }, Process::Arguments { "poe" },
            Process::Arguments { "emu", "two\nlines" } } ) {
      EXPECT_EQ( runChecked( { "--sim", "--board", board }, words ).exitStatus, 2 ) << words.front();
   }
}

TEST_F( Json, KeepsItsSchemaInEveryState ) {
   struct Row {
      const char* kind;
      const char* script;
      const char* state;
   };

   const Row rows[] = {
      { "fan", "is 900", "stalled" },
      { "xcvr", "is 0", "ok" },
      { "xcvr", "is 1", "absent" },
      { "xcvr", "is 2", "fault" },
      { "xcvr", "qsfp", "ok" },
      { "poe_port", "is 0", "disabled" },
      { "poe_port", "is 1", "detecting" },
      { "poe_port", "is 2", "requesting" },
      { "poe_port", "is 3", "requesting dual" },
      { "poe_port", "is 4", "powered" },
      { "poe_port", "is 5", "fault" },
      { "poe_port", "is 6", "overload" },
      { "poe_port", "is 7", "unknown" },
      { "poe_port", "user 4", "powered" },
      { "poe_port", "noPower 4", "failed" },
      { "poe_port", "noReport 4", "powered" },
   };
   for ( auto& [kind, script, state] : rows ) {
      auto board =
         boardWith( scriptedObject( "gpio", "bit", "" ) + "," + scriptedObject( kind, "port1", script ) );
      Process::Arguments options = { "--sim", "--plugin", SCRIPTED_PLUGIN, "--board", board };

      auto result = runChecked( options, { "status", "port1" } );

      EXPECT_THAT( result.out, HasSubstr( fmt::format( R"("state":"{}")", state ) ) ) << script;
      if ( kind == std::string( "poe_port" ) ) {
         runChecked( options, { "poe", "status" }, "poe.schema.json#/definitions/row" );
         runChecked( options, { "poe", "port1" }, "poe.schema.json#/definitions/details" );
         runChecked( options, { "poe", "port1", "report" }, "poe.schema.json#/definitions/report" );
      }
   }
}

TEST_F( Json, KeepsItsSchemaForABoardWithoutObjects ) {
   EXPECT_EQ( runChecked( { "--sim", "--board", boardWith( "" ) }, { "status" } ).exitStatus, 0 );
}

TEST_F( Json, IsAChainOfDocumentsInRounds ) {
   auto result = run( { "--json", "--sim", "status", "--interval", "0.01", "--count", "3" } );

   auto lines = linesOf( result.out );
   EXPECT_EQ( lines.size(), 3U );
   for ( auto& line : lines ) {
      EXPECT_EQ( schemaOf( "status" ).complaint( line ), "" );
   }
}

TEST_F( Json, IsUtf8WhateverItTells ) {
   auto result = runChecked( { "--sim", "--board", ( folder / "b\xC3\xA4r\xFF" ).string() }, { "status" } );

   EXPECT_THAT( result.out, StartsWith( "{\"board\":\"b\xC3\xA4r?\"" ) );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Json, FailsWhereNobodyTakesIt ) {
   EXPECT_EQ( runChecked( { "--sim" }, { "status" } ).exitStatus, 0 );

   auto command = fmt::format( "{} --json --sim status >/dev/full", QUILLONCTL );
   auto result = Process( { "/bin/sh", "-c", command }, environment ).wait();

   EXPECT_EQ( result.err, "quillonctl: cannot write the output: No space left on device\n" );
   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_EQ( result.signal, 0 );
}

TEST_F( Json, SchemasDescribeEveryValue ) {
   for ( auto& entry : std::filesystem::directory_iterator( OUTPUT_SCHEMAS ) ) {
      std::ifstream file( entry.path() );
      std::ostringstream text;
      text << file.rdbuf();
      rapidjson::Document document;
      ASSERT_FALSE( document.Parse( text.str().c_str() ).HasParseError() ) << entry.path();
      const rapidjson::Value& schema = document;
      for ( auto& definition : schema["definitions"].GetObject() ) {
         if ( definition.value.HasMember( "properties" ) &&
              definition.value["properties"].HasMember( "state" ) ) {
            for ( auto& member : definition.value["properties"].GetObject() ) {
               auto isNamed = member.name == "kind" || member.name == "state";
               EXPECT_TRUE(
                  isNamed || member.value.HasMember( "description" ) || member.value.HasMember( "$ref" ) )
                  << entry.path() << ": " << member.name.GetString();
            }
         }
      }
   }
}
