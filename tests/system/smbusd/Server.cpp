#include "Server.h"

#include <csignal>
#include <fstream>
#include <iterator>
#include <sstream>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

Directory::Directory() {
   char name[] = "/tmp/smbusd-XXXXXX";
   path_ = mkdtemp( name );
}

Directory::~Directory() { std::filesystem::remove_all( path_ ); }

std::string Directory::write( const std::string& name, const std::string& text ) const {
   std::ofstream( path_ / name ) << text;
   return path_ / name;
}

Manager::Manager( std::string path )
   : path_( std::move( path ) ), fd_( ::socket( AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0 ) ) {
   sockaddr_un address {};
   address.sun_family = AF_UNIX;
   path_.copy( address.sun_path, sizeof( address.sun_path ) - 1 );
   EXPECT_EQ( bind( fd_, reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ), 0 ) << path_;
}

Manager::~Manager() { close( fd_ ); }

std::string Manager::next( std::chrono::milliseconds time ) const {
   pollfd file { fd_, POLLIN, 0 };
   char text[1024];
   if ( poll( &file, 1, static_cast<int>( time.count() ) ) <= 0 ) {
      return "";
   }
   auto count = recv( fd_, text, sizeof( text ), 0 );
   return { text, count < 0 ? 0 : static_cast<size_t>( count ) };
}

Process::Environment environmentWith( const Manager& manager ) {
   return { { "NOTIFY_SOCKET", manager.path() }, { "JOURNAL_STREAM", std::nullopt } };
}

const char* const Server::board = R"({ "chips": [
   { "name": "inlet", "part": "pct2075", "bus": 3, "address": 72, "set": { "temperature": 24.5 } },
   { "name": "outlet", "part": "pct2075", "bus": 5, "address": 73, "set": { "temperature": 40 } } ] })";

Server::Server( const std::string& boardText, const Process::Arguments& wrapper ) {
   directory.write( "emulator.json", boardText );
   auto command = wrapper;
   for ( auto argument : { std::string( QUILLON_SMBUSD ), std::string( "--emulate" ), directory / "",
            std::string( "--socket" ), socket, std::string( "--control" ), controlSocket } ) {
      command.push_back( argument );
   }
   process_.emplace( command, environmentWith( manager ) );
   auto ready = manager.next();
   EXPECT_TRUE( ready.starts_with( "READY=1" ) ) << ready;
}

Result Server::stop( int signal ) {
   process_->send( signal );
   return process_->wait();
}

size_t countDescriptors( pid_t process ) {
   std::filesystem::directory_iterator entries( "/proc/" + std::to_string( process ) + "/fd" );
   return static_cast<size_t>( std::distance( begin( entries ), end( entries ) ) );
}

std::chrono::milliseconds processorTime( pid_t process ) {
   std::ifstream stream( "/proc/" + std::to_string( process ) + "/stat" );
   std::string text( std::istreambuf_iterator<char>( stream ), {} );
   // Fields are counted from the state, which follows the name in its brackets; 11 and 12 are utime and
   // stime.
   std::istringstream fields( text.substr( text.rfind( ')' ) + 1 ) );
   std::vector<std::string> values { std::istream_iterator<std::string>( fields ), {} };
   return std::chrono::milliseconds(
      ( std::stol( values.at( 11 ) ) + std::stol( values.at( 12 ) ) ) * 1000 / sysconf( _SC_CLK_TCK ) );
}
