#include "Ham/Ham.h"

#include "Drivers/Drivers.h"
#include "HostServices.h"
#include "LoggingHam.h"
#include "ObjectLayout.h"
#include "TestRow.h"

#include <fmt/format.h>

#include <gmock/gmock.h>

#include <type_traits>

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

/** Only what every Ham must have. */
class BareHam : public Ham::Ham {
public:
   void prepare() override {}

   ql_status execute() override { return QL_STATUS_OK; }
};

struct ThrowingDefault {
   const char* operation;
   void ( *call )( Ham::Ham& ham );
};

const ThrowingDefault throwingDefaults[] = {
   { "addRecvByte", []( Ham::Ham& ham ) { ham.addRecvByte(); } },
   { "addRead8", []( Ham::Ham& ham ) { ham.addRead8( 0, 1 ); } },
   { "addRead16", []( Ham::Ham& ham ) { ham.addRead16( 0, 1 ); } },
   { "addRead32", []( Ham::Ham& ham ) { ham.addRead32( 0, 1 ); } },
   { "addRead", []( Ham::Ham& ham ) { ham.addRead( 0, 4, false, 1 ); } },
   { "addReadBlock", []( Ham::Ham& ham ) { ham.addReadBlock( 0, 1 ); } },
   { "addSendByte", []( Ham::Ham& ham ) { ham.addSendByte( 0, false ); } },
   { "addWrite8", []( Ham::Ham& ham ) { ham.addWrite8( 0, 0, false, 1 ); } },
   { "addWrite16", []( Ham::Ham& ham ) { ham.addWrite16( 0, 0, false, 1 ); } },
   { "addWrite32", []( Ham::Ham& ham ) { ham.addWrite32( 0, 0, false, 1 ); } },
   { "addWrite", []( Ham::Ham& ham ) { ham.addWrite( 0, "", 0, false, 1 ); } },
   { "addWriteBlock", []( Ham::Ham& ham ) { ham.addWriteBlock( 0, "", 0, false, 1 ); } },
   { "addProcessCall", []( Ham::Ham& ham ) { ham.addProcessCall( 0, 0, 1 ); } },
   { "get8", []( Ham::Ham& ham ) { ham.get8( 0 ); } },
   { "get16", []( Ham::Ham& ham ) { ham.get16( 0 ); } },
   { "get32", []( Ham::Ham& ham ) { ham.get32( 0 ); } },
   { "getBlock", []( Ham::Ham& ham ) { ham.getBlock( 0, 4 ); } },
};

/** What a call throws, in words. */
template <typename Call>
std::string whatOf( Call call ) {
   try {
      call();
   } catch ( const NotImplementedException& exception ) {
      return exception.what();
   }
   return "nothing";
}

class HamDefaults : public Host::Test {
protected:
   BareHam ham;
};

} // namespace

TEST_F( HamDefaults, ThrowTheNameOfTheOperation ) {
   for ( auto& row : throwingDefaults ) {
      EXPECT_EQ( whatOf( [&] { row.call( ham ); } ), std::string( "Not implemented " ) + row.operation );
   }
}

TEST_F( HamDefaults, InitDoesNothing ) {
   ham.init();
   EXPECT_THAT( Host::traces, ElementsAre() );
}

TEST_F( HamDefaults, SetExpectedLeavesATrace ) {
   std::map<uint32_t, Utils::ExpectedVal> values;
   ham.setExpected( &values );
   EXPECT_THAT( Host::traces, ElementsAre( Host::TraceLine { 0, "virtual Ham::setExpected() invoked!!!" } ) );
}

TEST_F( HamDefaults, SetDriverNameLeavesATrace ) {
   ham.setDriverName( "driver", "name" );
   EXPECT_THAT(
      Host::traces, ElementsAre( Host::TraceLine { 0, "virtual Ham::setDriverName() invoked!!!" } ) );
}

TEST_F( HamDefaults, FormsOver32BitsThrowTheNameOfTheirQueueingOperation ) {
   uint32_t value = 0x5A5A5A5A;
   EXPECT_EQ( whatOf( [&] { ham.read32( 0, &value, 1 ); } ), "Not implemented addRead32" );
   EXPECT_EQ( whatOf( [&] { ham.write32( 0, 1, false, 1 ); } ), "Not implemented addWrite32" );
   EXPECT_EQ( value, 0x5A5A5A5AU );
}

