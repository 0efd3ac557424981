# The server may start before its adapter is there.

unload_chips
start_server
contains "the server warns" "$( cat /run/server.log )" "no adapter is called SMBus stub driver as yet"
status inlet
is "quillonctl reports a failure" "$exit_status" 1
contains "inlet has its cause" "$( object inlet )" "no such bus (no adapter has this name; load its driver, or correct the map of adapters)"

load_chips
poke 0x48 0 0x0019
status inlet
is "the chip is shown when the adapter has come" "exit $exit_status, $( temperature inlet )" "exit 0, 25.0"
stop_server
