#include "linalg/kernels/packed_columns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "support/matrices.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

using Testing::MakeIndexVector;
using Vell::Exceptions::InvalidArgumentException;

using Block = std::vector<std::uint8_t>;

struct Removal {
  std::int32_t rows;
  std::int32_t columns;
  int bitsPerCell;
  std::vector<std::int32_t> removed;
  Block before;
  Block after;
};

TEST(RemovePackedColumnsTest, EveryRowIsCompactedAndTheRowsMoveTogether) {
  const std::vector<Removal> cases = {
      // two rows of 5 bits without columns 3 and 1: 1(0)1(1)0 0(1)1(0)1 -> 110 011
      {2, 5, 1, {3, 1}, {0b10110'011, 0b01'000000}, {0b110'011'00, 0}},
      // three rows of 3 bits without the first, the middle and the last
      {3, 3, 1, {0}, {0b101'110'01, 0b1'0000000}, {0b01'10'11'00, 0}},
      {3, 3, 1, {1}, {0b101'110'01, 0b1'0000000}, {0b11'10'01'00, 0}},
      {3, 3, 1, {2}, {0b101'110'01, 0b1'0000000}, {0b10'11'01'00, 0}},
      // two rows of 3 pairs without the middle one
      {2, 3, 2, {1}, {0b01'10'11'11, 0b00'10'0000}, {0b01'11'11'10, 0}},
      // every column
      {2, 3, 2, {2, 0, 1}, {0b01'10'11'11, 0b00'10'0000}, {0, 0}},
      // the cell that becomes free is cleared, what follows the cells is left alone
      {1, 4, 1, {0}, {0b1011'1111, 0xFF, 0xFF}, {0b011'0'1111, 0xFF, 0xFF}},
      // no rows
      {0, 4, 1, {0}, {0}, {0}},
  };
  for (const Removal& c : cases) {
    SCOPED_TRACE(testing::Message() << c.rows << " x " << c.columns << " cells of " << c.bitsPerCell
                                    << " bits without " << testing::PrintToString(c.removed));
    Block block = c.before;
    Vell::RemovePackedColumns(block, c.rows, c.columns, c.bitsPerCell, MakeIndexVector(c.removed));
    EXPECT_EQ(block, c.after);
  }
}

TEST(RemovePackedColumnsTest, TheOrderOfTheListIsIrrelevant) {
  Testing::SeededRandom random(45);
  SCOPED_TRACE(random.Text());
  for (int repeat = 0; repeat < 100; ++repeat) {
    const std::int32_t rows = random.Integer(1, 9);
    const std::int32_t columns = random.Integer(1, 40);
    const int bitsPerCell = random.Integer(1, 2);
    Block block(static_cast<std::size_t>(rows * columns * bitsPerCell / 8 + 1));
    for (std::uint8_t& byte : block) {
      byte = random.Byte();
    }
    auto removed = random.Choose(random.Integer(1, columns), columns);
    Block shuffled = block;
    Vell::RemovePackedColumns(shuffled, rows, columns, bitsPerCell, MakeIndexVector(removed));
    std::ranges::sort(removed);
    Vell::RemovePackedColumns(block, rows, columns, bitsPerCell, MakeIndexVector(removed));
    ASSERT_EQ(shuffled, block) << rows << " x " << columns << " cells of " << bitsPerCell
                               << " bits without " << testing::PrintToString(removed);
  }
}

TEST(RemovePackedColumnsTest, AColumnThatIsNotThereIsOutOfRange) {
  constexpr std::int32_t kMinimum = std::numeric_limits<std::int32_t>::min();
  constexpr std::int32_t kMaximum = std::numeric_limits<std::int32_t>::max();
  const std::vector<std::vector<std::int32_t>> lists = {
      {-1}, {3}, {0, 3}, {3, 0}, {2, -1}, {0, 1, 2, 3}, {kMinimum}, {kMaximum}};
  for (const auto& list : lists) {
    for (const int bitsPerCell : {1, 2}) {
      SCOPED_TRACE(testing::PrintToString(list));
      Block block(4);
      Testing::ExpectRaises<InvalidArgumentException>("Index out of range", [&] {
        Vell::RemovePackedColumns(block, 4, 3, bitsPerCell, MakeIndexVector(list));
      });
    }
  }
}

}  // namespace
