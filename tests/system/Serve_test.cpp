// `quillonctl serve` before clients, with chips that fail and a library that ends.

#include "EmulatedBoard.h"
#include "Http.h"
#include "OutputSchema.h"

#include <fmt/format.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <thread>

#include <unistd.h>

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

using Clock = std::chrono::steady_clock;

/** Values by series: `selvane_temperature_celsius{sensor="inlet"}`. */
using Series = std::map<std::string, std::string>;

Series seriesOf( const std::string& text ) {
   Series series;
   std::istringstream lines( text );
   for ( std::string line; std::getline( lines, line ); ) {
      if ( !line.starts_with( "#" ) ) {
         auto blank = line.rfind( ' ' );
         EXPECT_TRUE( series.emplace( line.substr( 0, blank ), line.substr( blank + 1 ) ).second ) << line;
      }
   }
   return series;
}

/** The processes that a process has started, in no order. */
std::vector<pid_t> childrenOf( pid_t parent ) {
   std::vector<pid_t> children;
   std::ifstream file( fmt::format( "/proc/{0}/task/{0}/children", parent ) );
   for ( pid_t child = 0; file >> child; ) {
      children.push_back( child );
   }
   return children;
}

class Serve : public EmulatedBoardTest {
protected:
   Serve() { environment["QUILLON_BOARD"] = BOARDS "/selvane"; }

   void serve( const Process::Arguments& more = { "--interval", "0.1" } ) {
      Process::Arguments arguments = { "serve", "--listen", "127.0.0.1:0" };
      arguments.insert( arguments.end(), more.begin(), more.end() );
      process.reset( new Process( start( arguments ) ) );
      auto line = process->readLine().value_or( "" );
      EXPECT_THAT( line,
         ::testing::MatchesRegex( "Serving http://127.0.0.1:[0-9]+/ and http://127.0.0.1:[0-9]+/metrics" ) );
      port = std::atoi( line.c_str() + sizeof( "Serving http://127.0.0.1" ) );
   }

   Series metrics() const { return seriesOf( ask( port, "GET", "/metrics" ).body ); }

   /** The metrics once something holds of them. */
   Series metricsOnce( const std::function<bool( const Series& )>& holds ) const {
      auto deadline = Clock::now() + 20s;
      for ( ;; ) {
         auto series = metrics();
         if ( holds( series ) ) {
            return series;
         }
         if ( Clock::now() > deadline ) {
            ADD_FAILURE() << "waited in vain";
            return series;
         }
         std::this_thread::sleep_for( 20ms );
      }
   }

   Series metricsOnceThereIs( const std::string& name ) const {
      return metricsOnce( [&]( auto& series ) { return series.contains( name ); } );
   }

   Series metricsOnceGone( const std::string& name ) const {
      return metricsOnce( [&]( auto& series ) { return !series.contains( name ); } );
   }

   std::string status() const { return ask( port, "GET", "/status.json" ).body; }

   /** The process that has the library. */
   pid_t library() const {
      auto readers = childrenOf( process->pid() );
      auto libraries = readers.empty() ? readers : childrenOf( readers.front() );
      return libraries.empty() ? 0 : libraries.front();
   }

   std::unique_ptr<Process> process;
   int port = 0;
};

constexpr const char* inlet = R"(selvane_temperature_celsius{sensor="inlet"})";
constexpr const char* inletUp = R"(selvane_object_up{kind="temp_sensor",object="inlet"})";
constexpr const char* inletFailures = R"(selvane_read_failures_total{kind="temp_sensor",object="inlet"})";
constexpr const char* inletReads =
   R"(selvane_read_duration_seconds_count{kind="temp_sensor",object="inlet"})";
constexpr const char* lastObject = R"(selvane_object_up{kind="poe_port",object="port48"})";
constexpr const char* starts = "selvane_library_starts_total";

double numberOf( const Series& series, const std::string& name ) {
   auto found = series.find( name );
   return found == series.end() ? -1 : std::strtod( found->second.c_str(), nullptr );
}

} // namespace

