#ifndef COMPONENTS_PSU_H
#define COMPONENTS_PSU_H

#include "quillon/ql.h"

namespace Component::LogicalDevice {

/** A power supply as the host sees it. Objects live until the process ends: there is no virtual destructor.
 */
class Psu {
public:
   Psu();
   virtual ql_status getPowerOk( int* ok ) = 0;
   virtual ql_status getInputCurrent( float* value ) = 0;
   virtual ql_status getOutputCurrent( float* value ) = 0;
   virtual ql_status getInputVoltage( float* value ) = 0;
   virtual ql_status getOutputVoltage( float* value ) = 0;
   virtual ql_status getInputPower( float* value ) = 0;
   virtual ql_status getOutputPower( float* value ) = 0;

   static ql_status get_power_ok_callback( ql_psu* record, int* ok );
   static ql_status get_input_current_callback( ql_psu* record, float* value );
   static ql_status get_output_current_callback( ql_psu* record, float* value );
   static ql_status get_input_voltage_callback( ql_psu* record, float* value );
   static ql_status get_output_voltage_callback( ql_psu* record, float* value );
   static ql_status get_input_power_callback( ql_psu* record, float* value );
   static ql_status get_output_power_callback( ql_psu* record, float* value );
   static const ql_psu_ops ops_;

   ql_psu record;
};

} // namespace Component::LogicalDevice

#endif
