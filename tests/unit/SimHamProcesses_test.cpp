#include "Simulation.h"

#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr uint32_t reg = 7;
constexpr size_t length = 600;
// Each access leaves a mapping behind, and a process may have 65530.
constexpr int accessesOfAProcess = 40'000;
constexpr int rounds = 13;

/** Reads and writes by turns. @return how often the field held anything but one character repeated */
int accessField( Ham::Ham& ham, char character ) {
   const std::string mine( length, character );
   int torn = 0;
   for ( int access = 0; access < accessesOfAProcess; access += 2 ) {
      ham.prepare();
      ham.addWrite( reg, &mine, length, false, 1 );
      ham.prepare();
      auto text = ham.getBlock( ham.addRead( reg, length, false, 1 ), length );
      torn += text.size() != length || text.find_first_not_of( text[0] ) != text.npos;
   }
   return torn;
}

using SharedSimulationFile = SimulatedChip;

} // namespace

TEST_F( SharedSimulationFile, HoldsNoTornValueThroughAMillionAccessesOfTwoProcesses ) {
   expect( { { reg, Utils::ExpectedVal( std::string( length, 'z' ) ) } } );
   for ( int round = 0; round < rounds; ++round ) {
      pid_t children[2];
      for ( int i = 0; i < 2; ++i ) {
         children[i] = fork();
         if ( children[i] == 0 ) {
            _exit( accessField( ham, static_cast<char>( 'a' + i ) ) != 0 );
         }
      }
      for ( auto child : children ) {
         int status = -1;
         ASSERT_EQ( waitpid( child, &status, 0 ), child );
         EXPECT_EQ( status, 0 ) << "1 in the exit code stands for torn values";
      }
   }
   static_assert( 2 * rounds * accessesOfAProcess > 1'000'000 );
}
