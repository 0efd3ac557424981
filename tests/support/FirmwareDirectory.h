#ifndef FIRMWARE_DIRECTORY_H
#define FIRMWARE_DIRECTORY_H

#include "TemporaryDirectory.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <dlfcn.h>

/**
 * Stands in for /usr/share/firmware: while one exists, what the process opens there is looked for in an empty
 * directory of the test's own. To be included by the one source file of a program.
 */
class FirmwareDirectory {
public:
   static constexpr char place[] = "/usr/share/firmware/";

   FirmwareDirectory() { current = this; }

   ~FirmwareDirectory() { current = nullptr; }

   FirmwareDirectory( const FirmwareDirectory& ) = delete;
   FirmwareDirectory& operator=( const FirmwareDirectory& ) = delete;

   void add( const std::string& name, const std::string& content ) const {
      std::ofstream( path() / name, std::ios::binary ) << content;
   }

   void addDirectory( const std::string& name ) const { std::filesystem::create_directory( path() / name ); }

   const std::filesystem::path& path() const { return directory_.path(); }

   /** Every path opened in the place, in order. */
   std::vector<std::string> opened;

   static inline FirmwareDirectory* current = nullptr;

private:
   TemporaryDirectory directory_;
};

/** What the standard library's file streams open files with. */
extern "C" FILE* fopen64( const char* path, const char* mode ) {
   using Open = FILE* ( * )( const char*, const char* );
   static auto open = reinterpret_cast<Open>( dlsym( RTLD_NEXT, "fopen64" ) );
   std::string wanted = path;
   auto directory = FirmwareDirectory::current;
   if ( directory && wanted.starts_with( FirmwareDirectory::place ) ) {
      directory->opened.push_back( wanted );
      wanted = directory->path() / wanted.substr( sizeof FirmwareDirectory::place - 1 );
   }
   return open( wanted.c_str(), mode );
}

#endif
