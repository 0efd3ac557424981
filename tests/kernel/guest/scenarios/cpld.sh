# The signals and registers of the CPLD are found where i2cset puts them, and go where i2cget finds them.

start_server

poke_byte 0x30 0x00 0x2a
poke_byte 0x30 0x01 0x01
status switch
is "the version" "exit $exit_status, $( value switch version )" 'exit 0, "0x01.2a"'

# 0x10: bit 0 is the absence of the first module, bit 3 of the fourth one, bits 4 and 7 their losses of
# signal. 0x1f: bits 0 and 3 are their faults, bits 4 and 7 their disables.
poke_byte 0x30 0x10 0x18
poke_byte 0x30 0x1f 0x81
status sfp1 sfp4
while read -r cage key expected; do
   is "$key of $cage" "$( value "$cage" "$key" )" "$expected"
done <<END
sfp1 present    true
sfp1 tx_fault   true
sfp1 rx_los     true
sfp1 tx_disable false
sfp4 present    false
sfp4 tx_fault   false
sfp4 rx_los     false
sfp4 tx_disable true
END

ctl xcvr sfp1 tx-disable on
is "a transmitter is disabled" "exit $exit_status, $( peek_byte 0x30 0x1f )" "exit 0, 0x91"
ctl xcvr sfp4 tx-disable off
is "a transmitter is let go" "exit $exit_status, $( peek_byte 0x30 0x1f )" "exit 0, 0x11"

poke_byte 0x30 0x07 0x20
status tray1.absent psu2.power_good
is "bits of a register" "$( value tray1.absent value ) $( value psu2.power_good value )" "0 1"
poke_byte 0x30 0x07 0x01
status tray1.absent psu2.power_good
is "the bits turned round" "$( value tray1.absent value ) $( value psu2.power_good value )" "1 0"

poke_byte 0x30 0x60 0x20
ctl system reload-cause
is "the reload cause" "exit $exit_status, $( value switch reload_cause )" \
   'exit 0, "The system rebooted due to a watchdog"'
is "the reload cause is cleared" "$( peek_byte 0x30 0x60 )" 0x00
ctl system reload-cause
is "the reload cause is told once" "exit $exit_status, $( value switch reload_cause )" "exit 1, null"

poke_byte 0x30 0x06 0x55
ctl system poe-reboot reset
is "a reboot is to reset the PoE controller" "exit $exit_status, $( peek_byte 0x30 0x06 )" "exit 0, 0x01"
ctl system poe-reboot keep
is "a reboot is to keep the PoE controller" "exit $exit_status, $( peek_byte 0x30 0x06 )" "exit 0, 0x00"
stop_server
