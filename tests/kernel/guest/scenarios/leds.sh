# The settings of LEDs arrive in their registers as the codes of their kinds.

start_server
poke_byte 0x30 0x4c 0x55
while read -r led setting register code; do
   poke_byte 0x30 "$register" 0x55
   ctl led "$led" "$setting"
   is "$led $setting in register $register" "exit $exit_status, $( peek_byte 0x30 "$register" )" \
      "exit 0, $code"
done <<END
led.status  good     0x40 0x01
led.status  beacon   0x40 0x0c
led.power   bad      0x41 0x05
led.cloud   warning  0x42 0x05
led.fan     bad      0x43 0x05
led.sfp1    good     0x44 0xa3
led.sfp1    warning  0x44 0x93
led.port1   good     0x80 0x93
led.port48  beacon   0xaf 0xe3
END
is "the port LEDs have been started" "$( peek_byte 0x30 0x4c )" 0x00

while read -r led setting register; do
   poke_byte 0x30 "$register" 0x55
   ctl led "$led" "$setting"
   is "$led has no setting $setting" "exit $exit_status, $( peek_byte 0x30 "$register" )" "exit 1, 0x55"
done <<END
led.status bad     0x40
led.sfp1   bad     0x44
END
stop_server
