#include "Assertion.h"
#include "LockingProcess.h"
#include "Simulation.h"

#include <gmock/gmock.h>

#include <cstdarg>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using Host::TraceLine;
using testing::ElementsAre;
using testing::Pair;
using Utils::ExpectedVal;

namespace {

/** How files are opened, while a test wants to know. */
std::vector<int>* openings = nullptr;

} // namespace

// In front of the C library's.
extern "C" int open( const char* path, int flags, ... ) {
   va_list mode;
   va_start( mode, flags );
   if ( openings ) {
      openings->push_back( flags );
   }
   auto next = reinterpret_cast<decltype( &open )>( dlsym( RTLD_NEXT, "open" ) );
   auto file = next( path, flags, va_arg( mode, mode_t ) );
   va_end( mode );
   return file;
}

namespace {

class SimFile : public SimulatedChip {
protected:
   /** Three numbers of two bytes: the fields lie at 0, 4 and 8. */
   void expectThreeWords() {
      expect( { { 0, ExpectedVal( 0x2000, 2 ) }, { 2, ExpectedVal( 0x2000, 2 ) },
         { 3, ExpectedVal( 0x2000, 2 ) } } );
   }

   std::string read( uint32_t reg, size_t size ) {
      ham.currentReg = reg;
      return ham.readFromFile( size );
   }

   void write( uint32_t reg, const std::string& text ) {
      ham.currentReg = reg;
      ham.writeToFile( text );
   }
};

using SimFileDeathTest = SimFile;

} // namespace

TEST_F( SimFile, IsOneLineOfFieldsInAscendingRegisterOrder ) {
   expect( { { 3, ExpectedVal( 0x3333, 2 ) }, { 0, ExpectedVal( 0x2000, 2 ) },
      { 0xFF, ExpectedVal( 0xAB, 1 ) } } );
   EXPECT_EQ( contentOf( "Chip" ), "20003333ab\n" );
}

TEST_F( SimFile, PutsEveryFieldBehindAllOthersBeforeIt ) {
   expectThreeWords();
   EXPECT_EQ( contentOf( "Chip" ), "200020002000\n" );
   EXPECT_THAT( ham.regOffsets, ElementsAre( Pair( 0, 0 ), Pair( 2, 4 ), Pair( 3, 8 ) ) );
   EXPECT_EQ( ham.simFileSize, 12U );
}

TEST_F( SimFile, WritesANumberAsDigitsOfItsWidth ) {
   struct Row {
      const char* name;
      ExpectedVal value;
      const char* field;
   };

   const Row rows[] = {
      { "zero", ExpectedVal( 0, 1 ), "00\n" },
      { "left padding", ExpectedVal( 7, 1 ), "07\n" },
      { "lower case", ExpectedVal( 0xABCDEF, 3 ), "abcdef\n" },
      { "wide zero", ExpectedVal( 0, 4 ), "00000000\n" },
      { "the widest number", ExpectedVal( 0xFEDCBA9876543210, 8 ), "fedcba9876543210\n" },
      { "more digits than the field has", ExpectedVal( 0x123, 1 ), "23\n" },
      { "wider than a number can be", ExpectedVal( 0x12, 10 ), "00000000000000000012\n" },
   };
   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      expect( { { 0, row.value } } );
      EXPECT_EQ( contentOf( "Chip" ), row.field );
   }
}

TEST_F( SimFile, WritesATextAsItIs ) {
   expect( { { 1, ExpectedVal( 0xA, 1 ) }, { 2, ExpectedVal( "Serial 7" ) }, { 9, ExpectedVal( 0xB, 1 ) } } );
   EXPECT_EQ( contentOf( "Chip" ), "0aSerial 70b\n" );
   EXPECT_THAT( ham.regOffsets, ElementsAre( Pair( 1, 0 ), Pair( 2, 2 ), Pair( 9, 10 ) ) );
   EXPECT_EQ( ham.simFileSize, 12U );
}

TEST_F( SimFile, IsWrittenAfresh ) {
   rewrite( "Chip", "something much longer than the fields\nand a second line\n" );
   expectThreeWords();
   EXPECT_EQ( contentOf( "Chip" ), "200020002000\n" );
}

TEST_F( SimFile, IsTracedWithItsPath ) {
   ham.setDriverName( "Chip", "left" );
   values = { { 0, ExpectedVal( 0, 1 ) } };
   ham.setExpected( &values );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 5, "Created " + pathOf( "Chip-left" ) } ) );
   EXPECT_TRUE( ham.simFileExists_ );
}

TEST_F( SimFile, KeepsAnOffsetThatARegisterHasAlready ) {
   ham.regOffsets = { { 2, 6 } };
   expectThreeWords();
   EXPECT_THAT( ham.regOffsets, ElementsAre( Pair( 0, 0 ), Pair( 2, 6 ), Pair( 3, 8 ) ) );
}

