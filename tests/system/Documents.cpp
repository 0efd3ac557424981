#include "Documents.h"

#include <fmt/format.h>

#include <ostream>

namespace {

constexpr const char* cpld =
   R"({ "type": "I2C", "id": 0, "ham": "QuillonSmbus", "devices": )"
   R"([ { "did": 9, "label": "CpuCpld", "driver": null, "address": { "address": 48 } } ] })";

constexpr const char* noObjects = R"({ "objects": [] })";

} // namespace

std::ostream& operator<<( std::ostream& stream, const Row& row ) { return stream << row.name; }

Documents topology( const std::string& text ) { return { text, noObjects }; }

Documents medium( const std::string& text ) { return topology( fmt::format( "[\n{},\n{}\n]", cpld, text ) ); }

Documents device( const std::string& text ) {
   return medium( R"({ "type": "I2C", "id": 1, "ham": "SimHam", "devices": [)" + ( "\n" + text ) + "\n] }" );
}

Documents objects( const std::string& text ) { return { fmt::format( "[ {} ]", cpld ), text }; }

Documents object( const std::string& text ) { return objects( "{ \"objects\": [\n" + text + "\n] }" ); }

Result DocumentsTest::statusOf( const Documents& documents, const Process::Arguments& more ) const {
   write( "board/topology.json", documents.topology );
   write( "board/objects.json", documents.objects );
   Process::Arguments arguments { "--sim", "--board", ( folder / "board" ).string(), "status" };
   arguments.insert( arguments.end(), more.begin(), more.end() );
   return run( arguments );
}

TEST_P( WrongDocument, IsRefusedWithTheReason ) {
   auto& [name, documents, findings] = GetParam();

   auto result = statusOf( documents );

   std::string expected;
   for ( auto& finding : findings ) {
      expected += fmt::format( "quillonctl: {}/board/{}\n", folder.string(), finding );
   }
   EXPECT_EQ( result.err, expected ) << name;
   EXPECT_EQ( result.out, "" ) << name;
   EXPECT_EQ( result.exitStatus, 2 ) << name;
   EXPECT_EQ( result.signal, 0 ) << name;
}

// Not every program that is linked with this has rows.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST( WrongDocument );

std::string nameOf( const ::testing::TestParamInfo<Row>& test ) { return test.param.name; }
