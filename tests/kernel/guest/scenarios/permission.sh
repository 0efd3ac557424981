# A server that may not use the adapter says so.

poke 0x48 0 0x0019
deny_access
start_server
status inlet
is "quillonctl reports a failure" "$exit_status" 1
contains "inlet has its cause" "$( object inlet )" "not permitted (/dev/i2c-$adapter: Permission denied; put the server's user into the group of this device)"

allow_access
status inlet
is "the chip is shown when access is allowed" "exit $exit_status, $( temperature inlet )" "exit 0, 25.0"
stop_server