TEST( NotImplementedException, IsAStandardExceptionWithOneText ) {
   static_assert( std::is_base_of_v<std::exception, NotImplementedException> );
   static_assert( sizeof( NotImplementedException ) == sizeof( std::exception ) + sizeof( std::string ) );
   EXPECT_STREQ( NotImplementedException( "anything" ).what(), "Not implemented anything" );
   EXPECT_STREQ( NotImplementedException( "" ).what(), "Not implemented " );
}

TEST( Ham, NumbersRegistersAndResponsesWith32Bits ) {
   static_assert( std::is_same_v<Ham::Ham::Register, uint32_t> );
   static_assert( std::is_same_v<Ham::Ham::ResponseId, uint32_t> );
   EXPECT_EQ( Ham::Ham::INVALID_RESPONSE_ID + 0, 0xFFFFFFFFU );
}

TEST( Ham, HasItsVirtualOperationsInTheAgreedOrder ) {
   using Layout::slotOf;
   using H = Ham::Ham;
   size_t slots[] = { slotOf( &H::init ), slotOf( &H::prepare ), slotOf( &H::execute ),
      slotOf( &H::addRecvByte ), slotOf( &H::addRead8 ), slotOf( &H::addRead16 ), slotOf( &H::addRead32 ),
      slotOf( &H::addRead ), slotOf( &H::addReadBlock ), slotOf( &H::addSendByte ), slotOf( &H::addWrite8 ),
      slotOf( &H::addWrite16 ), slotOf( &H::addWrite32 ), slotOf( &H::addWrite ), slotOf( &H::addWriteBlock ),
      slotOf( &H::addProcessCall ), slotOf( &H::get8 ), slotOf( &H::get16 ), slotOf( &H::get32 ),
      slotOf( &H::getBlock ), slotOf( &H::setExpected ), slotOf( &H::setDriverName ) };
   EXPECT_THAT(
      slots, ElementsAre( 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21 ) );
}

TEST( Ham, HasItsRetryFieldsRightBehindItsTable ) {
   BareHam ham;
   EXPECT_EQ( Layout::offsetOf( ham, ham.retryCount ), sizeof( void* ) );
   EXPECT_EQ( Layout::offsetOf( ham, ham.retryCountIsSet ), sizeof( void* ) + sizeof( uint32_t ) );
   EXPECT_EQ( sizeof( BareHam ), 2 * sizeof( void* ) );
}

TEST( Ham, HasNoVirtualDestructor ) { EXPECT_FALSE( std::has_virtual_destructor_v<Ham::Ham> ); }

TEST( Ham, StartsWithoutARetryCount ) {
   BareHam ham;
   EXPECT_EQ( ham.retryCount, 0U );
   EXPECT_FALSE( ham.retryCountIsSet );
}

TEST( Ham, KeepsTheRetryCount ) {
   BareHam ham;
   ham.retryCountIs( 0xFFFFFFFF );
   EXPECT_EQ( ham.retryCount, 0xFFFFFFFFU );
   EXPECT_TRUE( ham.retryCountIsSet );
   ham.retryCountIs( 0 );
   EXPECT_EQ( ham.retryCount, 0U );
   EXPECT_TRUE( ham.retryCountIsSet );
}