TEST_F( SimFile, IsNotTouchedBehindItsEndByAnOffsetThatLiesThere ) {
   ham.regOffsets = { { 2, 600 } };
   expectThreeWords();
   EXPECT_EQ( read( 2, 4 ), "" );
   write( 2, "1234" );
   EXPECT_EQ( contentOf( "Chip" ), "200020002000\n" );
}

TEST_F( SimFile, IsNotMadeForAnEmptyTable ) {
   expect( {} );
   EXPECT_FALSE( ham.simFileExists_ );
   EXPECT_EQ( ham.expected, &values );
   EXPECT_TRUE( std::filesystem::is_empty( directory() ) );
}

TEST_F( SimFile, MakesTheDirectoryWhenThereIsNone ) {
   std::filesystem::remove( directory() );
   auto mask = umask( 0 );
   expectThreeWords();
   umask( mask );
   EXPECT_EQ( contentOf( "Chip" ), "200020002000\n" );
   EXPECT_EQ( std::filesystem::status( directory() ).permissions(), std::filesystem::perms( 0755 ) );
}

TEST_F( SimFile, DoesNotNoticeThatItCannotBeWritten ) {
   ham.setDriverName( "missing/Chip", "" );
   values = { { 0, ExpectedVal( 0, 1 ) } };
   ham.setExpected( &values );
   EXPECT_TRUE( ham.simFileExists_ );
   EXPECT_THAT( Host::traces, ElementsAre( TraceLine { 5, "Created " + pathOf( "missing/Chip" ) } ) );
}

TEST_F( SimFileDeathTest, NeedsAName ) {
   values = { { 0, ExpectedVal( 0, 1 ) } };
   EXPECT_DEATH( ham.setExpected( &values ), assertionFailed( "!simFileName_.empty()" ) );
}

TEST_F( SimFileDeathTest, NeedsTextsAsLongAsTheirSize ) {
   ExpectedVal text( "four" );
   text.size = 5;
   EXPECT_DEATH( expect( { { 0, text } } ), assertionFailed( "size == val.valStr().length()" ) );
}

TEST_F( SimFile, ReadsAsManyCharactersAsAsked ) {
   expect( { { 1, ExpectedVal( 0x1234, 2 ) }, { 2, ExpectedVal( 0xABCD, 2 ) } } );
   EXPECT_EQ( read( 2, 4 ), "abcd" );
   EXPECT_EQ( read( 2, 3 ), "abc" );
   EXPECT_EQ( read( 1, 1 ), "1" );
   EXPECT_EQ( read( 1, 0 ), "" );
}

TEST_F( SimFile, PadsANumberThatIsTooShortWithF ) {
   expect( { { 1, ExpectedVal( 0x2A, 1 ) }, { 2, ExpectedVal( 0, 1 ) } } );
   EXPECT_EQ( read( 1, 3 ), "2af" );
   EXPECT_EQ( read( 1, 8 ), "2affffff" );
}

TEST_F( SimFile, PadsATextThatIsTooShortWithAllOnes ) {
   expect( { { 1, ExpectedVal( "ab" ) }, { 2, ExpectedVal( 0, 1 ) } } );
   EXPECT_EQ( read( 1, 1 ), "a" );
   EXPECT_EQ( read( 1, 2 ), "ab" );
   EXPECT_EQ( read( 1, 4 ), "ab\xFF\xFF" );
}

TEST_F( SimFile, TracesARead ) {
   expect( { { 0x1F, ExpectedVal( 0x2A, 1 ) } } );
   read( 0x1F, 4 );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 5, pathOf( "Chip" ) + " - Read 2aff from register 0x1f" } ) );
}

TEST_F( SimFile, ReadsWhatAnotherProcessWroteMeanwhile ) {
   expectThreeWords();
   rewrite( "Chip", "00001111AbCd\n" );
   EXPECT_EQ( read( 2, 4 ), "1111" );
   EXPECT_EQ( read( 3, 4 ), "AbCd" );
}

TEST_F( SimFile, DoesNotNoticeThatAnotherProcessShortenedIt ) {
   expectThreeWords();
   rewrite( "Chip", "2000" );
   EXPECT_EQ( read( 2, 4 ), std::string( 4, '\0' ) );
}

TEST_F( SimFile, WritesAFieldAndLeavesTheOthers ) {
   expectThreeWords();
   write( 2, "0000" );
   EXPECT_EQ( contentOf( "Chip" ), "200000002000\n" );
}

TEST_F( SimFile, TracesAWrite ) {
   expect( { { 0x1F, ExpectedVal( 0, 1 ) } } );
   write( 0x1F, "2a" );
   EXPECT_THAT(
      Host::traces, ElementsAre( TraceLine { 5, pathOf( "Chip" ) + " - Wrote 2a to register 0x1f" } ) );
}

TEST_F( SimFile, LetsDataThatIsTooLongRunOnIntoTheNextField ) {
   expectThreeWords();
   write( 2, "123456" );
   EXPECT_EQ( contentOf( "Chip" ), "200012345600\n" );
}

TEST_F( SimFile, LetsDataThatIsTooShortLeaveTheRestOfTheField ) {
   expectThreeWords();
   write( 2, "1" );
   EXPECT_EQ( contentOf( "Chip" ), "200010002000\n" );
}

