#include "WatchReader.h"

#include "Output.h"
#include "Session.h"

#include <cerrno>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void failed( const char* what ) {
   throw std::system_error( errno, std::generic_category(), what );
}

int readRounds( const WatchReader::Job& job ) {
   auto read = [&]( void* record, const ObjectEntry& object ) {
      auto summary = job.isBrief ? object.kind->summary : nullptr;
      return summary ? summary->read( record, object ) : object.kind->read( record, object );
   };
   auto send = [&]( const std::vector<Reading>& readings ) {
      std::vector<StatusLine> lines;
      for ( size_t i = 0; i < readings.size(); ++i ) {
         lines.push_back( { job.objects[i], job.objects[i]->kind->fields, readings[i] } );
      }
      write( asJson( job.board.name, lines, {} ) );
   };
   auto work = [&]( Host& host, Supervisor::Progress& progress ) {
      job.pace.repeat( progress.rounds, [&] { send( host.doWithEach( read ) ); } );
      return static_cast<int>( exitGood );
   };
   auto withoutLibrary = [&]( const HostError& error ) {
      std::vector<Reading> readings;
      for ( auto object : job.objects ) {
         readings.push_back( unreadable( *object, read, { error.status, error.what() } ) );
      }
      send( readings );
      return static_cast<int>( exitFailure );
   };
   return Session( job.options, job.board, job.objects ).run( work, withoutLibrary );
}

} // namespace

LinePipe::LinePipe() {
   int ends[2];
   if ( pipe2( ends, O_CLOEXEC ) != 0 ) {
      failed( "pipe" );
   }
   reader_ = ends[0];
   writer_ = ends[1];
}

LinePipe::~LinePipe() {
   close( reader_ );
   closeWriter();
}

void LinePipe::becomeOutput( int descriptor ) {
   dup2( writer_, descriptor );
   closeWriter();
}

void LinePipe::closeWriter() {
   if ( writer_ >= 0 ) {
      close( writer_ );
      writer_ = -1;
   }
}

std::optional<std::vector<std::string>> LinePipe::read() {
   char block[16384];
   auto count = ::read( reader_, block, sizeof( block ) );
   if ( count <= 0 ) {
      return {};
   }
   rest_.append( block, static_cast<size_t>( count ) );
   std::vector<std::string> lines;
   size_t begin = 0;
   for ( auto end = rest_.find( '\n' ); end != rest_.npos; end = rest_.find( '\n', begin ) ) {
      lines.push_back( rest_.substr( begin, end - begin ) );
      begin = end + 1;
   }
   rest_.erase( 0, begin );
   return lines;
}

WatchReader::WatchReader( const Job& job, const std::function<void()>& prepare ) {
   auto parent = getpid();
   pid_ = fork();
   if ( pid_ < 0 ) {
      failed( "fork" );
   }
   if ( pid_ > 0 ) {
      rounds.closeWriter();
      errors.closeWriter();
      return;
   }
   prctl( PR_SET_PDEATHSIG, SIGTERM );
   if ( getppid() != parent ) {
      _exit( exitFailure );
   }
   prepare();
   rounds.becomeOutput( STDOUT_FILENO );
   if ( job.takesErrors ) {
      errors.becomeOutput( STDERR_FILENO );
   }
   errors.closeWriter();
   auto status = static_cast<int>( exitFailure );
   try {
      status = readRounds( job );
   } catch ( const std::exception& error ) {
      complain( error.what() );
   }
   _exit( status );
}

WatchReader::~WatchReader() {
   if ( pid_ > 0 ) {
      kill( pid_, SIGTERM );
      wait();
   }
}

int WatchReader::wait() {
   auto status = 0;
   while ( waitpid( pid_, &status, 0 ) < 0 && errno == EINTR ) {
   }
   pid_ = -1;
   return WIFEXITED( status ) ? WEXITSTATUS( status ) : static_cast<int>( exitFailure );
}