namespace {

constexpr char payload[] = "payload";

/** Everything that a one-shot form may write to. */
struct Outputs {
   uint8_t byte = 0x55;
   uint16_t word = 0x5555;
   uint32_t dword = 0x55555555;
   std::string block = "untouched";
   bool operator==( const Outputs& ) const = default;
};

struct OneShotForm {
   const char* name;
   ql_status ( *call )( Ham::Ham& ham, Outputs& out );
   const char* queued;
   /** Null for a write. */
   const char* fetched;
   Outputs result;
};

const OneShotForm oneShotForms[] = {
   { "recvByte", []( Ham::Ham& ham, Outputs& out ) { return ham.recvByte( &out.byte ); }, "addRecvByte()",
      "get8(7)", { .byte = 0x8A } },
   { "read8", []( Ham::Ham& ham, Outputs& out ) { return ham.read8( 18, &out.byte, 1 ); }, "addRead8(18, 1)",
      "get8(7)", { .byte = 0x8A } },
   { "read16", []( Ham::Ham& ham, Outputs& out ) { return ham.read16( 19, &out.word, 2 ); },
      "addRead16(19, 2)", "get16(7)", { .word = 0x16AB } },
   { "read32", []( Ham::Ham& ham, Outputs& out ) { return ham.read32( 20, &out.dword, 4 ); },
      "addRead32(20, 4)", "get32(7)", { .dword = 0x32ABCDEF } },
   { "read", []( Ham::Ham& ham, Outputs& out ) { return ham.read( 21, 300, &out.block, false, 1 ); },
      "addRead(21, 300, false, 1)", "getBlock(7, 300)", { .block = std::string( 100, 'x' ) } },
   { "read without a stop",
      []( Ham::Ham& ham, Outputs& out ) { return ham.read( 22, 1, &out.block, true, 2 ); },
      "addRead(22, 1, true, 2)", "getBlock(7, 1)", { .block = std::string( 100, 'x' ) } },
   { "readBlock", []( Ham::Ham& ham, Outputs& out ) { return ham.readBlock( 23, &out.block, 1 ); },
      "addReadBlock(23, 1)", "getBlock(7, 0)", { .block = std::string( 100, 'x' ) } },
   { "sendByte", []( Ham::Ham& ham, Outputs& ) { return ham.sendByte( 24, false ); },
      "addSendByte(24, false)", nullptr, {} },
   { "write8", []( Ham::Ham& ham, Outputs& ) { return ham.write8( 25, 0xFE, false, 1 ); },
      "addWrite8(25, 254, false, 1)", nullptr, {} },
   { "write16", []( Ham::Ham& ham, Outputs& ) { return ham.write16( 26, 0xFEDC, true, 2 ); },
      "addWrite16(26, 65244, true, 2)", nullptr, {} },
   { "write32", []( Ham::Ham& ham, Outputs& ) { return ham.write32( 27, 0xFEDCBA98, false, 1 ); },
      "addWrite32(27, 4275878552, false, 1)", nullptr, {} },
   { "write", []( Ham::Ham& ham, Outputs& ) { return ham.write( 28, payload, 7, true, 1 ); },
      "addWrite(28, payload, 7, true, 1)", nullptr, {} },
   { "write of a size over 32 bits",
      []( Ham::Ham& ham, Outputs& ) { return ham.write( 28, payload, 0x500000003, false, 1 ); },
      "addWrite(28, payload, 3, false, 1)", nullptr, {} },
   { "writeBlock", []( Ham::Ham& ham, Outputs& ) { return ham.writeBlock( 29, payload, 7, true, 1 ); },
      "addWriteBlock(29, payload, 7, true, 1)", nullptr, {} },
   { "writeBlock of a size over 32 bits",
      []( Ham::Ham& ham, Outputs& ) { return ham.writeBlock( 29, payload, 0x500000003, false, 1 ); },
      "addWriteBlock(29, payload, 3, false, 1)", nullptr, {} },
   { "processCall", []( Ham::Ham& ham, Outputs& out ) { return ham.processCall( 30, 0x1234, &out.word, 1 ); },
      "addProcessCall(30, 4660, 1)", "get16(7)", { .word = 0x16AB } },
};

} // namespace

TEST( OneShotForms, PrepareQueueExecuteAndFetch ) {
   for ( auto& form : oneShotForms ) {
      SCOPED_TRACE( form.name );
      LoggingHam ham;
      Outputs out;
      EXPECT_EQ( form.call( ham, out ), QL_STATUS_OK );

      std::vector<std::string> calls { "prepare()", form.queued, "execute()" };
      if ( form.fetched ) {
         calls.push_back( form.fetched );
      }
      EXPECT_THAT( ham.log, ElementsAreArray( calls ) );
      EXPECT_TRUE( out == form.result );
   }
}

TEST( OneShotForms, LeaveTheOutputAloneWhenExecuteFails ) {
   for ( auto& form : oneShotForms ) {
      SCOPED_TRACE( form.name );
      LoggingHam ham;
      ham.status = QL_STATUS_NOT_PRESENT;
      Outputs out;
      EXPECT_EQ( form.call( ham, out ), QL_STATUS_NOT_PRESENT );
      EXPECT_THAT( ham.log, ElementsAre( "prepare()", form.queued, "execute()" ) );
      EXPECT_TRUE( out == Outputs {} );
   }
}