TEST_F( Serve, TellsEveryKindOfValueInMetrics ) {
   emu( { "poe", "7", "attach", "class=3", "draw=9.5" } );
   run( { "poe", "port[78]", "init" } );
   run( { "poe", "port[78]", "pse", "on" } );
   std::this_thread::sleep_for( 600ms );
   run( { "poe", "port7", "on" } );
   serve();

   auto series = metricsOnce( []( auto& all ) {
      return all.contains( lastObject ) &&
             numberOf( all, R"(selvane_poe_port_power_watts{port="port7"})" ) > 0;
   } );

   const std::map<std::string, std::string> rows = {
      { R"(selvane_board_info{board="selvane"})", "1" },
      { R"(selvane_system_info{system="switch",version="0x01.2a"})", "1" },
      { inlet, "24.5" },
      { R"(selvane_temperature_alert_celsius{sensor="inlet"})", "45" },
      { R"(selvane_temperature_critical_celsius{sensor="inlet"})", "55" },
      { R"(selvane_temperature_state{sensor="inlet",state="ok"})", "1" },
      { R"(selvane_temperature_state{sensor="inlet",state="alert"})", "0" },
      { R"(selvane_temperature_state{sensor="inlet",state="critical"})", "0" },
      { R"(selvane_fan_rpm{fan="fan1"})", "8000" },
      { R"(selvane_fan_max_rpm{fan="fan1"})", "20000" },
      { R"(selvane_fan_state{fan="fan1",state="ok"})", "1" },
      { R"(selvane_fan_state{fan="fan1",state="stalled"})", "0" },
      { R"(selvane_slot_present{slot="tray1"})", "1" },
      { R"(selvane_slot_info{slot="tray1",model="SLV-FAN-F",serial="SLVF0001"})", "1" },
      { R"(selvane_transceiver_present{transceiver="sfp2"})", "1" },
      { R"(selvane_transceiver_rx_los{transceiver="sfp2"})", "1" },
      { R"(selvane_transceiver_tx_fault{transceiver="sfp2"})", "0" },
      { R"(selvane_transceiver_tx_disable{transceiver="sfp2"})", "0" },
      { R"(selvane_transceiver_state{transceiver="sfp3",state="absent"})", "1" },
      { R"(selvane_gpio_value{gpio="psu1.power_good"})", "1" },
      { R"(selvane_poe_port_device_class{port="port7"})", "3" },
      { R"(selvane_poe_port_power_watts{port="port7"})", "9.5" },
      { R"(selvane_poe_port_voltage_volts{port="port7"})", "54.0091" },
      { R"(selvane_poe_port_current_amperes{port="port7"})", "0.176" },
      { R"(selvane_poe_port_temperature_celsius{port="port7"})", "40" },
      { R"(selvane_poe_port_state{port="port7",state="powered"})", "1" },
      { R"(selvane_poe_port_state{port="port8",state="detecting"})", "1" },
      { R"(selvane_poe_port_state{port="port8",state="requesting dual"})", "0" },
      { R"(selvane_object_up{kind="led",object="led.port1"})", "1" },
      { starts, "1" },
   };
   for ( auto& [name, value] : rows ) {
      EXPECT_EQ( series[name], value ) << name;
   }
   EXPECT_TRUE( series.contains( "selvane_build_info{version=\"" QUILLON_VERSION "\"}" ) );
   EXPECT_GT( numberOf( series, inletReads ), 0 );
   EXPECT_GT(
      numberOf( series, R"(selvane_read_duration_seconds_sum{kind="temp_sensor",object="inlet"})" ), 0 );
   EXPECT_NEAR(
      numberOf( series, R"(selvane_last_read_timestamp_seconds{kind="temp_sensor",object="inlet"})" ),
      static_cast<double>( time( nullptr ) ), 30 );
}

TEST_F( Serve, NeverTellsASeriesTwiceOrAFamilyInPieces ) {
   serve();
   metricsOnceThereIs( lastObject );

   auto answer = ask( port, "GET", "/metrics" );

   EXPECT_GT( seriesOf( answer.body ).size(), 600U ); // and there each is looked at for being the first
   std::set<std::string> families;
   std::istringstream lines( answer.body );
   for ( std::string line; std::getline( lines, line ); ) {
      if ( line.starts_with( "# HELP " ) ) {
         auto name = line.substr( 7, line.find( ' ', 7 ) - 7 );
         EXPECT_TRUE( families.insert( name ).second ) << name;
      }
   }
   EXPECT_GT( families.size(), 20U );
}