TEST_F( SimFile, DoesNotGrowBehindTheLastField ) {
   expectThreeWords();
   write( 3, "123456" );
   EXPECT_EQ( contentOf( "Chip" ), "200020001234\n" );
}

TEST_F( SimFileDeathTest, ReadsAndWritesOnlyWhenThereIsAFile ) {
   expect( {} );
   EXPECT_DEATH( read( 0, 2 ), assertionFailed( "simFileExists_" ) );
   EXPECT_DEATH( write( 0, "00" ), assertionFailed( "simFileExists_" ) );
}

TEST_F( SimFileDeathTest, ReadsAndWritesOnlyRegistersOfTheTable ) {
   expectThreeWords();
   EXPECT_DEATH( read( 1, 2 ), assertionFailed( "isAddrSimulated()" ) );
   EXPECT_DEATH( write( 1, "00" ), assertionFailed( "isAddrSimulated()" ) );
}

TEST_F( SimFileDeathTest, EndsTheProcessWhenItIsLost ) {
   expectThreeWords();
   std::filesystem::remove( pathOf( "Chip" ) );
   EXPECT_DEATH( read( 2, 2 ), assertionFailed( "mm != MAP_FAILED" ) );
   EXPECT_DEATH( write( 2, "00" ), assertionFailed( "mm != MAP_FAILED" ) );
}

TEST_F( SimFile, LeavesAMappingBehindForEachAccess ) {
   auto mappings = [] {
      std::ifstream maps( "/proc/self/maps" );
      int count = 0;
      for ( std::string line; std::getline( maps, line ); ) {
         count += line.find( pathOf( "Chip" ) ) != std::string::npos;
      }
      return count;
   };
   expectThreeWords();
   auto before = mappings();
   read( 0, 4 );
   write( 0, "0000" );
   EXPECT_EQ( mappings(), before + 2 );
}

TEST_F( SimFile, ClosesWhatItOpens ) {
   auto descriptors = [] {
      auto entries = std::filesystem::directory_iterator( "/proc/self/fd" );
      return std::distance( begin( entries ), end( entries ) );
   };
   auto before = descriptors();
   expectThreeWords();
   EXPECT_EQ( descriptors(), before );
   read( 0, 4 );
   EXPECT_EQ( descriptors(), before );
   write( 0, "0000" );
   EXPECT_EQ( descriptors(), before );
}

// A program that another thread starts meanwhile must not hold the file, and with it the lock.
TEST_F( SimFile, IsNotInheritedByOtherPrograms ) {
   expectThreeWords();
   std::vector<int> flags;
   openings = &flags;
   read( 0, 4 );
   write( 0, "0000" );
   openings = nullptr;
   EXPECT_THAT( flags, ElementsAre( O_RDONLY | O_CLOEXEC, O_RDWR | O_CLOEXEC ) );
}

namespace {

/** Another process works on the file "Chip" under a lock of its own, after a time in which we could come
 * first. */
class SimFileLock : public SimFile {
protected:
   SimFileLock() { expectThreeWords(); }

   static void rewriteAfterAWhile() {
      usleep( 100'000 );
      rewrite( "Chip", "111122223333\n" );
   }
};

} // namespace

TEST_F( SimFileLock, OfAWriterMakesAReadWait ) {
   LockingProcess writer( pathOf( "Chip" ), F_WRLCK, rewriteAfterAWhile );
   ASSERT_TRUE( writer.hasLock );
   EXPECT_EQ( read( 2, 4 ), "2222" );
}

TEST_F( SimFileLock, OfAWriterMakesAWriteWait ) {
   LockingProcess writer( pathOf( "Chip" ), F_WRLCK, rewriteAfterAWhile );
   ASSERT_TRUE( writer.hasLock );
   write( 2, "0000" );
   EXPECT_EQ( contentOf( "Chip" ), "111100003333\n" );
}

TEST_F( SimFileLock, OfAReaderMakesAWriteWait ) {
   LockingProcess reader( pathOf( "Chip" ), F_RDLCK, rewriteAfterAWhile );
   ASSERT_TRUE( reader.hasLock );
   write( 2, "0000" );
   EXPECT_EQ( contentOf( "Chip" ), "111100003333\n" );
}

TEST_F( SimFileLock, OfAReaderDoesNotMakeAReadWait ) {
   LockingProcess reader( pathOf( "Chip" ), F_RDLCK, rewriteAfterAWhile );
   ASSERT_TRUE( reader.hasLock );
   EXPECT_EQ( read( 2, 4 ), "2000" );
}

TEST_F( SimFileLock, IsLetGoAfterEachAccess ) {
   read( 2, 4 );
   EXPECT_TRUE( LockingProcess( pathOf( "Chip" ), F_WRLCK, [] {} ).hasLock );
   write( 2, "0000" );
   EXPECT_TRUE( LockingProcess( pathOf( "Chip" ), F_WRLCK, [] {} ).hasLock );
}
