#include "linalg/kernels/packed_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/seeded_random.h"

namespace {

// Pieces of every length in random order, against one bit at a time; now and then the block moves.
TEST(PackedWriterTest, BitsStandInTheOrderInWhichTheyAreAppended) {
  Testing::SeededRandom random(31);
  SCOPED_TRACE(random.Text());
  for (int repetition = 0; repetition < 200; ++repetition) {
    std::vector<bool> bits;
    std::vector<std::uint8_t> block(1000, 0xFF);
    Vell::PackedWriter writer(block);
    const int pieces = random.Integer(0, 119);
    for (int piece = 0; piece < pieces; ++piece) {
      if (random.Chance(0.05)) {
        std::vector<std::uint8_t> other = block;
        block.swap(other);
        writer.MoveTo(block);
        std::fill(other.begin(), other.end(), std::uint8_t{0x55});
      }
      const int count = random.Integer(0, Vell::PackedWriter::kMostBits);
      std::uint64_t value = 0;
      for (int i = 0; i < count; ++i) {
        bits.push_back(random.Chance(0.5));
        value = value << 1 | (bits.back() ? 1 : 0);
      }
      writer.Append(value, count);
    }
    writer.Finish();
    for (std::size_t i = 0; i < (bits.size() + 7) / 8 * 8; ++i) {
      const bool written = (block[i / 8] & 0x80 >> i % 8) != 0;
      ASSERT_EQ(written, i < bits.size() && bits[i]) << "bit " << i << " of " << bits.size();
    }
    EXPECT_EQ(block[(bits.size() + 7) / 8], 0xFF) << "a byte beyond the last one was touched";
  }
}

}  // namespace