TEST_F( Serve, TellsWhatLedsAreSetTo ) {
   serve();

   const struct {
      const char* led;
      const char* setting;
      const char* told;
   } rows[] = {
      { "led.status", "off", "off" },
      { "led.status", "good", "good" },
      { "led.status", "warning", "warning" },
      { "led.status", "unknown", "unknown" },
      { "led.status", "beacon", "beacon" },
      { "led.power", "off", "off" },
      { "led.power", "good", "good" },
      { "led.power", "bad", "bad" },
      { "led.cloud", "off", "off" },
      { "led.cloud", "good", "good" },
      { "led.cloud", "warning", "warning" },
      { "led.fan", "off", "off" },
      { "led.fan", "good", "good" },
      { "led.fan", "warning", "warning or bad" },
      { "led.sfp1", "off", "off" },
      { "led.sfp1", "good", "good" },
      { "led.sfp1", "warning", "warning or inactive" },
      { "led.sfp1", "beacon", "beacon" },
      { "led.port48", "off", "off" },
      { "led.port48", "good", "good" },
      { "led.port48", "warning", "warning or inactive" },
      { "led.port48", "beacon", "beacon" },
   };

   for ( auto& [led, setting, told] : rows ) {
      SCOPED_TRACE( fmt::format( "{} {}", led, setting ) );
      run( { "led", led, setting } );
      auto series =
         metricsOnceThereIs( fmt::format( R"(selvane_led_setting{{led="{}",setting="{}"}})", led, told ) );
      auto begin = fmt::format( R"(selvane_led_setting{{led="{}")", led );
      auto ofTheLed = [&]( auto& one ) { return one.first.starts_with( begin ); };
      EXPECT_EQ( std::count_if( series.begin(), series.end(), ofTheLed ), 1 );
   }
   rapidjson::Document document;
   document.Parse( status().c_str() );
   EXPECT_STREQ( document["led_settings"]["led.power"].GetString(), "bad" );
}

TEST_F( Serve, DoesNotKnowWhatAnLedShowsThatNobodyHasSet ) {
   serve();
   auto series = metricsOnceThereIs( R"(selvane_object_up{kind="led",object="led.status"})" );

   EXPECT_EQ( series[R"(selvane_object_up{kind="led",object="led.status"})"], "1" );
   EXPECT_THAT( ask( port, "GET", "/metrics" ).body, Not( HasSubstr( "selvane_led_setting" ) ) );
   EXPECT_THAT( status(), HasSubstr( R"("led_settings":{},)" ) );
}

TEST_F( Serve, TakesAnLedThatTheSimulationHasNotForUnknown ) {
   environment["QUILLONLIB_SIMDIR"] = folder / "simulation";
   serve( { "--sim", "--interval", "0.1" } );
   auto up = R"(selvane_object_up{kind="led",object="led.sfp1"})";

   EXPECT_EQ( metricsOnceThereIs( up )[up], "1" );
   EXPECT_THAT( status(), Not( HasSubstr( "led.sfp1\":\"" ) ) );
   EXPECT_THAT( run( { "--sim", "led", "led.status", "good" } ).err, "" );
   metricsOnceThereIs( R"(selvane_led_setting{led="led.status",setting="good"})" );
}

TEST_F( Serve, TellsNoSettingOfAnLedThatCannotBeRead ) {
   run( { "led", "led.status", "good" } );
   serve();
   auto good = R"(selvane_led_setting{led="led.status",setting="good"})";
   metricsOnceThereIs( good );

   emu( { "fault", "cpld", "nack" } );
   auto series = metricsOnceGone( good );

   EXPECT_EQ( series[R"(selvane_object_up{kind="led",object="led.status"})"], "0" );
   EXPECT_THAT( status(), HasSubstr( "cannot read the bit: " ) );
}

