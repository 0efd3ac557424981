# The speed that quillonctl asks a fan for arrives in the chip as its part of 255.

for register in 0x20 0x30 0x40 0x50 0x60 0x70; do
   poke_byte 0x2c $register 0x55
done

start_server
# Of at most 20000 rpm: 10000 are 127.5 of 255, 20000 all of it, 5000 are 63.75, and what is below one is cut
# off.
while read -r fan rpm register drive; do
   ctl fan "$fan" rpm "$rpm"
   is "$rpm rpm of $fan in register $register" "exit $exit_status, $( peek_byte 0x2c "$register" )" \
      "exit 0, $drive"
done <<END
fan1 10000 0x30 0x7f
fan2 20000 0x40 0xff
fan5  5000 0x70 0x3f
fan1    79 0x30 0x01
fan1    78 0x30 0x00
END
is "the chip has been configured" "$( peek_byte 0x2c 0x20 )" 0x00
is "the other fans keep their drive" "$( peek_byte 0x2c 0x50 ) $( peek_byte 0x2c 0x60 )" "0x55 0x55"

ctl fan fan1 rpm 20001
is "a speed that the fan does not have is refused" "exit $exit_status, $( peek_byte 0x2c 0x30 )" \
   "exit 2, 0x00"

# 2 * 3932160 / 1966 is 4000 rpm.
poke_byte 0x2c 0x32 0x2b
poke_byte 0x2c 0x3e 0x3d
poke_byte 0x2c 0x3f 0x70
ctl fan fan1 rpm
is "the speed is the tachometer's" "exit $exit_status, $( value fan1 rpm )" "exit 0, 4000"
stop_server
