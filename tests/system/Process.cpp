#include "Process.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

namespace {

constexpr auto patience = std::chrono::seconds( 30 );

struct Pair {
   int reader;
   int writer;
};

Pair makePipe() {
   int ends[2];
   EXPECT_EQ( pipe2( ends, O_CLOEXEC ), 0 );
   return { ends[0], ends[1] };
}

Pair makeTerminal() {
   Pair ends {};
   const winsize size { 24, 80, 0, 0 };
   EXPECT_EQ( openpty( &ends.reader, &ends.writer, nullptr, nullptr, &size ), 0 );
   fcntl( ends.reader, F_SETFD, FD_CLOEXEC );
   return ends;
}

[[noreturn]] void become( const Process::Arguments& command, const Process::Environment& environment ) {
   for ( auto& [variable, value] : environment ) {
      value ? setenv( variable.c_str(), value->c_str(), 1 ) : unsetenv( variable.c_str() );
   }
   std::vector<char*> arguments;
   for ( auto& argument : command ) {
      arguments.push_back( const_cast<char*>( argument.c_str() ) );
   }
   arguments.push_back( nullptr );
   execv( arguments.front(), arguments.data() );
   perror( arguments.front() );
   _exit( 127 );
}

} // namespace

Process::Process( const Arguments& command, const Environment& environment, Output output ) {
   auto out = output == Output::Terminal || output == Output::Screen ? makeTerminal() : makePipe();
   auto err = output == Output::ErrorTerminal ? makeTerminal() : makePipe();
   pid_ = fork();
   EXPECT_GE( pid_, 0 );
   if ( pid_ == 0 ) {
      auto none = open( "/dev/null", O_RDONLY );
      dup2( none, STDIN_FILENO );
      dup2( out.writer, STDOUT_FILENO );
      dup2( err.writer, STDERR_FILENO );
      if ( output == Output::Screen ) {
         login_tty( out.writer );
      }
      become( command, environment );
   }
   close( out.writer );
   close( err.writer );
   out_ = out.reader;
   err_ = err.reader;
}

Process::~Process() {
   if ( pid_ > 0 ) {
      kill( pid_, SIGKILL );
      waitpid( pid_, nullptr, 0 );
   }
   for ( auto file : { out_, err_ } ) {
      if ( file >= 0 ) {
         close( file );
      }
   }
}

std::optional<std::string> Process::readLine() {
   auto deadline = Clock::now() + patience;
   for ( ;; ) {
      auto end = result_.out.find( '\n', consumed_ );
      if ( end != std::string::npos ) {
         auto line = result_.out.substr( consumed_, end - consumed_ );
         consumed_ = end + 1;
         return line;
      }
      if ( !readSome( deadline ) ) {
         return {};
      }
   }
}

std::string Process::readUntil( const std::string& text ) {
   auto deadline = Clock::now() + patience;
   for ( ;; ) {
      auto begin = result_.out.find( text, consumed_ );
      auto isThere = begin != std::string::npos;
      if ( isThere || !readSome( deadline ) ) {
         EXPECT_TRUE( isThere ) << "no \"" << text << "\" in " << result_.out.substr( consumed_ );
         auto end = isThere ? begin + text.size() : result_.out.size();
         auto passed = result_.out.substr( consumed_, end - consumed_ );
         consumed_ = end;
         return passed;
      }
   }
}

void Process::send( int signal ) const { kill( pid_, signal ); }

void Process::awaitStop() const {
   auto status = 0;
   EXPECT_EQ( waitpid( pid_, &status, WUNTRACED ), pid_ );
   EXPECT_TRUE( WIFSTOPPED( status ) );
}

void Process::type( const std::string& keys ) const {
   EXPECT_EQ( write( out_, keys.data(), keys.size() ), static_cast<ssize_t>( keys.size() ) );
}

bool Process::echoes() const {
   termios mode {};
   EXPECT_EQ( tcgetattr( out_, &mode ), 0 );
   return mode.c_lflag & ECHO;
}

void Process::resize( unsigned short columns, unsigned short rows ) const {
   const winsize size { rows, columns, 0, 0 };
   EXPECT_EQ( ioctl( out_, TIOCSWINSZ, &size ), 0 );
}

size_t Process::descriptors() const {
   std::filesystem::directory_iterator entries( "/proc/" + std::to_string( pid_ ) + "/fd" );
   return static_cast<size_t>( std::distance( begin( entries ), end( entries ) ) );
}

Result Process::wait() {
   auto deadline = Clock::now() + patience;
   while ( readSome( deadline ) ) {
   }
   if ( Clock::now() >= deadline ) {
      ADD_FAILURE() << "still running";
      kill( pid_, SIGKILL );
   }
   auto status = 0;
   waitpid( pid_, &status, 0 );
   pid_ = -1;
   result_.exitStatus = WIFEXITED( status ) ? WEXITSTATUS( status ) : -1;
   result_.signal = WIFSIGNALED( status ) ? WTERMSIG( status ) : 0;
   return result_;
}

bool Process::readSome( Clock::time_point deadline ) {
   pollfd files[] = { { out_, POLLIN, 0 }, { err_, POLLIN, 0 } };
   auto left = std::chrono::duration_cast<std::chrono::milliseconds>( deadline - Clock::now() );
   if ( ( out_ < 0 && err_ < 0 ) || left.count() <= 0 ) {
      return false;
   }
   poll( files, 2, static_cast<int>( left.count() ) );
   if ( files[0].revents ) {
      read( out_, result_.out );
   }
   if ( files[1].revents ) {
      read( err_, result_.err );
   }
   return true;
}

void Process::read( int& file, std::string& text ) {
   char block[4096];
   auto count = ::read( file, block, sizeof( block ) );
   if ( count > 0 ) {
      text.append( block, static_cast<size_t>( count ) );
      return;
   }
   close( file ); // at the end; a terminal says so with EIO
   file = -1;
}