TEST_F( Serve, HasThePageAndTheStatusDocumentBesideTheMetrics ) {
   serve();
   metricsOnceThereIs( lastObject );

   auto page = ask( port, "GET", "/" );
   auto metricsAnswer = ask( port, "GET", "/metrics" );
   auto statusAnswer = ask( port, "GET", "/status.json" );

   EXPECT_EQ( page.status, 200 );
   EXPECT_THAT( page.headers, AllOf( HasSubstr( "Content-Type: text/html; charset=utf-8" ),
                                 HasSubstr( "Content-Security-Policy: default-src 'none'" ) ) );
   EXPECT_THAT( page.body, AllOf( HasSubstr( "<!doctype html>" ), HasSubstr( "fetch(\"/status.json\"" ) ) );
   EXPECT_THAT(
      metricsAnswer.headers, HasSubstr( "Content-Type: text/plain; version=0.0.4; charset=utf-8" ) );
   rapidjson::Document document;
   document.Parse( statusAnswer.body.c_str() );
   ASSERT_FALSE( document.HasParseError() ) << statusAnswer.body;
   EXPECT_TRUE( OutputSchema( "status" ).accepts( document["status"] ) ) << statusAnswer.body;
   EXPECT_EQ( document["ages_seconds"].Size(), document["status"]["objects"].Size() );
   EXPECT_STREQ( document["status"]["board"].GetString(), "selvane" );
   EXPECT_EQ( document["status"]["objects"][0]["temperature_celsius"].GetDouble(), 24.5 );
}

TEST_F( Serve, OnlyReads ) {
   serve();

   for ( auto method : { "POST", "PUT", "DELETE", "PATCH", "OPTIONS" } ) {
      auto answer = ask( port, method, "/metrics", "body" );
      EXPECT_EQ( answer.status, 405 ) << method;
      EXPECT_THAT( answer.headers, HasSubstr( "Allow: GET, HEAD" ) ) << method;
   }
   auto head = ask( port, "HEAD", "/" );
   EXPECT_EQ( head.status, 200 );
   EXPECT_EQ( head.body, "" );
   EXPECT_THAT( head.headers, ContainsRegex( "Content-Length: [1-9][0-9]{4}" ) );
   EXPECT_EQ( ask( port, "GET", "/elsewhere" ).status, 404 );
   EXPECT_EQ( ask( port, "GET", "/metrics?name=value", "a body" ).status, 200 );
}

TEST_F( Serve, KeepsNobodyWaitingForSlowClients ) {
   serve();
   std::vector<std::unique_ptr<HttpConnection>> slow;
   for ( auto i = 0; i < 200; ++i ) {
      slow.push_back( std::make_unique<HttpConnection>( port ) );
      slow.back()->send( i % 20 ? "GET /metrics HT" : "GET /metrics HTTP/1.1\r\nHost: x\r\n\r\n" );
   }

   auto begin = Clock::now();
   auto answer = ask( port, "GET", "/metrics" );

   EXPECT_EQ( answer.status, 200 );
   EXPECT_LT( Clock::now() - begin, 1s ); // the time of the first is up after 2
}

TEST_F( Serve, ShowsSilentClientsTheDoorSoon ) {
   serve();
   // As many as one address may have.
   std::vector<std::unique_ptr<HttpConnection>> silent;
   for ( auto i = 0; i < 300; ++i ) {
      silent.push_back( std::make_unique<HttpConnection>( port ) );
   }

   auto begin = Clock::now();
   for ( auto& client : silent ) {
      EXPECT_EQ( client->receive(), "" );
   }

   EXPECT_LT( Clock::now() - begin, 5s );
   // A place is free a moment after its client has been shown the door.
   std::string answer;
   while ( answer.empty() && Clock::now() - begin < 8s ) {
      HttpConnection next( port );
      next.send( "GET /metrics HTTP/1.0\r\n\r\n" );
      answer = next.receive();
   }
   EXPECT_TRUE( answer.starts_with( "HTTP/1" ) && answer.find( " 200 OK\r\n" ) == 8 )
      << answer.substr( 0, 40 );
}

