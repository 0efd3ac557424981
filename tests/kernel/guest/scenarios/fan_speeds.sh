# quillonctl and the kernel's own driver take the same tachometer for the same speed.

# Debian's kernel has no driver for an EMC2305. The one fan of an EMC2103 has the same registers at the same
# numbers as the second fan of an EMC2305. A count has its bits 12 to 5 in register 0x4e and 4 to 0 from bit 7
# of 0x4f on, and bits 6 to 5 of 0x42 tell the multiplier: 2 * 3932160 / 983 is 8000 rpm.
start_server
while read -r config high low rpm; do
   for chip in 0x2c 0x2d; do
      poke_byte $chip 0x42 "$config"
      poke_byte $chip 0x4e "$high"
      poke_byte $chip 0x4f "$low"
   done
   status fan2
   is "quillonctl takes $high $low with $config for $rpm rpm" "exit $exit_status, $( value fan2 rpm )" \
      "exit 0, $rpm"
   # A driver that is new has nothing in its cache.
   hold 0x2d emc2103
   is "the kernel takes $high $low with $config for $rpm rpm" "$( of_kernel 0x2d fan1_input )" "$rpm"
   release 0x2d
done <<END
0x2b 0x1e 0xb8    8000
0x2b 0x1e 0xbf    8000
0x0b 0x3d 0x70    2000
0x4b 0x51 0xe8    6001
0x6b 0x0d 0x30   74543
0x2b 0xff 0xf8     960
0x0b 0x00 0x08 3932160
END

poke_byte 0x2c 0x32 0x2b
poke_byte 0x2c 0x3e 0x18
poke_byte 0x2c 0x3f 0x90
poke_byte 0x2c 0x72 0x0b
poke_byte 0x2c 0x7e 0x3d
poke_byte 0x2c 0x7f 0x70
status fan1 fan5
is "each fan has its registers" "exit $exit_status, $( value fan1 rpm ) $( value fan5 rpm )" \
   "exit 0, 10005 2000"

poke_byte 0x2c 0x4e 0
poke_byte 0x2c 0x4f 7
status fan2
is "a tachometer that counts nothing is a failure" "exit $exit_status, $( value fan2 rpm )" "exit 1, null"
contains "the failure has its status" "$( object fan2 )" QL_STATUS_DEVICE_ERROR
stop_server
