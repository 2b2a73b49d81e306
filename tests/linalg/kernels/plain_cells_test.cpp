#include "linalg/kernels/plain_cells.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "linalg/bit_matrix.h"
#include "linalg/ternary_matrix.h"
#include "support/seeded_random.h"
#include "support/width_limit.h"

namespace {

/// What a form did: the cells as characters, those that it left of the count, and the rest.
struct Taken {
  std::string cells;  // '0', '1' and '.' for a missing one
  std::int32_t left;
  std::string rest;
  bool operator==(const Taken&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Taken& taken) {
  return stream << taken.cells << " | " << taken.left << " | " << taken.rest;
}

/// One cell after the other, by the definition.
Taken TakeByDefinition(std::string text, std::int32_t count, bool mayBeEmpty) {
  Taken taken{"", count, ""};
  while (taken.left > 0) {
    if (text.starts_with("0,") || text.starts_with("1,")) {
      taken.cells += text[0];
      text.erase(0, 2);
    } else if (mayBeEmpty && text.starts_with(",")) {
      taken.cells += '.';
      text.erase(0, 1);
    } else {
      break;
    }
    --taken.left;
  }
  taken.rest = text;
  return taken;
}

/// The text lies at the end of a block of its own, so that a read beyond it is noticed by
/// AddressSanitizer.
Taken TakeBinary(const std::string& text, std::int32_t count) {
  const std::vector<char> block(text.begin(), text.end());
  Vell::BitVector cells(count);
  Vell::PackedWriter writer(cells.Bytes());
  Taken taken{"", count, ""};
  taken.rest = Vell::TakeBinaryCells(writer, {block.data(), block.size()}, taken.left);
  writer.Finish();
  for (std::int32_t i = 0; i < count - taken.left; ++i) {
    taken.cells += cells.Get(i) ? '1' : '0';
  }
  return taken;
}

Taken TakeTernary(const std::string& text, std::int32_t count) {
  const std::vector<char> block(text.begin(), text.end());
  Vell::TernaryVector cells(count);
  Vell::PackedWriter writer(cells.Bytes());
  Taken taken{"", count, ""};
  taken.rest = Vell::TakeTernaryCells(writer, {block.data(), block.size()}, taken.left);
  writer.Finish();
  for (std::int32_t i = 0; i < count - taken.left; ++i) {
    EXPECT_FALSE(cells.IsMissing(i) && cells.Value(i));
    taken.cells += cells.IsMissing(i) ? '.' : cells.Value(i) ? '1' : '0';
  }
  return taken;
}

class PlainCellsTest : public testing::TestWithParam<Vell::VectorWidth> {
 protected:
  void SetUp() override {
    if (Vell::BestVectorWidth() != GetParam()) {
      GTEST_SKIP() << "this processor lacks the instructions";
    }
  }
  static void Check(const std::string& text, std::int32_t count) {
    ASSERT_EQ(TakeBinary(text, count), TakeByDefinition(text, count, false)) << text;
    ASSERT_EQ(TakeTernary(text, count), TakeByDefinition(text, count, true)) << text;
  }
  Testing::WidthLimit limit_{GetParam()};
};

TEST_P(PlainCellsTest, EveryShortTextIsTakenByTheDefinition) {
  const std::string alphabet = "01,2\n";
  for (int length = 0; length <= 5; ++length) {
    int texts = 1;
    for (int i = 0; i < length; ++i) {
      texts *= 5;
    }
    for (int number = 0; number < texts; ++number) {
      std::string text;
      for (int i = 0, rest = number; i < length; ++i, rest /= 5) {
        text += alphabet[static_cast<std::size_t>(rest % 5)];
      }
      for (const std::int32_t count : {0, 1, 2, 6}) {
        ASSERT_NO_FATAL_FAILURE(Check(text, count));
      }
    }
  }
}

// Cells with one odd byte in every place of several blocks of 64 bytes.
TEST_P(PlainCellsTest, OddByteAnywhereEndsTheTaking) {
  for (const std::string cell : {"0,", "1,", "0,,"}) {
    std::string text;
    while (text.size() < 200) {
      text += cell;
    }
    for (std::size_t place = 0; place < text.size(); ++place) {
      for (const char odd : {'0', ',', '\n', '"', '\0', '\xB0', '2', '/'}) {
        std::string changed = text;
        changed[place] = odd;
        ASSERT_NO_FATAL_FAILURE(Check(changed, 1000));
      }
    }
  }
}

TEST_P(PlainCellsTest, RandomTextsOfAllLengthsAreTakenByTheDefinition) {
  Testing::SeededRandom random(37);
  SCOPED_TRACE(random.Text());
  for (int round = 0; round < 4000; ++round) {
    const double missing = random.Chance(0.3) ? random.Real(0, 1) : 0.03;
    std::string text;
    for (int cell = random.Integer(0, 150); cell > 0; --cell) {
      text += random.Chance(missing) ? "," : random.Chance(0.2) ? "1," : "0,";
    }
    if (random.Chance(0.3)) {
      text += random.Chance(0.5) ? "1\n" : "0";
    }
    ASSERT_NO_FATAL_FAILURE(Check(text, random.Integer(0, 160)));
  }
}

INSTANTIATE_TEST_SUITE_P(Widths, PlainCellsTest,
                         testing::Values(Vell::VectorWidth::kPortable, Vell::VectorWidth::kAvx512));

}  // namespace
