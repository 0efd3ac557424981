# quillonctl and the kernel's own driver take the same register for the same temperature.

# Bits 15 to 5 of the chip's word count eighths of a degree, the rest is nothing: 0x19e0 is 207 of them, which
# is 25.875, and 0xe6e0 is 201 below zero, -25.125.
start_server
hold 0x49 pct2075
while read -r word degrees thousandths; do
   poke 0x48 0 "$word"
   poke 0x49 0 "$word"
   status inlet
   is "quillonctl takes $word for $degrees degrees" "exit $exit_status, $( temperature inlet )" \
      "exit 0, $degrees"
   is "the kernel takes $word for $degrees degrees" "$( of_kernel 0x49 temp1_input )" "$thousandths"
done <<END
0x0000     0.0         0
0x2000     0.125     125
0x0019    25.0     25000
0x1f19    25.0     25000
0xe019    25.875   25875
0x603c    60.375   60375
0xe07f   127.875  127875
0xe0ff    -0.125    -125
0x80ff    -0.5      -500
0xe0e6   -25.125  -25125
0x00c9   -55.0    -55000
0x0080  -128.0   -128000
END
release 0x49
stop_server
