#include "Metrics.h"

#include <prometheus/metric_family.h>
#include <prometheus/text_serializer.h>

#include <algorithm>
#include <span>

namespace Serve {

namespace {

using prometheus::ClientMetric;
using prometheus::MetricFamily;
using prometheus::MetricType;
using Labels = std::vector<ClientMetric::Label>;

/** A number, or a yes or no as 1 or 0, that is read of the objects of a kind. */
struct Gauge {
   std::string_view field;
   const char* name;
   const char* help;
};

/** The metrics of a kind. A label has the name of the object, so that no two series are the same. */
struct KindMetrics {
   std::string_view kind;
   const char* label;
   std::vector<Gauge> gauges;
   /** A series for each state, 1 for the one that it is. */
   const char* state = nullptr;
   const char* stateHelp = nullptr;
   std::vector<std::string_view> states = {};
   /** A series with the value 1, and texts as labels. */
   const char* info = nullptr;
   const char* infoHelp = nullptr;
   std::vector<std::string_view> texts = {};
};

const KindMetrics kindMetrics[] = {
   { .kind = "system",
      .label = "system",
      .gauges = {},
      .info = "selvane_system_info",
      .infoHelp = "Version of the switch's CPLD.",
      .texts = { "version" } },
   { .kind = "temp_sensor",
      .label = "sensor",
      .gauges = { { "temperature_celsius", "selvane_temperature_celsius", "Temperature of a sensor." },
         { "alert_celsius", "selvane_temperature_alert_celsius",
            "Temperature from which a sensor is in the state alert." },
         { "critical_celsius", "selvane_temperature_critical_celsius",
            "Temperature from which a sensor is in the state critical." } },
      .state = "selvane_temperature_state",
      .stateHelp = "Whether a sensor is in this state.",
      .states = { "ok", "alert", "critical" } },
   { .kind = "fan",
      .label = "fan",
      .gauges = { { "rpm", "selvane_fan_rpm", "Speed of a fan, in revolutions per minute." },
         { "max_rpm", "selvane_fan_max_rpm", "Speed of a fan at full drive." } },
      .state = "selvane_fan_state",
      .stateHelp = "Whether a fan is in this state.",
      .states = { "ok", "stalled" } },
   { .kind = "slot",
      .label = "slot",
      .gauges = { { "present", "selvane_slot_present", "Whether something is in a slot." } },
      .info = "selvane_slot_info",
      .infoHelp = "What is in a slot.",
      .texts = { "model", "serial" } },
   { .kind = "xcvr",
      .label = "transceiver",
      .gauges = { { "present", "selvane_transceiver_present", "Whether a module is in the cage." },
         { "tx_fault", "selvane_transceiver_tx_fault", "Whether the module tells of a transmit fault." },
         { "rx_los", "selvane_transceiver_rx_los", "Whether the module tells of a loss of signal." },
         { "tx_disable", "selvane_transceiver_tx_disable", "Whether the transmitter is kept off." } },
      .state = "selvane_transceiver_state",
      .stateHelp = "Whether a transceiver is in this state.",
      .states = { "ok", "absent", "fault" } },
   { .kind = "poe_port",
      .label = "port",
      .gauges = { { "device_class", "selvane_poe_port_device_class",
                     "Class of the device that a PoE port has found." },
         { "power_watts", "selvane_poe_port_power_watts", "Power that a PoE port gives." },
         { "voltage_volts", "selvane_poe_port_voltage_volts", "Voltage of a PoE port." },
         { "current_amperes", "selvane_poe_port_current_amperes", "Current of a PoE port." },
         { "temperature_celsius", "selvane_poe_port_temperature_celsius",
            "Temperature at a PoE port's part of the controller." } },
      .state = "selvane_poe_port_state",
      .stateHelp = "Whether a PoE port is in this state.",
      .states = { "disabled", "detecting", "requesting", "requesting dual", "powered", "overload", "fault",
         "unknown" } },
   { .kind = "gpio", .label = "gpio", .gauges = { { "value", "selvane_gpio_value", "Bit of a GPIO." } } },
};

ClientMetric gauge( const Labels& labels, double value ) {
   ClientMetric metric;
   metric.label = labels;
   metric.gauge.value = value;
   return metric;
}

ClientMetric counter( const Labels& labels, double value ) {
   ClientMetric metric;
   metric.label = labels;
   metric.counter.value = value;
   return metric;
}

const Value& valueOf( const StatusLine& line, std::string_view key ) {
   auto field = std::find_if(
      line.fields.begin(), line.fields.end(), [=]( auto& candidate ) { return candidate.key == key; } );
   return line.reading.values.at( static_cast<size_t>( field - line.fields.begin() ) );
}

class Families {
public:
   void add(
      const std::string& name, const std::string& help, MetricType type, std::vector<ClientMetric> metrics ) {
      if ( !metrics.empty() ) {
         all.push_back( { name, help, type, std::move( metrics ) } );
      }
   }