TEST_F( Serve, KeepsAConnectionForTheNextRequest ) {
   serve();
   HttpConnection connection( port );
   const std::string next = "GET /elsewhere HTTP/1.1\r\nHost: x\r\n\r\n";
   const std::string last = "GET /elsewhere HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n";

   connection.send( next );
   std::this_thread::sleep_for( 3s ); // longer than a client without a request may be silent
   connection.send( last );

   auto text = connection.receive();
   EXPECT_NE( text.find( "HTTP/1.1 404" ), text.rfind( "HTTP/1.1 404" ) ) << text;
}

TEST_F( Serve, CountsAFailedReadAndTellsNoOldValue ) {
   serve();
   auto before = metricsOnceThereIs( inlet );

   emu( { "fault", "inlet", "nack" } );
   auto failed = metricsOnceGone( inlet );

   EXPECT_EQ( before[inletUp], "1" );
   EXPECT_EQ( before[inletFailures], "0" );
   EXPECT_EQ( failed[inletUp], "0" );
   EXPECT_GT( numberOf( failed, inletFailures ), 0 );
   EXPECT_FALSE( failed.contains( R"(selvane_temperature_state{sensor="inlet",state="ok"})" ) );
   EXPECT_EQ( failed[R"(selvane_temperature_alert_celsius{sensor="inlet"})"], "45" );
   EXPECT_EQ( failed[R"(selvane_object_up{kind="temp_sensor",object="outlet"})"], "1" );
   EXPECT_THAT( status(), HasSubstr( "i2c-3 0x48 reg 0x00: no acknowledge" ) );

   emu( { "fault", "inlet", "clear" } );
   EXPECT_EQ( metricsOnceThereIs( inlet )[inletUp], "1" );
}

TEST_F( Serve, AnswersAtOnceWhileTheBusHangs ) {
   serve();
   metricsOnceThereIs( inlet );

   emu( { "fault", "3", "hang", "6s", "2" } );
   std::this_thread::sleep_for( 300ms );
   auto longest = 0ns;
   for ( auto i = 0; i < 10; ++i ) {
      auto begin = Clock::now();
      EXPECT_EQ( ask( port, "GET", "/metrics" ).status, 200 );
      longest = std::max<std::chrono::nanoseconds>( longest, Clock::now() - begin );
   }

   EXPECT_LT( longest, 2s );
   rapidjson::Document document;
   document.Parse( status().c_str() );
   ASSERT_TRUE( document["busy"].IsObject() ) << status();
   EXPECT_GT( document["busy"]["seconds"].GetDouble(), 0.1 );
}

TEST_F( Serve, ReadsSensorsBetweenSlowPorts ) {
   run( { "poe", "port1", "init" } );
   emu( { "fault", "poe", "slow", "50ms" } );
   serve();

   metricsOnce( []( auto& all ) { return numberOf( all, inletReads ) >= 5; } );
   emu( { "set", "cpld.sfp1.present", "0" } ); // which a timer of the library finds
   auto series = metricsOnce( []( auto& all ) {
      return numberOf( all, R"(selvane_transceiver_present{transceiver="sfp1"})" ) == 0;
   } );

   EXPECT_FALSE( series.contains( lastObject ) );
}

TEST_F( Serve, OutlivesTheProcessOfTheLibrary ) {
   serve();
   emu( { "fault", "inlet", "nack" } );
   auto before = metricsOnce( []( auto& all ) { return numberOf( all, inletFailures ) >= 1; } );
   emu( { "fault", "inlet", "clear" } );

   auto first = library();
   ASSERT_GT( first, 0 );
   kill( first, SIGKILL );
   auto after = metricsOnce( []( auto& all ) { return numberOf( all, starts ) >= 2; } );
   auto again = metricsOnceThereIs( inlet );

   EXPECT_NE( library(), first );
   EXPECT_GE( numberOf( after, inletFailures ), numberOf( before, inletFailures ) );
   EXPECT_GE( numberOf( after, inletReads ), numberOf( before, inletReads ) );
   EXPECT_EQ( again[inlet], "24.5" );
}

