# What the scenarios are made of.

map=/test/i2c-map.json
board=/test/board
socket=/run/quillon/smbus.sock
checks=0

# check NAME STATUS ACTUAL EXPECTED: reports a check that has succeeded if the status is 0.
check() {
   checks=$(( checks + 1 ))
   if [ "$2" -eq 0 ]; then
      echo "ok $checks - $scenario: $1"
   else
      echo "not ok $checks - $scenario: $1"
      echo "# found:    $3"
      echo "# expected: $4"
   fi
}

# is NAME ACTUAL EXPECTED
is() {
   [ "$2" = "$3" ]
   check "$1" $? "$2" "$3"
}

# contains NAME TEXT PART
contains() {
   case "$2" in
   *"$3"*) check "$1" 0 ;;
   *) check "$1" 1 "$2" "... $3 ..." ;;
   esac
}

# give_up REASON: ends the test.
give_up() {
   echo "Bail out! $1"
   exit 1
}

# Puts chips of registers that hold what is written on an adapter that knows SMBus alone, no I2C_RDWR: sensors
# at 0x48, 0x49 and 0x4a, fan controllers at 0x2c and 0x2d, the CPLD at 0x30.
load_chips() {
   insmod /modules/i2c-stub.ko chip_addr=0x48,0x49,0x4a,0x2c,0x2d,0x30
   adapter=$( grep -lx "SMBus stub driver" /sys/bus/i2c/devices/i2c-*/name | sed 's,.*/i2c-\(.*\)/name,\1,' )
   allow_access
}

unload_chips() {
   rmmod i2c-stub
}

# Gives the group i2c its access, as Debian's udev rule does, or takes it away.
allow_access() {
   chown root:i2c "/dev/i2c-$adapter"
   chmod 660 "/dev/i2c-$adapter"
}

deny_access() {
   chmod 600 "/dev/i2c-$adapter"
}

# poke CHIP REGISTER WORD and peek CHIP REGISTER, beside all drivers. The low byte of an SMBus word is the
# first on the wire, which a PCT2075 takes for the high one: its 0x1900 is the word 0x0019.
poke() {
   i2cset -f -y "$adapter" "$1" "$2" "$3" w
}

peek() {
   i2cget -f -y "$adapter" "$1" "$2" w
}

# poke_byte CHIP REGISTER BYTE and peek_byte CHIP REGISTER: the same for chips of 8-bit registers.
poke_byte() {
   i2cset -f -y "$adapter" "$1" "$2" "$3" b
}

peek_byte() {
   i2cget -f -y "$adapter" "$1" "$2" b
}

# hold CHIP PART: gives a chip to the kernel's own driver for a part. release CHIP: takes it away again.
hold() {
   echo "$2 $1" >"/sys/bus/i2c/devices/i2c-$adapter/new_device"
}

release() {
   echo "$1" >"/sys/bus/i2c/devices/i2c-$adapter/delete_device"
}

# of_kernel CHIP FILE: what the kernel's driver says of a chip, such as temp1_input, in thousandths of a
# degree, or fan1_input, in revolutions per minute.
of_kernel() {
   cat "/sys/bus/i2c/devices/$adapter-00${1#0x}"/hwmon/hwmon*/"$2"
}

# Starts the server with the map, as a service does: as a user who has the group i2c and no other rights.
start_server() {
   : >/run/server.log
   su quillon -c "exec quillon-smbusd --i2c $map --socket $socket" 2>/run/server.log &
   server=$!
   until grep -q serving /run/server.log; do
      kill -0 "$server" || give_up "the server does not start: $( cat /run/server.log )"
      usleep 20000
   done
}

# Ends the server that was started, which must not have ended in between.
stop_server() {
   kill -TERM "$server"
   wait "$server"
   is "the server ends well" "exit $?, $( grep SIGTERM /run/server.log )" \
      "exit 0, quillon-smbusd: SIGTERM, ending"
   is "the server removes its socket" "$( ls /run/quillon )" ""
}

# ctl COMMAND...: quillonctl. For what it has said there are `exit_status`, `json`, `complaints` and the
# functions below.
ctl() {
   json=$( quillonctl --board "$board" --socket "$socket" --json "$@" 2>/run/complaints )
   exit_status=$?
   complaints=$( cat /run/complaints )
   sed 's/^/# /' /run/complaints
}

# status NAME...: asks quillonctl for objects.
status() {
   ctl status "$@"
}

# object NAME: the JSON object of an object of the board.
object() {
   echo "$json" | sed 's/{"kind"/\n&/g' | grep "\"name\":\"$1\""
}

# value NAME KEY: what stands under a key of it.
value() {
   object "$1" | sed "s/.*\"$2\":\([^,]*\),.*/\1/"
}

# temperature NAME
temperature() {
   value "$1" temperature_celsius
}
