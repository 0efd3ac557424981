#ifndef EMULATED_BOARD_H
#define EMULATED_BOARD_H

#include "SystemTest.h"

#include <memory>

/** quillonctl before an emulated board, which a server runs. */
class EmulatedBoardTest : public SystemTest {
protected:
   EmulatedBoardTest();

   /** @param board folder of the board, the switch's own unless a test has another */
   void startServer( const std::string& board = BOARDS "/selvane" );

   /** A line for the emulated board, in words. */
   Result emu( const Process::Arguments& words ) const;

   std::unique_ptr<Process> server;
};

#endif