TEST_F( Serve, StartsItsReaderAgain ) {
   serve();
   metricsOnceThereIs( inlet );

   auto readers = childrenOf( process->pid() );
   ASSERT_EQ( readers.size(), 1U );
   kill( readers.front(), SIGKILL );

   metricsOnce( []( auto& all ) { return numberOf( all, starts ) >= 2; } );
   EXPECT_EQ( childrenOf( process->pid() ).size(), 1U );
}

TEST_F( Serve, TriesAnObjectAnewThatEndedTheLibrary ) {
   environment["QUILLON_BOARD"] =
      boardWith( sensor( "good", 1, R"(, "driverArgs": { "script": "reads 21.5" })" ) + "," +
                 sensor( "deadly", 2, R"(, "driverArgs": { "script": "dies 30.5" })" ) );
   serve( { "--sim", "--plugin", SCRIPTED_PLUGIN, "--interval", "0.1" } );
   auto name = R"(selvane_temperature_celsius{sensor="deadly"})";

   metricsOnceThereIs( name );
   metricsOnceGone( name );
   EXPECT_THAT( status(), HasSubstr( "the library ended its process (Aborted)" ) );
   auto again = metricsOnceThereIs( name );

   EXPECT_GE( numberOf( again, starts ), 3 );
   EXPECT_GE( numberOf( again, R"(selvane_read_failures_total{kind="temp_sensor",object="deadly"})" ), 1 );
   EXPECT_EQ( numberOf( again, R"(selvane_read_failures_total{kind="temp_sensor",object="good"})" ), 0 );
}

TEST_F( Serve, WaitsForTheServerOfTheBusses ) {
   server.reset();
   serve();

   auto without = metricsOnceThereIs( inletUp );
   EXPECT_EQ( without[inletUp], "0" );
   EXPECT_EQ( without[starts], "0" );
   EXPECT_THAT( status(), HasSubstr( "no SMBus server at " ) );

   startServer();
   EXPECT_EQ( metricsOnceThereIs( inlet )[inlet], "24.5" );
   process->send( SIGTERM );
   auto result = process->wait();
   // Once, however often it was tried.
   auto first = result.err.find( "no SMBus server at " );
   EXPECT_NE( first, std::string::npos );
   EXPECT_EQ( result.err.find( "no SMBus server at ", first + 1 ), std::string::npos ) << result.err;
}

TEST_F( Serve, SaysOnceThatTheServerHasGoneAndOnceThatItIsBack ) {
   serve();
   metricsOnceThereIs( lastObject );

   server->send( SIGKILL );
   server->wait();
   metricsOnce( [&]( auto& ) { return status().find( "no SMBus server at " ) != std::string::npos; } );
   rapidjson::Document document;
   document.Parse( status().c_str() );
   auto reason = fmt::format( "no SMBus server at {}: Connection refused; start quillon-smbusd, name "
                              "its socket with --socket, or use --sim",
      ( folder / "smbus.sock" ).string() );
   for ( auto& object : document["status"]["objects"].GetArray() ) {
      EXPECT_EQ( object["error"]["message"].GetString(), reason ) << object["name"].GetString();
   }
   std::this_thread::sleep_for( 500ms ); // in which it is looked for five times
   startServer();
   EXPECT_EQ( metricsOnceThereIs( inlet )[inlet], "24.5" );
   process->send( SIGTERM );

   EXPECT_EQ( process->wait().err,
      fmt::format(
         "quillonctl: {}\nquillonctl: the library is loaded, and objects are read now\n", reason ) );
}

TEST_F( Serve, LooksForNoServerInTheSimulation ) {
   environment["QUILLON_BOARD"] = boardWith( sensor( "bad", 1, R"(, "driverArgs": { "script": "fails" })" ) );
   server.reset();
   serve( { "--sim", "--plugin", SCRIPTED_PLUGIN, "--interval", "0.1" } );

   auto failures = R"(selvane_read_failures_total{kind="temp_sensor",object="bad"})";
   auto series = metricsOnce( [=]( auto& all ) { return numberOf( all, failures ) >= 3; } );

   EXPECT_EQ( series[starts], "1" );
}

