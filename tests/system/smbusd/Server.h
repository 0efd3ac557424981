#ifndef SERVER_H
#define SERVER_H

#include "Client.h"
#include "Process.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

/** A directory that goes with its owner. */
class Directory {
public:
   Directory();
   ~Directory();
   Directory( const Directory& ) = delete;
   Directory& operator=( const Directory& ) = delete;

   std::string operator/( const std::string& name ) const { return path_ / name; }

   /** Makes a file. */
   std::string write( const std::string& name, const std::string& text ) const;

private:
   std::filesystem::path path_;
};

/** Takes what a service tells its service manager. */
class Manager {
public:
   explicit Manager( std::string path );
   ~Manager();
   Manager( const Manager& ) = delete;
   Manager& operator=( const Manager& ) = delete;

   const std::string& path() const { return path_; }

   /** The next message; empty when none comes in time. */
   std::string next( std::chrono::milliseconds time = Client::patience ) const;

private:
   const std::string path_;
   int fd_;
};

/** The environment of a server that tells this manager; its log is for people. */
Process::Environment environmentWith( const Manager& manager );

/** A server that emulates a board, in a directory of its own. */
class Server {
public:
   /** Two sensors: bus 3, 0x48, 24.5 degrees, "inlet", and bus 5, 0x49, 40 degrees, "outlet". */
   static const char* const board;

   /** Starts it. With a wrapper, that program starts it. */
   explicit Server( const std::string& boardText = board, const Process::Arguments& wrapper = {} );

   /** Sends a signal and waits for the end. */
   Result stop( int signal );

   Client client() const { return Client( socket ); }

   std::string control( const std::string& line ) const { return Client( controlSocket ).askLine( line ); }

   const Directory directory;
   const std::string socket = directory / "smbus.sock";
   const std::string controlSocket = directory / "control.sock";
   const Manager manager { directory / "notify.sock" };

private:
   std::optional<Process> process_;
};

/** Descriptors that a process has open. */
size_t countDescriptors( pid_t process );

/** Processor time that a process has used. */
std::chrono::milliseconds processorTime( pid_t process );

#endif
