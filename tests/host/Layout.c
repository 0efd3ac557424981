/* The header on its own, in C and in C++: nothing is included before it, and every record and table has the
   layout that hosts were built for. Compiling this file is the test. */
#include "quillon/ql.h"

#include <assert.h>

/* C99 has no static assertion. */
#if !defined( __cplusplus ) && __STDC_VERSION__ < 201112L
#define static_assert( condition, text ) extern char asserted[( condition ) ? 1 : -1]
#endif

static_assert( sizeof( ql_status ) == 4, "statuses are 32 bits" );
static_assert( sizeof( ql_led_status ) == 4, "enumerations are 32 bits" );
static_assert( sizeof( ql_poe_port_state ) == 4, "enumerations are 32 bits" );
static_assert( sizeof( ql_poe_port_pair_state ) == 4, "enumerations are 32 bits" );
static_assert( sizeof( ql_poe_device_class ) == 4, "enumerations are 32 bits" );
static_assert( sizeof( ql_poe_power_limit_mode ) == 4, "enumerations are 32 bits" );

static_assert( QL_STATUS_OK == 0, "" );
static_assert( QL_STATUS_NOT_PRESENT == 1, "" );
static_assert( QL_STATUS_DEVICE_ERROR == 2, "" );
static_assert( QL_STATUS_INVALID_ARGUMENT == 3, "" );
static_assert( QL_STATUS_IO_ERROR == 4, "" );
static_assert( QL_STATUS_NOT_SUPPORTED == 5, "" );
static_assert( QL_STATUS_FAILED == 6, "" );

static_assert( QL_LED_OFF == 0, "" );
static_assert( QL_LED_GOOD == 1, "" );
static_assert( QL_LED_WARNING == 2, "" );
static_assert( QL_LED_BAD == 3, "" );
static_assert( QL_LED_INACTIVE == 4, "" );
static_assert( QL_LED_UNKNOWN == 5, "" );
static_assert( QL_LED_BEACON == 6, "" );
static_assert( QL_LED_RELEASE == 7, "" );

static_assert( QL_XCVR_SFP == 0, "" );
static_assert( QL_XCVR_QSFP == 1, "" );
static_assert( QL_XCVR_CMIS == 2, "" );

static_assert( QL_POE_PORT_DISABLED == 0, "" );
static_assert( QL_POE_PORT_DETECTING == 1, "" );
static_assert( QL_POE_PORT_REQUESTING == 2, "" );
static_assert( QL_POE_PORT_REQUESTING_DUAL == 3, "" );
static_assert( QL_POE_PORT_POWERED == 4, "" );
static_assert( QL_POE_PORT_FAULT == 5, "" );
static_assert( QL_POE_PORT_OVERLOAD == 6, "" );
static_assert( QL_POE_PAIR_STATE_3 == 3, "" );
static_assert( QL_POE_CLASS_0 == 0, "" );
static_assert( QL_POE_CLASS_8 == 8, "" );
static_assert( QL_POE_CLASS_INVALID == 9, "" );
static_assert( QL_POE_LIMIT_CLASS == 0, "" );
static_assert( QL_POE_LIMIT_USER == 1, "" );

/* A record: an unused word, the table, the owner. The system has no owner. */
#define RECORD( type )                                                                                       \
   static_assert( sizeof( type ) == 24, "three words" );                                                     \
   static_assert( offsetof( type, reserved ) == 0, "" );                                                     \
   static_assert( sizeof( ( ( type* )0 )->reserved ) == 8, "" );                                             \
   static_assert( offsetof( type, ops ) == 8, "" );                                                          \
   static_assert( offsetof( type, owner ) == 16, "" )

RECORD( ql_temp_sensor );
RECORD( ql_fan );
RECORD( ql_psu );
RECORD( ql_led );
RECORD( ql_slot );
RECORD( ql_xcvr );
RECORD( ql_gpio );
RECORD( ql_poe_port );
static_assert( sizeof( ql_system ) == 16, "two words" );
static_assert( offsetof( ql_system, reserved ) == 0, "" );
static_assert( offsetof( ql_system, ops ) == 8, "" );

/* A table: its size in bytes, then one pointer a slot. */
#define TABLE( type, bytes )                                                                                 \
   static_assert( sizeof( type ) == bytes, "" );                                                             \
   static_assert( offsetof( type, size ) == 0, "" );                                                         \
   static_assert( sizeof( ( ( type* )0 )->size ) == 8, "" )
#define SLOT( type, number, name ) static_assert( offsetof( type, name ) == 8 * number, "" )

