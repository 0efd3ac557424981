// What stands in the way of a user who has not the rights, or not all files. Roots are users here without the
// capability that lets them into everything.

#include "SystemTest.h"

#include <fmt/format.h>

#include <filesystem>
#include <memory>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr uid_t nobody = 65534;

class Obstacles : public SystemTest {
protected:
   /** quillonctl as somebody who may do what the modes of files say. */
   Result runAsUser( const Process::Arguments& arguments ) const {
      return runAsUser( QUILLONCTL, arguments );
   }

   /** The server as such a user, with a board of the folder's. */
   Result serveAsUser( const std::string& board, const std::string& socket ) const {
      return runAsUser( serverProgram(), { "--emulate", at( board ), "--socket", at( socket ) } );
   }

   static std::string serverProgram() { return fs::path( QUILLONCTL ).parent_path() / "quillon-smbusd"; }

   Result runAsUser( const std::string& program, Process::Arguments arguments ) const {
      arguments.insert( arguments.begin(), program );
      if ( geteuid() == 0 ) {
         arguments.insert( arguments.begin(),
            { "/usr/bin/setpriv", "--bounding-set=-dac_override,-dac_read_search", "--clear-groups", "--" } );
      }
      return Process( arguments, environment ).wait();
   }

   std::string at( const std::string& name ) const { return ( folder / name ).string(); }

   void close( const std::string& name ) const { ASSERT_EQ( chmod( at( name ).c_str(), 0 ), 0 ); }

   /** A socket that is served, as far as its file can tell. */
   std::string listenAt( const std::string& name, mode_t mode ) {
      auto path = at( name );
      sockaddr_un address {};
      address.sun_family = AF_UNIX;
      path.copy( address.sun_path, sizeof( address.sun_path ) - 1 );
      socket_ = socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 );
      EXPECT_EQ( bind( socket_, reinterpret_cast<sockaddr*>( &address ), sizeof( address ) ), 0 );
      EXPECT_EQ( listen( socket_, 8 ), 0 );
      EXPECT_EQ( chmod( path.c_str(), mode ), 0 );
      return path;
   }

   ~Obstacles() override {
      ::close( socket_ );
      // Closed folders could not be removed.
      for ( auto& entry : fs::directory_iterator( folder ) ) {
         fs::permissions( entry, fs::perms::owner_all, fs::perm_options::add );
      }
   }

private:
   int socket_ = -1;
};

struct ServerRow {
   const char* name;
   Process::Arguments ( *arguments )( const std::string& socket );
   const char* who;
};

/** Whoever wants to talk on a socket says the same. */
const ServerRow callers[] = {
   { "a reading",
      []( auto& socket ) {
         return Process::Arguments { "--socket", socket, "status" };
      },
      "SMBus server" },
   { "a word with the emulated board",
      []( auto& socket ) {
         return Process::Arguments { "--control", socket, "emu", "list" };
      },
      "emulated board" },
};

} // namespace

TEST_F( Obstacles, OfASocketNameTheGroupThatMayUseIt ) {
   if ( geteuid() != 0 ) {
      GTEST_SKIP() << "only root can give a socket to another group";
   }
   auto socket = listenAt( "smbus.sock", 0660 );
   ASSERT_EQ( chown( socket.c_str(), nobody, nobody ), 0 );
   for ( auto& row : callers ) {
      auto result = runAsUser( row.arguments( socket ) );

      EXPECT_EQ(
         result.err, fmt::format( "quillonctl: no permission to use the socket of the {}, {}; join the group "
                                  "nogroup, whose members may use it\n",
                        row.who, socket ) )
         << row.name;
      EXPECT_EQ( result.exitStatus, 1 ) << row.name;
   }
}

TEST_F( Obstacles, OfASocketNameItsOwnerWhereNoGroupMayUseIt ) {
   if ( geteuid() != 0 ) {
      GTEST_SKIP() << "only root can give a socket to another user";
   }
   auto socket = listenAt( "smbus.sock", 0600 );
   ASSERT_EQ( chown( socket.c_str(), nobody, nobody ), 0 );
   for ( auto& row : callers ) {
      auto result = runAsUser( row.arguments( socket ) );

      EXPECT_EQ(
         result.err, fmt::format( "quillonctl: no permission to use the socket of the {}, {}; run this as "
                                  "nobody, who may use it\n",
                        row.who, socket ) )
         << row.name;
   }
}

TEST_F( Obstacles, OfASocketAreItsFolder ) {
   fs::create_directory( folder / "closed" );
   auto socket = listenAt( "closed/smbus.sock", 0660 );
   close( "closed" );
   for ( auto& row : callers ) {
      auto result = runAsUser( row.arguments( socket ) );

      EXPECT_EQ(
         result.err, fmt::format( "quillonctl: no permission to use the socket of the {}, {}; run this as "
                                  "somebody who may enter its folder\n",
                        row.who, socket ) )
         << row.name;
   }
}

