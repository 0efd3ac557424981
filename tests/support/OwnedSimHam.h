#ifndef OWNED_SIM_HAM_H
#define OWNED_SIM_HAM_H

#include "Ham/SimHam.h"

#include <memory>
#include <new>

/** For a Ham that a test takes back, though Hams have no virtual destructor. */
struct SimHamDeleter {
   void operator()( Ham::SimHam* ham ) const {
      ham->::Ham::SimHam::~SimHam();
      ::operator delete( ham );
   }
};

using OwnedSimHam = std::unique_ptr<Ham::SimHam, SimHamDeleter>;

/** Null when it is a Ham of another class. */
inline OwnedSimHam takeSimHam( Ham::Ham* ham ) { return OwnedSimHam( dynamic_cast<Ham::SimHam*>( ham ) ); }

#endif
