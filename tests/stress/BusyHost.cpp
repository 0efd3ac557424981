#include "BusyHost.h"

#include "Ham/QuillonSmbusHam.h"

#include "quillon/ql.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <thread>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr uint8_t bus = 3;
constexpr uint8_t chip = 0x48;
constexpr uint32_t serialReg = 0x00;
constexpr uint32_t markReg = 0x10;
constexpr uint8_t regSize = 1;

/** In the place of a mark while the server may be gone. */
constexpr uint32_t nobody = ~uint32_t {};

/** What the host is to expect: a server, and in the upper half how often that has been told. */
using View = uint64_t;

constexpr uint32_t serverOf( View view ) { return static_cast<uint32_t>( view ); }

constexpr uint8_t markOf( uint32_t server ) { return static_cast<uint8_t>( server ); }

} // namespace

/** What both processes see. */
struct BusyHost::Shared {
   std::atomic<View> view { nobody };
   std::atomic<bool> pausing;
   std::atomic<bool> paused;
   std::atomic<bool> stopping;

   /** Requests by number: the latest that has begun, that went well, that failed. */
   std::atomic<uint64_t> begun;
   std::atomic<uint64_t> good;
   std::atomic<uint64_t> bad;
   /** To be read when the host has ended. */
   Seen seen {};

   void tell( uint32_t server ) {
      auto times = ( view >> 32 ) + 1;
      view = times << 32 | server;
   }
};

namespace {

/** One request after the other, each with a number that nobody else has. */
class Exchange {
public:
   enum class Result { Right, Wrong, Failed };

   Exchange() {
      HamAddress address {};
      address.address = chip;
      address.bus = bus;
      ham_ = Ham::QuillonSmbusHam::createFromAddress( address, { 0 } );
      ham_->init();
   }

   Result make( uint64_t number ) {
      std::string serial( reinterpret_cast<const char*>( &number ), sizeof( number ) );
      ham_->prepare();
      ham_->addWrite( serialReg, serial.data(), static_cast<uint32_t>( serial.size() ), false, regSize );
      auto serialId = ham_->addRead( serialReg, static_cast<uint32_t>( serial.size() ), false, regSize );
      auto markId = ham_->addRead8( markReg, regSize );
      if ( ham_->execute() != QL_STATUS_OK ) {
         return Result::Failed;
      }
      mark = ham_->get8( markId );
      return ham_->getBlock( serialId, serial.size() ) == serial ? Result::Right : Result::Wrong;
   }

   /** What the last server that answered has told. */
   uint8_t mark = 0;

private:
   Ham::Ham* ham_;
};

/** What the process of the host does. */
class Loop {
public:
   explicit Loop( BusyHost::Shared& shared ) : shared_( shared ) {}

   void run() {
      while ( !shared_.stopping ) {
         while ( shared_.pausing ) {
            shared_.paused = true;
            std::this_thread::sleep_for( 100us );
         }
         shared_.paused = false;
         askOnce();
      }
   }

private:
   void askOnce() {
      auto view = shared_.view.load();
      auto number = ++shared_.begun;
      auto begin = BusyHost::Clock::now();
      auto result = exchange_.make( number );
      auto& seen = shared_.seen;
      seen.longest = std::max( seen.longest, BusyHost::Clock::now() - begin );
      bool watched = serverOf( view ) != nobody && shared_.view == view;
      if ( result == Exchange::Result::Failed ) {
         ++( watched ? seen.unexcused : seen.excused );
         shared_.bad = number;
      } else {
         bool otherServer = watched && exchange_.mark != markOf( serverOf( view ) );
         ++( result == Exchange::Result::Wrong || otherServer ? seen.wrong : seen.right );
         shared_.good = number;
      }
   }

   BusyHost::Shared& shared_;
   Exchange exchange_;
};

/** Waits, ten seconds at most. */
template <typename Condition>
bool await( Condition condition ) {
   for ( auto end = BusyHost::Clock::now() + 10s; BusyHost::Clock::now() < end; ) {
      if ( condition() ) {
         return true;
      }
      std::this_thread::sleep_for( 100us );
   }
   return false;
}

} // namespace

std::string BusyHost::board( uint32_t mark ) {
   return fmt::format(
      R"({{ "chips": [ {{ "name": "chip", "part": "registers", "bus": {}, "address": {}, "options": {{ "r{:#04x}": {} }} }} ] }})",
      bus, chip, markReg, markOf( mark ) );
}

BusyHost::BusyHost( const std::string& socket, std::chrono::milliseconds limit ) {
   auto memory = mmap( nullptr, sizeof( Shared ), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0 );
   shared_ = new ( memory ) Shared;
   process_ = fork();
   if ( process_ == 0 ) {
      unsetenv( "SIMULATION_VMID" );
      setenv( "QUILLON_SMBUS_SOCKET", socket.c_str(), 1 );
      setenv( "QUILLON_SMBUS_TIMEOUT_MS", std::to_string( limit.count() ).c_str(), 1 );
      if ( ql_system_init( "[]" ) == QL_STATUS_OK ) {
         Loop( *shared_ ).run();
      }
      _exit( 0 );
   }
}

BusyHost::~BusyHost() {
   stop();
   munmap( shared_, sizeof( Shared ) );
}

void BusyHost::look( uint32_t mark ) { shared_->tell( mark ); }

void BusyHost::lookAway() { shared_->tell( nobody ); }

void BusyHost::pause() {
   shared_->pausing = true;
   await( [this] { return shared_->paused.load(); } );
}

void BusyHost::resume( uint32_t mark ) {
   look( mark );
   shared_->pausing = false;
   await( [this] { return !shared_->paused; } );
}

bool BusyHost::awaitSuccess() const {
   return await( [this, last = shared_->begun.load()] { return shared_->good > last; } );
}

bool BusyHost::awaitFailure() const {
   return await( [this, last = shared_->begun.load()] { return shared_->bad > last; } );
}

BusyHost::Seen BusyHost::stop() {
   if ( process_ > 0 ) {
      shared_->stopping = true;
      shared_->pausing = false;
      waitpid( process_, nullptr, 0 );
      process_ = -1;
   }
   return shared_->seen;
}