TEST_F( Obstacles, OfASocketAreThatItIsNone ) {
   write( "file", "" );

   EXPECT_EQ( run( { "--socket", at( "file" ), "status" } ).err,
      fmt::format(
         "quillonctl: no SMBus server at {}: this is no socket; start quillon-smbusd, name its socket "
         "with --socket, or use --sim\n",
         at( "file" ) ) );
   EXPECT_EQ( run( { "--control", at( "file" ), "emu", "list" } ).err,
      fmt::format(
         "quillonctl: no emulated board at {}: this is no socket; start quillon-smbusd with --emulate and "
         "--control, and give the same path here with --control\n",
         at( "file" ) ) );
}

TEST_F( Obstacles, OfAPluginAreItsMode ) {
   fs::copy( PLUGIN, at( "plugin.so" ) );
   close( "plugin.so" );

   auto result = runAsUser( { "--sim", "--plugin", at( "plugin.so" ), "status" } );

   EXPECT_EQ(
      result.err, fmt::format( "quillonctl: cannot load the plug-in: {}: cannot open shared object file: "
                               "Permission denied; make the file readable, or name another with --plugin\n",
                     at( "plugin.so" ) ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Obstacles, OfAPluginAreTheLibrariesThatItNeeds ) {
   fs::copy( PLUGIN, at( "plugin.so" ) );

   auto result = run( { "--sim", "--plugin", at( "plugin.so" ), "status" } );

   EXPECT_EQ(
      result.err, fmt::format( "quillonctl: cannot load the plug-in {}, which needs libQuillonLibrary.so: "
                               "cannot open shared object file: No such file or directory; put that file "
                               "beside the plug-in, or name another "
                               "plug-in with --plugin\n",
                     at( "plugin.so" ) ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Obstacles, OfAPluginAreThatItIsAFolder ) {
   auto result = run( { "--sim", "--plugin", folder.string(), "status" } );

   EXPECT_EQ( result.err, fmt::format( "quillonctl: cannot load the plug-in: {}: cannot read file data: Is a "
                                       "directory; name the right file with --plugin\n",
                             folder.string() ) );
}

TEST_F( Obstacles, OfAPluginAreThatItsNameIsEmpty ) {
   auto result = run( { "--sim", "--plugin", "", "status" } );

   EXPECT_EQ(
      result.err, "quillonctl: the name of the plug-in is empty; name the right file with --plugin\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Obstacles, OfABoardAreThatItsNameIsEmpty ) {
   const std::string sentence = "the name of the board's folder is empty; name a folder that holds "
                                "topology.json and objects.json with --board\n";

   auto result = run( { "--sim", "--board", "", "status" } );
   EXPECT_EQ( result.err, "quillonctl: " + sentence );
   EXPECT_EQ( result.exitStatus, 2 );

   result = run( { "check", "" } );
   EXPECT_EQ( result.out, "error: " + sentence + "1 error, no warnings\n" );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Obstacles, OfABoardAreTheModesOfItsFiles ) {
   auto board = boardWith( sensor( "inlet", 1 ) );
   close( "bench/topology.json" );

   auto result = runAsUser( { "--sim", "--board", board, "status" } );

   EXPECT_EQ( result.err, fmt::format( "quillonctl: cannot read {}/topology.json: Permission denied; make it "
                                       "readable, or name another board with --board\n",
                             board ) );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Obstacles, OfABoardAreTheModeOfItsFolder ) {
   auto board = boardWith( sensor( "inlet", 1 ) );
   close( "bench" );

   auto result = runAsUser( { "--sim", "--board", board, "status" } );

   EXPECT_EQ(
      result.err, fmt::format( "quillonctl: cannot read {0}/topology.json: Permission denied; make it "
                               "readable, or name another board with --board\n"
                               "quillonctl: cannot read {0}/objects.json: Permission denied; make it "
                               "readable, or name another board with "
                               "--board\n",
                     board ) );
}

TEST_F( Obstacles, OfABoardAreThatItsFolderIsEmpty ) {
   auto result = run( { "--sim", "--board", folder.string(), "status" } );

   EXPECT_EQ(
      result.err, fmt::format( "quillonctl: cannot read {0}/topology.json: No such file or directory; name "
                               "a folder that holds topology.json and objects.json with --board\n"
                               "quillonctl: cannot read {0}/objects.json: No such file or directory; name a "
                               "folder that holds topology.json "
                               "and objects.json with --board\n",
                     folder.string() ) );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Obstacles, OfABoardAreThatItsDocumentsAreNoRegularFiles ) {
   auto board = boardWith( sensor( "inlet", 1 ) );
   fs::remove( at( "bench/topology.json" ) );
   ASSERT_EQ( mkfifo( at( "bench/topology.json" ).c_str(), 0600 ), 0 );
   fs::remove( at( "bench/objects.json" ) );
   fs::create_symlink( "/dev/zero", at( "bench/objects.json" ) );

   auto result = run( { "--sim", "--board", board, "status" } );

   EXPECT_EQ( result.err, fmt::format( "quillonctl: cannot read {0}/topology.json: it is no regular file; "
                                       "put the document there, or name another board with --board\n"
                                       "quillonctl: cannot read {0}/objects.json: it is no regular file; "
                                       "put the document there, or name another board with --board\n",
                             board ) );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Obstacles, OfABoardAreThatADocumentIsFarTooLong ) {
   auto board = boardWith( sensor( "inlet", 1 ) );
   fs::resize_file( at( "bench/objects.json" ), 1LL << 40 );

   auto result = run( { "check", board } );

   EXPECT_THAT( result.out,
      ::testing::HasSubstr( fmt::format( "error: cannot read {}/objects.json: it is longer than 16 MiB; "
                                         "put the document there, or name another board with --board\n",
         board ) ) );
   EXPECT_EQ( result.exitStatus, 2 );
}

TEST_F( Obstacles, OfTheServerAreTheModeOfItsSocketsFolder ) {
   write( "emulator.json", R"({ "chips": [] })" );
   fs::create_directory( folder / "closed" );
   close( "closed" );

   auto result = serveAsUser( "", "closed/smbus.sock" );

   EXPECT_EQ(
      result.err, fmt::format( "quillon-smbusd: {0}/smbus.sock: directory {0}: Permission denied; let the "
                               "server's user write there, or choose another socket\n",
                     at( "closed" ) ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Obstacles, OfTheServerAreThatItMayNotWriteToItsSocketsFolder ) {
   write( "emulator.json", R"({ "chips": [] })" );
   fs::create_directory( folder / "closed" );
   ASSERT_EQ( chmod( at( "closed" ).c_str(), 0500 ), 0 );

   auto result = serveAsUser( "", "closed/smbus.sock" );

   EXPECT_EQ(
      result.err, fmt::format( "quillon-smbusd: {}: Permission denied; let the server's user write to the "
                               "directory, or choose another socket\n",
                     at( "closed/smbus.sock" ) ) );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( Obstacles, OfTheServerAreTheModeOfItsBoard ) {
   write( "emulator.json", R"({ "chips": [] })" );
   close( "emulator.json" );

   auto result = serveAsUser( "", "smbus.sock" );

   EXPECT_EQ( result.err, fmt::format( "quillon-smbusd: {}: Permission denied; name a folder with a readable "
                                       "emulator.json with --emulate\n",
                             at( "emulator.json" ) ) );
   EXPECT_EQ( result.exitStatus, 2 );
}

namespace {

/** quillonctl before a server with an adapter that can't be used. */
class AdapterObstacles : public Obstacles {
protected:
   /** Starts a server for bus 3 on adapter 250. @return its warning */
   std::string serve( const Process::Arguments& wrapper ) {
      write( "map.json", R"({ "busses": [ { "master": "I2C", "bus": 3, "adapter": 250 } ] })" );
      environment["QUILLON_SMBUS_SOCKET"] = at( "smbus.sock" );
      auto command = wrapper;
      // Its log to stdout, which can be read while it runs.
      command.insert( command.end(),
         { "/bin/sh", "-c", "exec \"$0\" --i2c \"$1\" 2>&1", serverProgram(), at( "map.json" ) } );
      server_ = std::make_unique<Process>( command, environment );
      auto warning = server_->readLine().value_or( "" );
      EXPECT_EQ( server_->readLine(), "quillon-smbusd: serving " + at( "smbus.sock" ) );
      return warning;
   }

private:
   std::unique_ptr<Process> server_;
};

} // namespace

TEST_F( AdapterObstacles, AreThatThereIsNone ) {
   EXPECT_EQ( serve( {} ),
      "quillon-smbusd: i2c-250: no such bus (/dev/i2c-250: No such file or directory; load "
      "i2c-dev, or correct the map of adapters)" );

   auto result = run( { "--board", BOARDS "/selvane", "fan", "fan1", "rpm" } );

   EXPECT_EQ( result.err, "quillonctl: fan1: cannot read the speed: execute: failure in response request 1: "
                          "i2c-250 0x2c reg 0x3e: no such bus (/dev/i2c-250: No such file or directory; load "
                          "i2c-dev, or correct the map of adapters)\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}

TEST_F( AdapterObstacles, AreThatItBelongsToOthers ) {
   if ( geteuid() != 0 ) {
      GTEST_SKIP() << "only root can have a /dev of its own";
   }
   // The device is a plain file: it is not opened anyway.
   EXPECT_EQ(
      serve( { "/usr/bin/unshare", "--mount", "/bin/sh", "-c",
         "mount -t tmpfs none /dev && : >/dev/i2c-250 && chmod 0 /dev/i2c-250 && "
         "exec setpriv --bounding-set=-dac_override,-dac_read_search --clear-groups -- \"$0\" \"$@\"" } ),
      "quillon-smbusd: i2c-250: not permitted (/dev/i2c-250: Permission denied; put the server's user into "
      "the group "
      "of this device)" );

   auto result = run( { "--board", BOARDS "/selvane", "fan", "fan1", "rpm" } );

   EXPECT_EQ( result.err, "quillonctl: fan1: cannot read the speed: execute: failure in response request 1: "
                          "i2c-250 0x2c reg 0x3e: not permitted (/dev/i2c-250: Permission denied; put the "
                          "server's user into the group of this device)\n" );
   EXPECT_EQ( result.exitStatus, 1 );
}