TEST_F( Serve, DoesNotComeBetweenAPoeCommandAndItsReply ) {
   serve();
   metricsOnceThereIs( lastObject );
   const auto ports = "port[1-9]";

   for ( auto& words : { Process::Arguments { "poe", ports, "init" },
            Process::Arguments { "poe", ports, "pse", "on" }, Process::Arguments { "status", ports } } ) {
      auto result = run( words );
      EXPECT_EQ( result.err, "" ) << words.back();
      EXPECT_EQ( result.exitStatus, 0 ) << words.back();
   }
   auto failures = R"(selvane_read_failures_total{kind="poe_port",object="port1"})";
   auto up = R"(selvane_object_up{kind="poe_port",object="port1"})";
   auto before = metricsOnce( [=]( auto& all ) { return all.at( up ) == "1"; } );
   run( { "status", ports } );
   EXPECT_EQ( metrics()[failures], before[failures] );
}

TEST_F( Serve, SaysWhatToDoAboutABusyPort ) {
   serve();
   auto address = fmt::format( "127.0.0.1:{}", port );

   auto result = run( { "serve", "--listen", address } );

   EXPECT_EQ( result.exitStatus, 1 );
   EXPECT_EQ( result.out, "" );
   EXPECT_EQ( result.err,
      fmt::format( "quillonctl: cannot listen on {}: Address already in use; another program listens there, "
                   "quillonctl serve perhaps: end that, or take another port with --listen ADDRESS:PORT\n",
         address ) );
}

TEST_F( Serve, TellsInJsonWhereItIsAndWhyItIsNot ) {
   OutputSchema schema( "serve" );
   Process first = start( { "--json", "serve", "--listen", "127.0.0.1:0" } );
   auto line = first.readLine().value_or( "" );

   EXPECT_EQ( schema.complaint( line ), "" );
   EXPECT_THAT( line, ContainsRegex( R"("url":"http://127.0.0.1:[0-9]+/")" ) );
   auto begin = line.find( "127.0.0.1" );
   auto address = line.substr( begin, line.find( '/', begin ) - begin );
   auto second = run( { "--json", "serve", "--listen", address } );
   EXPECT_EQ( schema.complaint( second.out ), "" );
   EXPECT_THAT( second.out, HasSubstr( "Address already in use; another program listens there" ) );
   EXPECT_EQ( second.exitStatus, 1 );
}

TEST_F( Serve, RefusesWhatIsNoAddress ) {
   const std::map<std::string, std::string> rows = {
      { "9633", "--listen must be ADDRESS:PORT, such as 127.0.0.1:9633" },
      { ":9633", "or 0.0.0.0:9633 for everybody, not :9633" },
      { "127.0.0.1:", "--listen must be ADDRESS:PORT" },
      { "127.0.0.1:70000", "--listen must be ADDRESS:PORT" },
      { "::1:9633", "--listen must be ADDRESS:PORT" },
      { "300.0.0.1:9633", "--listen 300.0.0.1:9633: 300.0.0.1 is no address: " },
   };
   for ( auto& [address, reason] : rows ) {
      auto result = run( { "serve", "--listen", address } );
      EXPECT_EQ( result.exitStatus, 2 ) << address;
      EXPECT_THAT( result.err, HasSubstr( reason ) ) << address;
   }
   EXPECT_THAT( run( { "serve", "--interval", "0" } ).err, HasSubstr( "--interval" ) );
   EXPECT_THAT( run( { "serve", "--listen", "192.0.2.1:9633" } ).err,
      HasSubstr( "Cannot assign requested address; --listen takes an address that this machine has" ) );
}

TEST_F( Serve, EndsWithItsProcessesWhenItIsAsked ) {
   for ( auto signal : { SIGTERM, SIGINT } ) {
      serve();
      metricsOnceThereIs( inlet );
      auto child = library();
      kill( child, SIGSTOP ); // the library may be anywhere

      process->send( signal );
      auto result = process->wait();

      EXPECT_EQ( result.exitStatus, 0 );
      EXPECT_EQ( result.err, "" );
      EXPECT_NE( kill( child, 0 ), 0 );
   }
}
