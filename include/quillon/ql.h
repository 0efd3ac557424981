/**
 * @file ql.h
 * The host interface of the Selvane hardware platform library, libQuillonDriversSelvane.so.
 *
 * A host loads the library as a plug-in, gives it the topology of the hardware once, asks for an object for
 * each device that it wants to use, and then works through the table of callbacks that each object carries.
 *
 * The host's part:
 *  - It defines the four host services at the end of this file and makes them visible to plug-ins (link with
 *    -rdynamic or an export list). They are weak imports: the library loads without them, and then fails at
 *    the first call.
 *  - It calls `ql_<kind>_init` with the topology text for every kind that it uses, before any `ql_<kind>_add`
 *    but ql_system_add.
 *  - It calls the library from one thread at a time. Timers fire on that thread, between calls.
 *
 * Failures come in two kinds. What the hardware or a caller can get wrong at run time is a ::ql_status or a
 * null object, with a line for ql_trace. A document that breaks its contract (a required key that is missing,
 * a value of the wrong type, an unknown label) ends the process by assertion; check documents before you hand
 * them over. An argument text that is no number where a number is needed, and a kind that a driver does not
 * offer, throw a C++ exception through the add function.
 *
 * Everything that the library hands out stays valid until the process ends, but for the texts behind a
 * `char**`: those belong to the host, which releases them with free().
 */
#ifndef QUILLON_QL_H
#define QUILLON_QL_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <time.h>

/* Enumerations are 32 bits wide. In C++ their type is fixed, so that every 32-bit number a host or a chip
 * gives is a value that may be looked at. */
