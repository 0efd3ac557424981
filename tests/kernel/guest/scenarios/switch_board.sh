# The documents of the switch's own board work on a kernel's adapter, which stands for its three busses here.

board=/test/boards/selvane
start_server

# 25 °C in each sensor, 4000 rpm of each fan: 2 * 3932160 / 1966.
for chip in 0x48 0x49 0x4a; do
   poke $chip 0x00 0x0019
done
for fan in 3 4 5; do
   poke_byte 0x2c 0x${fan}2 0x2b
   poke_byte 0x2c 0x${fan}e 0x3d
   poke_byte 0x2c 0x${fan}f 0x70
done
# The second tray is there, the first supply is good; the first module is there, the fourth one's transmitter off.
poke_byte 0x30 0x00 0x2a
poke_byte 0x30 0x01 0x01
poke_byte 0x30 0x07 0x15
poke_byte 0x30 0x10 0x0e
poke_byte 0x30 0x1f 0x80

status switch inlet outlet asic 'fan*' 'tray*' 'sfp*' 'psu*' 'led*'
is "no object fails" "exit $exit_status, $complaints" "exit 0, "
is "the number of objects" "$( echo "$json" | sed 's/{"kind"/\n&/g' | grep -c '"kind"' )" 75
is "temperatures" "$( temperature inlet ) $( temperature outlet ) $( temperature asic )" "25.0 25.0 25.0"
is "speeds" "$( value fan1 rpm ) $( value fan2 rpm ) $( value fan3 rpm )" "4000 4000 4000"
is "trays" "$( value tray1.absent value ) $( value tray2.absent value )" "1 0"
is "supplies" "$( value psu1.power_good value ) $( value psu2.power_good value )" "1 0"
is "modules" "$( value sfp1 present ) $( value sfp2 present )" "true false"
is "transmitters" "$( value sfp1 tx_disable ) $( value sfp4 tx_disable )" "false true"
is "the version" "$( value switch version )" '"0x01.2a"'

ctl xcvr sfp1 tx-disable on
is "a transmitter is switched off in its register" "exit $exit_status, $( peek_byte 0x30 0x1f )" "exit 0, 0x90"
ctl system poe-reboot reset
is "the reboot action is in its register" "exit $exit_status, $( peek_byte 0x30 0x06 )" "exit 0, 0x01"

status poe port1
is "a chip that is missing fails alone" "exit $exit_status, $( value poe temperature_celsius )" "exit 1, null"
stop_server
board=/test/board
