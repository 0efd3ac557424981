# An adapter may stand in the map by its number.

sed "s/\"SMBus stub driver\"/$adapter/" "$map" >/run/numbered.json
contains "the map has the number" "$( cat /run/numbered.json )" "\"adapter\": $adapter "

poke 0x48 0 0xe0e6
poke 0x48 2 0x5555
map=/run/numbered.json
start_server
status inlet
is "the temperature" "exit $exit_status, $( temperature inlet )" "exit 0, -25.125"
is "the alert" "$( peek 0x48 2 )" 0x802d
stop_server
map=/test/i2c-map.json