TEST( OneShotForms, PassEveryStatusOn ) {
   for ( auto& form : oneShotForms ) {
      SCOPED_TRACE( form.name );
      for ( auto status : { QL_STATUS_DEVICE_ERROR, QL_STATUS_IO_ERROR, QL_STATUS_FAILED } ) {
         LoggingHam ham;
         ham.status = status;
         Outputs out;
         EXPECT_EQ( form.call( ham, out ), status );
      }
   }
}

TEST( OneShotForms, MoveTheBlockIntoTheOutput ) {
   LoggingHam ham;
   std::string data;
   ham.read( 1, 100, &data, false, 1 );
   EXPECT_EQ( data.data(), ham.block );
   ham.readBlock( 1, &data, 1 );
   EXPECT_EQ( data.data(), ham.block );
}

namespace {

class HamCreate : public Host::Test {
protected:
   HamCreate() {
      ham.log.clear();
      givenTopology = nullptr;
      givenArgs = nullptr;
   }

   std::string lookingUpFor( const char* name ) {
      return fmt::format( "looking up for {} in {} with {}", name, fmt::ptr( &topology ), fmt::ptr( &args ) );
   }

   static Ham::Ham* makeLogging( const Topology::Topology& given, const Drivers::DriverArgs& args ) {
      ham.log.push_back( "made" );
      givenTopology = &given;
      givenArgs = &args;
      return &ham;
   }

   static Ham::Ham* makeNone( const Topology::Topology&, const Drivers::DriverArgs& ) { return nullptr; }

   Topology::Topology topology;
   Drivers::DriverArgs args;
   TestRow<decltype( Ham::hams )> logging { Ham::hams, "Logging", makeLogging };
   TestRow<decltype( Ham::hams )> none { Ham::hams, "None", makeNone };

   static inline LoggingHam ham;
   static inline const Topology::Topology* givenTopology;
   static inline const Drivers::DriverArgs* givenArgs;
};

} // namespace

TEST_F( HamCreate, InitialisesWhatTheFactoryMakes ) {
   EXPECT_EQ( Ham::Ham::create( "Logging", topology, args ), &ham );
   EXPECT_THAT( ham.log, ElementsAre( "made", "init()" ) );
   EXPECT_THAT( Host::traces, ElementsAre( Host::TraceLine { 3, lookingUpFor( "Logging" ) },
                                 Host::TraceLine { 3, "calling Logging factory function" },
                                 Host::TraceLine { 3, "ham initialisation" } ) );
}

TEST_F( HamCreate, GivesTheFactoryTopologyAndArguments ) {
   Ham::Ham::create( "Logging", topology, args );
   EXPECT_EQ( givenTopology, &topology );
   EXPECT_EQ( givenArgs, &args );
}

TEST_F( HamCreate, GivesNullForAnUnknownName ) {
   EXPECT_EQ( Ham::Ham::create( "logging", topology, args ), nullptr );
   EXPECT_THAT( Host::traces, ElementsAre( Host::TraceLine { 3, lookingUpFor( "logging" ) },
                                 Host::TraceLine { 0, "Couldn't find HAM logging" } ) );
}

TEST_F( HamCreate, GivesNullForTheEmptyName ) {
   EXPECT_EQ( Ham::Ham::create( "", topology, args ), nullptr );
   EXPECT_THAT( Host::traces,
      ElementsAre( Host::TraceLine { 3, lookingUpFor( "" ) }, Host::TraceLine { 0, "Couldn't find HAM " } ) );
}

TEST_F( HamCreate, GivesNullWhenTheFactoryDoes ) {
   EXPECT_EQ( Ham::Ham::create( "None", topology, args ), nullptr );
   EXPECT_THAT(
      Host::traces, ElementsAre( Host::TraceLine { 3, lookingUpFor( "None" ) },
                       Host::TraceLine { 3, "calling None factory function" },
                       Host::TraceLine { 0, "Factory function returned, couldn't create HAM None" } ) );
}