   std::vector<MetricFamily> all;
};

using Lines = std::vector<StatusLine>;

std::vector<ClientMetric> valuesOf( const Lines& lines, const char* label, std::string_view field ) {
   std::vector<ClientMetric> metrics;
   for ( auto& line : lines ) {
      auto& value = valueOf( line, field );
      auto labels = Labels { { label, line.object->name } };
      if ( auto number = std::get_if<double>( &value ) ) {
         metrics.push_back( gauge( labels, *number ) );
      } else if ( auto flag = std::get_if<bool>( &value ) ) {
         metrics.push_back( gauge( labels, *flag ? 1 : 0 ) );
      }
   }
   return metrics;
}

std::vector<ClientMetric> statesOf( const Lines& lines, const KindMetrics& kind ) {
   std::vector<ClientMetric> metrics;
   for ( auto& line : lines ) {
      if ( line.reading.failure ) {
         continue;
      }
      for ( auto state : kind.states ) {
         metrics.push_back( gauge( { { kind.label, line.object->name }, { "state", std::string( state ) } },
            line.reading.state == state ? 1 : 0 ) );
      }
   }
   return metrics;
}

std::vector<ClientMetric> infosOf( const Lines& lines, const KindMetrics& kind ) {
   std::vector<ClientMetric> metrics;
   for ( auto& line : lines ) {
      if ( line.reading.failure ) {
         continue;
      }
      Labels labels { { kind.label, line.object->name } };
      for ( auto key : kind.texts ) {
         auto text = std::get_if<std::string>( &valueOf( line, key ) );
         labels.push_back( { std::string( key ), text ? *text : "" } );
      }
      metrics.push_back( gauge( labels, 1 ) );
   }
   return metrics;
}

void addKind( Families& families, const Snapshot& snapshot, const KindMetrics& kind ) {
   Lines lines;
   for ( auto& object : snapshot.objects() ) {
      if ( object.entry->kind->name == kind.kind ) {
         lines.push_back( snapshot.lineOf( object ) );
      }
   }
   for ( auto& [field, name, help] : kind.gauges ) {
      families.add( name, help, MetricType::Gauge, valuesOf( lines, kind.label, field ) );
   }
   if ( kind.state ) {
      families.add( kind.state, kind.stateHelp, MetricType::Gauge, statesOf( lines, kind ) );
   }
   if ( kind.info ) {
      families.add( kind.info, kind.infoHelp, MetricType::Gauge, infosOf( lines, kind ) );
   }
}

/** How reading goes, of every object alike. */
void addReads( Families& families, const Snapshot& snapshot ) {
   std::vector<ClientMetric> up, failures, durations, times;
   for ( auto& object : snapshot.objects() ) {
      if ( !object.answeredAt ) {
         continue;
      }
      Labels labels { { "kind", std::string( object.entry->kind->name ) }, { "object", object.entry->name } };
      up.push_back( gauge( labels, snapshot.isUp( object ) ? 1 : 0 ) );
      failures.push_back( counter( labels, static_cast<double>( object.failures ) ) );
      ClientMetric duration;
      duration.label = labels;
      duration.summary.sample_count = object.reads;
      duration.summary.sample_sum = object.seconds;
      durations.push_back( duration );
      if ( object.readAt ) {
         times.push_back( gauge( labels, *object.readAt ) );
      }
   }
   families.add( "selvane_object_up", "Whether the last reading of an object was good, and is not old.",
      MetricType::Gauge, up );
   families.add(
      "selvane_read_failures_total", "Readings of an object that failed.", MetricType::Counter, failures );
   families.add( "selvane_read_duration_seconds", "Time that readings of an object took.",
      MetricType::Summary, durations );
   families.add(
      "selvane_last_read_timestamp_seconds", "When an object was last read well.", MetricType::Gauge, times );
}

void addLeds( Families& families, const Snapshot& snapshot ) {
   std::vector<ClientMetric> settings;
   for ( auto& object : snapshot.objects() ) {
      auto setting = snapshot.settingOf( object );
      if ( !setting.empty() ) {
         settings.push_back( gauge( { { "led", object.entry->name }, { "setting", setting } }, 1 ) );
      }
   }
   families.add( "selvane_led_setting", "What an LED is set to.", MetricType::Gauge, settings );
}

} // namespace

std::string metricsOf( const Snapshot& snapshot, const std::string& board ) {
   Families families;
   families.add( "selvane_build_info", "Version of quillonctl.", MetricType::Gauge,
      { gauge( { { "version", QUILLON_VERSION } }, 1 ) } );
   families.add(
      "selvane_board_info", "Name of the board.", MetricType::Gauge, { gauge( { { "board", board } }, 1 ) } );
   families.add( "selvane_library_starts_total", "How often the platform library was loaded.",
      MetricType::Counter, { counter( {}, snapshot.starts() ) } );
   addReads( families, snapshot );
   for ( auto& kind : kindMetrics ) {
      addKind( families, snapshot, kind );
   }
   addLeds( families, snapshot );
   return prometheus::TextSerializer().Serialize( families.all );
}

} // namespace Serve
