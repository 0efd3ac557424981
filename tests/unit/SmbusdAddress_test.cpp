#include "smbusd/Address.h"

#include <gtest/gtest.h>

#include <cstdint>

using Smbusd::Address;
using Smbusd::decodeAddress;

namespace {

struct Row {
   const char* name;
   uint64_t word;
   Address address;
};

// Each field alone, with all its bits, and the bits around it.
const Row rows[] = {
   { "nothing", 0, { 0, 0, 0, 0, 4 } },
   { "register", 0x00000000FFFFFFFF, { 0xFFFFFFFF, 0, 0, 0, 4 } },
   { "chip", 0x0000007F00000000, { 0, 0x7F, 0, 0, 4 } },
   { "bus", 0x00003F8000000000, { 0, 0, 0x7F, 0, 4 } },
   { "accelerator", 0x001FC00000000000, { 0, 0, 0, 0x7F, 4 } },
   { "writeNoStopReadCurrent", 0x0020000000000000, { 0, 0, 0, 0, 4 } },
   { "busTimeout", 0x01C0000000000000, { 0, 0, 0, 0, 4 } },
   { "register size 1", 0x0200000000000000, { 0, 0, 0, 0, 1 } },
   { "register size 2", 0x0400000000000000, { 0, 0, 0, 0, 2 } },
   { "register size 3", 0x0600000000000000, { 0, 0, 0, 0, 3 } },
   { "extraDelay", 0x0800000000000000, { 0, 0, 0, 0, 4 } },
   { "writeDelay", 0x3000000000000000, { 0, 0, 0, 0, 4 } },
   { "readDelay", 0xC000000000000000, { 0, 0, 0, 0, 4 } },
   { "chip 0x48 on bus 3, register 0x12", 0x020001C800000012, { 0x12, 0x48, 3, 0, 1 } },
};

} // namespace

TEST( SmbusdAddress, HasEveryFieldAtItsBits ) {
   for ( auto& row : rows ) {
      SCOPED_TRACE( row.name );
      auto address = decodeAddress( row.word );
      EXPECT_EQ( address.reg, row.address.reg );
      EXPECT_EQ( address.chip, row.address.chip );
      EXPECT_EQ( address.bus, row.address.bus );
      EXPECT_EQ( address.accelerator, row.address.accelerator );
      EXPECT_EQ( address.regSize, row.address.regSize );
   }
}