TABLE( ql_system_ops, 56 );
SLOT( ql_system_ops, 1, poweroff );
SLOT( ql_system_ops, 2, powercycle );
SLOT( ql_system_ops, 3, get_reload_cause );
SLOT( ql_system_ops, 4, poe_reboot_action );
SLOT( ql_system_ops, 5, get_chip_info );
SLOT( ql_system_ops, 6, reserved );

TABLE( ql_temp_sensor_ops, 24 );
SLOT( ql_temp_sensor_ops, 1, debug_info );
SLOT( ql_temp_sensor_ops, 2, get_temperature );

TABLE( ql_fan_ops, 32 );
SLOT( ql_fan_ops, 1, debug_info );
SLOT( ql_fan_ops, 2, get_rpm );
SLOT( ql_fan_ops, 3, set_rpm );

TABLE( ql_psu_ops, 72 );
SLOT( ql_psu_ops, 1, debug_info );
SLOT( ql_psu_ops, 2, get_power_ok );
SLOT( ql_psu_ops, 3, get_input_current );
SLOT( ql_psu_ops, 4, get_output_current );
SLOT( ql_psu_ops, 5, get_input_voltage );
SLOT( ql_psu_ops, 6, get_output_voltage );
SLOT( ql_psu_ops, 7, get_input_power );
SLOT( ql_psu_ops, 8, get_output_power );

TABLE( ql_led_ops, 16 );
SLOT( ql_led_ops, 1, set_light_setting );

TABLE( ql_slot_ops, 16 );
SLOT( ql_slot_ops, 1, get_presence );

TABLE( ql_gpio_ops, 32 );
SLOT( ql_gpio_ops, 1, bit_set );
SLOT( ql_gpio_ops, 2, bit_clear );
SLOT( ql_gpio_ops, 3, bit_read );

TABLE( ql_poe_port_ops, 136 );
SLOT( ql_poe_port_ops, 1, debug_info );
SLOT( ql_poe_port_ops, 2, port_init );
SLOT( ql_poe_port_ops, 3, reprogram_firmware );
SLOT( ql_poe_port_ops, 4, set_pse );
SLOT( ql_poe_port_ops, 5, set_limit );
SLOT( ql_poe_port_ops, 6, set_shut_off_with_psu );
SLOT( ql_poe_port_ops, 7, power_on );
SLOT( ql_poe_port_ops, 8, set_legacy_detect );
SLOT( ql_poe_port_ops, 9, get_power_state );
SLOT( ql_poe_port_ops, 10, get_device_class );
SLOT( ql_poe_port_ops, 11, get_power );
SLOT( ql_poe_port_ops, 12, get_voltage );
SLOT( ql_poe_port_ops, 13, get_current );
SLOT( ql_poe_port_ops, 14, get_temperature );
SLOT( ql_poe_port_ops, 15, get_crc_status );
SLOT( ql_poe_port_ops, 16, get_information );

/* The one table with a head of two half words, and with an inner table behind it. */
static_assert( sizeof( ql_xcvr_ops ) == 80, "" );
static_assert( offsetof( ql_xcvr_ops, size ) == 0, "" );
static_assert( sizeof( ( ( ql_xcvr_ops* )0 )->size ) == 4, "" );
static_assert( offsetof( ql_xcvr_ops, kind ) == 4, "" );
static_assert( sizeof( ( ( ql_xcvr_ops* )0 )->kind ) == 4, "" );
static_assert( offsetof( ql_xcvr_ops, by_kind ) == 8, "" );

TABLE( ql_sfp_ops, 48 );
SLOT( ql_sfp_ops, 1, get_presence );
SLOT( ql_sfp_ops, 2, get_tx_fault );
SLOT( ql_sfp_ops, 3, get_rx_los );
SLOT( ql_sfp_ops, 4, get_tx_disable );
SLOT( ql_sfp_ops, 5, set_tx_disable );

TABLE( ql_qsfp_ops, 72 );
SLOT( ql_qsfp_ops, 1, get_presence );
SLOT( ql_qsfp_ops, 2, get_mod_sel );
SLOT( ql_qsfp_ops, 3, set_mod_sel );
SLOT( ql_qsfp_ops, 4, get_lp_mode );
SLOT( ql_qsfp_ops, 5, set_lp_mode );
SLOT( ql_qsfp_ops, 6, get_reset );
SLOT( ql_qsfp_ops, 7, set_reset );
SLOT( ql_qsfp_ops, 8, get_interrupt );
