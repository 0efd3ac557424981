#ifndef EMULATED_BOARD_H
#define EMULATED_BOARD_H

#include "SystemTest.h"

#include <memory>

/** quillonctl before the emulated board of the switch, which a server runs. */
class EmulatedBoardTest : public SystemTest {
protected:
   EmulatedBoardTest();

   void startServer();

   /** A line for the emulated board, in words. */
   Result emu( const Process::Arguments& words ) const;

   std::unique_ptr<Process> server;
};

#endif
