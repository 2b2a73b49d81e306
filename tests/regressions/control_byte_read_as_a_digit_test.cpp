// The byte 0x10 before an x was read as the 0 of a hexadecimal number: both differ by the bit that
// distinguishes small letters from capital ones.

#include <gtest/gtest.h>

#include "foundation/io/number_text.h"

namespace {

TEST(RegressionTest, AControlByteBeginsNoHexadecimalNumber) {
  std::size_t used = 9;
  EXPECT_EQ(Vell::IO::ParseReal("\x10x1", &used), 0.0);
  EXPECT_EQ(used, 0U);
}

}  // namespace