#ifdef __cplusplus
#define QL_32_BITS : uint32_t
extern "C" {
#else
#define QL_32_BITS
#endif

/** The result of every operation that can fail. */
enum ql_status QL_32_BITS {
   /** Success. */
   QL_STATUS_OK = 0,
   /** No failure: there is no module in the cage. Only a transceiver's get_presence gives it. */
   QL_STATUS_NOT_PRESENT = 1,
   /** A chip answered, with an error or an impossible value. */
   QL_STATUS_DEVICE_ERROR = 2,
   /** What the caller gave cannot be used. */
   QL_STATUS_INVALID_ARGUMENT = 3,
   /** The way to the hardware failed: no server, a broken connection, a wrong checksum, a stale cache. */
   QL_STATUS_IO_ERROR = 4,
   /** The platform has no such operation. */
   QL_STATUS_NOT_SUPPORTED = 5,
   /** Any other failure. */
   QL_STATUS_FAILED = 6
};
/** enum ql_status, in C too by its name alone. */
typedef enum ql_status ql_status;

/*
 * Objects and their tables.
 *
 * A record is a word that the library does not use, the table of the object's kind and, but for ql_system, a
 * pointer of the library's own. All objects of a kind share one table, transceivers one for each kind of
 * module. A table begins with its size in bytes, which tells a host which slots exist; a slot may be null and
 * is to be tested. Callbacks take the record and block until the hardware has answered.
 */

typedef struct ql_system ql_system;
typedef struct ql_temp_sensor ql_temp_sensor;
typedef struct ql_fan ql_fan;
typedef struct ql_psu ql_psu;
typedef struct ql_led ql_led;
typedef struct ql_slot ql_slot;
typedef struct ql_xcvr ql_xcvr;
typedef struct ql_gpio ql_gpio;
typedef struct ql_poe_port ql_poe_port;

/** Callbacks of the switch as a whole. */
typedef struct ql_system_ops {
   /** Size of this table in bytes: 56. */
   size_t size;
   /** Always QL_STATUS_NOT_SUPPORTED. */
   ql_status ( *poweroff )( ql_system* system );
   /** Always QL_STATUS_NOT_SUPPORTED. */
   ql_status ( *powercycle )( ql_system* system );
   /**
    * Why the switch last restarted. Reading consumes the answer: the next call gives QL_STATUS_FAILED until
    * another restart.
    * @param reason on QL_STATUS_OK, a sentence with its terminating zero; otherwise untouched
    * @param when not written
    * @param debug_info not written
    */
   ql_status ( *get_reload_cause )(
      ql_system* system, char ( *reason )[100], time_t* when, char ( *debug_info )[500] );
   /** Tells the platform CPLD whether a reboot leaves the PoE controller alone (true) or resets it (false).
    */
   ql_status ( *poe_reboot_action )( ql_system* system, bool keep_poe );
   /** Version of the platform CPLD, as "0xMM.mm" with major and minor number in hexadecimal. */
   ql_status ( *get_chip_info )( ql_system* system, char ( *version )[8] );
   /** Null. */
   void ( *reserved )( void );
} ql_system_ops;

/** Record of the switch as a whole. */
struct ql_system {
   /** Not used by the library. */
   uint64_t reserved;
   /** The callbacks. */
   const ql_system_ops* ops;
};

/** Callbacks of a temperature sensor. */
typedef struct ql_temp_sensor_ops {
   /** Size of this table in bytes: 24. */
   size_t size;
   /** Null; kept for a debug callback. */
   void ( *debug_info )( void );
   /** @param degrees temperature in degrees Celsius; written on QL_STATUS_OK only */
   ql_status ( *get_temperature )( ql_temp_sensor* sensor, float* degrees );
} ql_temp_sensor_ops;

/** Record of a temperature sensor. */
struct ql_temp_sensor {
   /** Not used by the library. */
   uint64_t reserved;
   /** The callbacks. */
   const ql_temp_sensor_ops* ops;
   /** The library's own; not for the host. */
   void* owner;
};

/** Callbacks of a fan. */
typedef struct ql_fan_ops {
   /** Size of this table in bytes: 32. */
   size_t size;
   /** @param text preset it to null: a fan without a report gives QL_STATUS_OK and leaves it alone */
   ql_status ( *debug_info )( const ql_fan* fan, char** text );
   /**
    * @param rpm speed in revolutions per minute. A fan that stands still gives QL_STATUS_DEVICE_ERROR and 0;
    *            on any other failure it is not written
    */
   ql_status ( *get_rpm )( ql_fan* fan, int* rpm );
   /** @param rpm wanted speed in revolutions per minute, from 0 to the fan's top speed; it is not clamped */
   ql_status ( *set_rpm )( ql_fan* fan, int rpm );
} ql_fan_ops;

/** Record of a fan. */
struct ql_fan {
   /** Not used by the library. */
   uint64_t reserved;
   /** The callbacks. */
   const ql_fan_ops* ops;
   /** The library's own; not for the host. */
   void* owner;
};

/** Callbacks of a power supply. */
typedef struct ql_psu_ops {
   /** Size of this table in bytes: 72. */
   size_t size;
   /** Null; kept for a debug callback. */
   void ( *debug_info )( void );
   /** @param ok 1 while the supply delivers, 0 otherwise */
   ql_status ( *get_power_ok )( ql_psu* psu, int* ok );
   /** @param amps current at the input, in amperes */
   ql_status ( *get_input_current )( ql_psu* psu, float* amps );
   /** @param amps current at the output, in amperes */
   ql_status ( *get_output_current )( ql_psu* psu, float* amps );
   /** @param volts voltage at the input, in volts */
   ql_status ( *get_input_voltage )( ql_psu* psu, float* volts );
   /** @param volts voltage at the output, in volts */
   ql_status ( *get_output_voltage )( ql_psu* psu, float* volts );
   /** @param watts power at the input, in watts */
   ql_status ( *get_input_power )( ql_psu* psu, float* watts );
   /** @param watts power at the output, in watts */
   ql_status ( *get_output_power )( ql_psu* psu, float* watts );
} ql_psu_ops;

/** Record of a power supply. */
struct ql_psu {
   /** Not used by the library. */
   uint64_t reserved;
   /** The callbacks. */
   const ql_psu_ops* ops;
   /** The library's own; not for the host. */
   void* owner;
};

/** What an LED is to show. The colour belongs to the LED. */
enum ql_led_status QL_32_BITS {
   /** Dark. */
   QL_LED_OFF = 0,
   /** All is well. */
   QL_LED_GOOD = 1,
   /** Something wants attention. */
   QL_LED_WARNING = 2,
   /** Something has failed. */
   QL_LED_BAD = 3,
   /** What it stands for is not in use. */
   QL_LED_INACTIVE = 4,
   /** The state is not known. */
   QL_LED_UNKNOWN = 5,
   /** Shows a person which one is meant. */
   QL_LED_BEACON = 6,
   /** No LED of this library has it. */
   QL_LED_RELEASE = 7
};
/** enum ql_led_status, in C too by its name alone. */
typedef enum ql_led_status ql_led_status;

/** Callbacks of an LED. */
typedef struct ql_led_ops {
   /** Size of this table in bytes: 16. */
   size_t size;
   /** QL_STATUS_INVALID_ARGUMENT for a status that this LED does not have. Above 7 the process ends. */
   ql_status ( *set_light_setting )( ql_led* led, ql_led_status status );
} ql_led_ops;

/** Record of an LED. */
struct ql_led {
   /** Not used by the library. */
   uint64_t reserved;
   /** The callbacks. */
   const ql_led_ops* ops;
   /** The library's own; not for the host. */
   void* owner;
};

/** Callbacks of a slot. */
typedef struct ql_slot_ops {
   /** Size of this table in bytes: 16. */
   size_t size;
   /**
    * What sits in the slot.
    * @param text on QL_STATUS_OK, an identification text that the host evaluates and then frees
    */
   ql_status ( *get_presence )( ql_slot* slot, char** text );
} ql_slot_ops;

/** Record of a slot. */
struct ql_slot {
   /** Not used by the library. */
   uint64_t reserved;
   /** The callbacks. */
   const ql_slot_ops* ops;
   /** The library's own; not for the host. */
   void* owner;
};

/** Which table a transceiver has: the member of ql_xcvr_ops::by_kind that holds. */
enum {
   /** SFP and SFP+. */
   QL_XCVR_SFP = 0,
   /** QSFP and QSFP+. */
   QL_XCVR_QSFP = 1,
   /** QSFP-DD and others with the common management interface. */
   QL_XCVR_CMIS = 2
};

/** Callbacks of an SFP cage. Signal values are 1 for asserted and 0 for not, written on QL_STATUS_OK only. */
typedef struct ql_sfp_ops {
   /** Size of this inner table in bytes: 48. */
   size_t size;
   /** QL_STATUS_OK with a module in the cage, QL_STATUS_NOT_PRESENT without one. */
   ql_status ( *get_presence )( ql_xcvr* xcvr );
   /** The module tells of a fault of its transmitter. */
   ql_status ( *get_tx_fault )( ql_xcvr* xcvr, int* value );
   /** The module receives no light. */
   ql_status ( *get_rx_los )( ql_xcvr* xcvr, int* value );
   /** The transmitter is kept off. */
   ql_status ( *get_tx_disable )( ql_xcvr* xcvr, int* value );
   /** @param value any but 0 keeps the transmitter off */
   ql_status ( *set_tx_disable )( ql_xcvr* xcvr, int value );
} ql_sfp_ops;

/** Callbacks of a QSFP or CMIS cage. Signal values are those of an SFP cage. */
typedef struct ql_qsfp_ops {
   /** Size of this inner table in bytes: 72. */
   size_t size;
   /** As ql_sfp_ops::get_presence. */
   ql_status ( *get_presence )( ql_xcvr* xcvr );
   /** The module is selected for management access. */
   ql_status ( *get_mod_sel )( ql_xcvr* xcvr, int* value );
   /** Selects the module for management access, or not. */
   ql_status ( *set_mod_sel )( ql_xcvr* xcvr, int value );
   /** The module is kept in low power mode. */
   ql_status ( *get_lp_mode )( ql_xcvr* xcvr, int* value );
   /** Keeps the module in low power mode, or not. */
   ql_status ( *set_lp_mode )( ql_xcvr* xcvr, int value );
   /** The module is held in reset. */
   ql_status ( *get_reset )( ql_xcvr* xcvr, int* value );
   /** Holds the module in reset, or not. */
   ql_status ( *set_reset )( ql_xcvr* xcvr, int value );
   /** The module asks for attention. */
   ql_status ( *get_interrupt )( ql_xcvr* xcvr, int* value );
} ql_qsfp_ops;

/** Callbacks of a transceiver cage; the only table with more than its size in the head. */
typedef struct ql_xcvr_ops {
   /** Size of this table in bytes: 80. */
   uint32_t size;
   /** QL_XCVR_SFP, QL_XCVR_QSFP or QL_XCVR_CMIS. */
   uint32_t kind;

   /** The callbacks of one kind of cage. */
   union {
      /** With QL_XCVR_SFP. */
      ql_sfp_ops sfp;
      /** With QL_XCVR_QSFP. */
      ql_qsfp_ops qsfp;
      /** With QL_XCVR_CMIS. */
      ql_qsfp_ops cmis;
   } by_kind; /**< The member that `kind` tells. */
} ql_xcvr_ops;

/** Record of a transceiver cage. */
struct ql_xcvr {
   /** Not used by the library. */
   uint64_t reserved;
   /** The callbacks. */
   const ql_xcvr_ops* ops;
   /** The library's own; not for the host. */
   void* owner;
};

/** Callbacks of a single bit. Setting and clearing read the register, change the bit and write it back. */
typedef struct ql_gpio_ops {
   /** Size of this table in bytes: 32. */
   size_t size;
   /** Makes the bit 1. */
   ql_status ( *bit_set )( ql_gpio* gpio );
   /** Makes the bit 0. */
   ql_status ( *bit_clear )( ql_gpio* gpio );
   /** @param value 0 or 1; written on QL_STATUS_OK only */
   ql_status ( *bit_read )( ql_gpio* gpio, uint32_t* value );
} ql_gpio_ops;

/** Record of a single bit. */
struct ql_gpio {
   /** Not used by the library. */
   uint64_t reserved;
   /** The callbacks. */
   const ql_gpio_ops* ops;
   /** The library's own; not for the host. */
   void* owner;
};

/** State of a PoE port or of one of its two channels. */
enum ql_poe_port_state QL_32_BITS {
   /** Not looking for devices. */
   QL_POE_PORT_DISABLED = 0,
   /** Looking for a powered device. */
   QL_POE_PORT_DETECTING = 1,
   /** A powered device asks for power. */
   QL_POE_PORT_REQUESTING = 2,
   /** A dual-signature device asks for power. */
   QL_POE_PORT_REQUESTING_DUAL = 3,
   /** Delivering power. */
   QL_POE_PORT_POWERED = 4,
   /** Shut off, or kept from power. */
   QL_POE_PORT_FAULT = 5,
   /** Shut off for more current than allowed. */
   QL_POE_PORT_OVERLOAD = 6
};
/** enum ql_poe_port_state, in C too by its name alone. */
typedef enum ql_poe_port_state ql_poe_port_state;

/** State of a port's pairs: the controller's own number, 0 for every number it does not define. */
enum ql_poe_port_pair_state QL_32_BITS {
   /** Number 0. */
   QL_POE_PAIR_STATE_0 = 0,
   /** Number 1. */
   QL_POE_PAIR_STATE_1 = 1,
   /** Number 2. */
   QL_POE_PAIR_STATE_2 = 2,
   /** Number 3. */
   QL_POE_PAIR_STATE_3 = 3
};
/** enum ql_poe_port_pair_state, in C too by its name alone. */
typedef enum ql_poe_port_pair_state ql_poe_port_pair_state;

/** Class that a powered device has shown: IEEE 802.3 classes 0 to 8. */
enum ql_poe_device_class QL_32_BITS {
   /** Class 0. */
   QL_POE_CLASS_0 = 0,
   /** Class 1. */
   QL_POE_CLASS_1 = 1,
   /** Class 2. */
   QL_POE_CLASS_2 = 2,
   /** Class 3. */
   QL_POE_CLASS_3 = 3,
   /** Class 4. */
   QL_POE_CLASS_4 = 4,
   /** Class 5. */
   QL_POE_CLASS_5 = 5,
   /** Class 6. */
   QL_POE_CLASS_6 = 6,
   /** Class 7. */
   QL_POE_CLASS_7 = 7,
   /** Class 8. */
   QL_POE_CLASS_8 = 8,
   /** Anything else. */
   QL_POE_CLASS_INVALID = 9
};
/** enum ql_poe_device_class, in C too by its name alone. */
typedef enum ql_poe_device_class ql_poe_device_class;

/** What limits the power of a port. Any value but QL_POE_LIMIT_CLASS counts as QL_POE_LIMIT_USER. */
enum ql_poe_power_limit_mode QL_32_BITS {
   /** The limit follows the class of the powered device. */
   QL_POE_LIMIT_CLASS = 0,
   /** A limit in watts. */
   QL_POE_LIMIT_USER = 1
};
/** enum ql_poe_power_limit_mode, in C too by its name alone. */
typedef enum ql_poe_power_limit_mode ql_poe_power_limit_mode;

/**
 * Callbacks of a PoE port. Values are written on QL_STATUS_OK only. Readings come from replies of the
 * controller that may be up to 2 seconds old.
 */
typedef struct ql_poe_port_ops {
   /** Size of this table in bytes: 136. */
   size_t size;
   /**
    * Everything that the controller tells about the port.
    * @param text text that the host frees
    * @param raw true for the bytes of the replies, false for words
    * @return length of the text
    */
   size_t ( *debug_info )( const ql_poe_port* port, char** text, bool raw );
   /** Starts the port up. The first call starts the controller too, which takes seconds. */
   ql_status ( *port_init )( ql_poe_port* port );
   /**
    * Loads the platform's firmware file into the controller if its revision differs, which blocks for more
    * than 13 seconds. A file that can't be read ends the process.
    * @param skip only tells the revision
    * @param revision a text for the host to free, whatever the status; null without memory
    */
   ql_status ( *reprogram_firmware )( ql_poe_port* port, bool skip, char** revision );
   /** Enables or disables the port's power sourcing function. */
   ql_status ( *set_pse )( ql_poe_port* port, bool enable );
   /** @param watts limit of QL_POE_LIMIT_USER, not looked at for QL_POE_LIMIT_CLASS */
   ql_status ( *set_limit )( ql_poe_port* port, ql_poe_power_limit_mode mode, float watts );
   /** Whether the port is shut off when power supply `psu` (from 0) fails. */
   ql_status ( *set_shut_off_with_psu )( ql_poe_port* port, uint8_t psu, bool shut_off );
   /** Gives power to the device that was found, or takes it away. */
   ql_status ( *power_on )( ql_poe_port* port, bool on );
   /** Whether devices from before IEEE 802.3af are detected too. */
   ql_status ( *set_legacy_detect )( ql_poe_port* port, bool legacy );
   /** State of the port, of its primary and its alternative channel, and of its pairs. */
   ql_status ( *get_power_state )( ql_poe_port* port, ql_poe_port_state* state, ql_poe_port_state* primary,
      ql_poe_port_state* alternative, ql_poe_port_pair_state* pair_state );
   /** Class of the device, and what it shows on the primary and on the alternative channel. */
   ql_status ( *get_device_class )( ql_poe_port* port, ql_poe_device_class* device_class,
      ql_poe_device_class* primary, ql_poe_device_class* alternative );
   /** Watts, of the port and of its two channels. */
   ql_status ( *get_power )( ql_poe_port* port, float* total, float* primary, float* alternative );
   /** Volts at the port. */
   ql_status ( *get_voltage )( ql_poe_port* port, float* volts );
   /** Amperes out of the port. */
   ql_status ( *get_current )( ql_poe_port* port, float* amps );
   /** Degrees Celsius. */
   ql_status ( *get_temperature )( ql_poe_port* port, float* degrees );
   /** Whether the controller's checks of its own configuration pass. */
   ql_status ( *get_crc_status )( ql_poe_port* port, bool* ok );
   /** As debug_info with raw false. */
   size_t ( *get_information )( ql_poe_port* port, char** text );
} ql_poe_port_ops;

/** Record of a PoE port. */
struct ql_poe_port {
   /** Not used by the library. */
   uint64_t reserved;
   /** The callbacks. */
   const ql_poe_port_ops* ops;
   /** The library's own; not for the host. */
   void* owner;
};

/*
 * Entry functions.
 */

/**
 * The nine init functions connect the library to the SMBus server and load the topology. Call the init of
 * each kind that you use, all with the same text: the first does the work, the others return at once. Another
 * text replaces the topology; objects made before go on working.
 *
 * While the server can't be reached, the first call blocks for 30 seconds, one for each try, and longer while
 * something listens there that takes no connection.
 *
 * @param topology JSON text of the topology, not null; it is copied
 * @retval QL_STATUS_OK the topology is loaded
 * @retval QL_STATUS_IO_ERROR the server could not be reached; the topology was not looked at
 * @retval QL_STATUS_INVALID_ARGUMENT the text is no JSON; an older topology stays in force
 */
/** @{ */
ql_status ql_system_init( const char* topology );
ql_status ql_temp_sensor_init( const char* topology );
ql_status ql_fan_init( const char* topology );
ql_status ql_psu_init( const char* topology );
ql_status ql_led_init( const char* topology );
ql_status ql_slot_init( const char* topology );
ql_status ql_xcvr_init( const char* topology );
ql_status ql_gpio_init( const char* topology );
ql_status ql_poe_port_init( const char* topology );
/** @} */

/**
 * A handle on the switch as a whole; each call gives a fresh one. Works before any init.
 * @param args is traced and not looked at
 */
ql_system* ql_system_add( const char* args );

/**
 * The add functions make an object of their kind on the device that the argument text names by its "did".
 * The device is set up when its did is seen for the first time and shared from then on; each call makes a new
 * object, also for the same text.
 *
 * @param args JSON text of the arguments, not null. It is copied, but for ql_slot_add, whose text must
 * outlive the slot
 * @return the object, or null; most failures give a line for ql_trace
 */
/** @{ */
ql_fan* ql_fan_add( const char* args );
ql_psu* ql_psu_add( const char* args );
ql_led* ql_led_add( const char* args );
ql_slot* ql_slot_add( const char* args );
ql_xcvr* ql_xcvr_add( const char* args );
ql_gpio* ql_gpio_add( const char* args );
ql_poe_port* ql_poe_port_add( const char* args );
/** @} */

/**
 * As the other add functions, and sets two thresholds on the chip, the alert threshold first. The last add
 * for a device decides what its chip holds.
 *
 * @param args as for the other add functions
 * @param alert alert threshold in degrees Celsius
 * @param critical critical threshold in degrees Celsius
 */
ql_temp_sensor* ql_temp_sensor_add( const char* args, float alert, float critical );

/*
 * Host services: defined by the host, called by the library.
 */

/* The library itself declares them weak, with `-DQL_HOST_SERVICE=...`; a host leaves this empty. */
#ifndef QL_HOST_SERVICE
#define QL_HOST_SERVICE
#endif

#ifdef __GNUC__
#define QL_PRINTF_LIKE __attribute__( ( format( printf, 2, 3 ) ) )
#else
#define QL_PRINTF_LIKE
#endif

/** A one-shot timer of the host. */
typedef struct ql_timer ql_timer;

/**
 * Writes or drops one line. Levels: 0 lifecycle and every failure, 2 topology, 3 register access and
 * transport, 4 entry into callbacks, 5 creation of chips and register lines, 6 polling and fine detail.
 */
QL_HOST_SERVICE void ql_trace( int level, const char* format, ... ) QL_PRINTF_LIKE;

/**
 * Creates a timer that is not yet running.
 * @param function called on the host's thread each time the timer fires
 * @param argument handed back to the function
 * @return null on failure
 */
QL_HOST_SERVICE ql_timer* ql_timer_add( void ( *function )( void* ), void* argument );

/**
 * Arms a timer once: its function is called once, when the interval has passed.
 * @param timer what ql_timer_add gave
 * @param interval milliseconds
 * @return 0 on success
 */
QL_HOST_SERVICE int ql_timer_set( ql_timer* timer, uint32_t interval );

/** Destroys a timer. */
QL_HOST_SERVICE void ql_timer_delete( ql_timer* timer );

#ifdef __cplusplus
}
#endif

#endif
