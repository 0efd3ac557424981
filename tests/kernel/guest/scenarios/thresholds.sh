# The thresholds of objects.json arrive in the chips, where i2cget and the kernel's own driver find them.

for register in 2 3; do
   poke 0x48 $register 0x5555
   poke 0x4a $register 0x5555
done

start_server
status inlet asic
is "quillonctl succeeds" "$exit_status" 0
stop_server

# A threshold counts half degrees from bit 7 of the chip's word on: 45.3 becomes 91 halves, 0x2d80; 80 is 160,
# 0x5000; -10.5 is -21, 0xf580; 127.5 is 255, 0x7f80.
is "the alert of inlet" "$( peek 0x48 2 )" 0x802d
is "the critical threshold of inlet" "$( peek 0x48 3 )" 0x0050
is "the alert of asic" "$( peek 0x4a 2 )" 0x80f5
is "the critical threshold of asic" "$( peek 0x4a 3 )" 0x807f

hold 0x48 pct2075
is "the alert of inlet for the kernel" "$( of_kernel 0x48 temp1_max_hyst )" 45500
is "the critical threshold of inlet for the kernel" "$( of_kernel 0x48 temp1_max )" 80000
release 0x48
hold 0x4a pct2075
is "the alert of asic for the kernel" "$( of_kernel 0x4a temp1_max_hyst )" -10500
is "the critical threshold of asic for the kernel" "$( of_kernel 0x4a temp1_max )" 127500
release 0x4a
