# Each chip that can't be reached is told with its cause, and the others are shown.

poke 0x48 0 0x0019
poke 0x49 0 0x0028
poke 0x4a 0 0x001e
poke 0x49 2 0x5555
poke 0x49 3 0x5555
hold 0x49 pct2075
start_server

status
is "quillonctl reports a failure" "$exit_status" 1
for sensor in absent outlet; do
   contains "$sensor has no temperature" "$( object $sensor )" '"temperature_celsius":null'
   contains "$sensor has failed" "$( object $sensor )" '"status":"QL_STATUS_FAILED"'
done
contains "absent has its cause in the JSON" "$( object absent )" "i2c-$adapter 0x4b reg 0x02: no acknowledge"
contains "outlet has its cause in the JSON" "$( object outlet )" \
   "i2c-$adapter 0x49 reg 0x02: held by a kernel driver"
contains "absent has its cause in the complaints" "$( echo "$complaints" | grep ' absent: ' )" \
   "no acknowledge"
contains "outlet has its cause in the complaints" "$( echo "$complaints" | grep ' outlet: ' )" \
   "held by a kernel driver"
is "the chip before them is shown" "$( temperature inlet )" 25.0
is "the chip between them is shown" "$( temperature asic )" 30.0
is "the held chip keeps its registers" "$( peek 0x49 2 ) $( peek 0x49 3 )" "0x5555 0x5555"

release 0x49
status outlet
is "the chip is shown when it has been released" "exit $exit_status, $( temperature outlet )" "exit 0, 40.0"
stop_server
