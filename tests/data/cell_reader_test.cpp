#include "data/cell_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/exceptions/exceptions.h"
#include "linalg/bit_matrix.h"
#include "linalg/ternary_matrix.h"
#include "support/raised.h"
#include "support/seeded_random.h"
#include "support/streams.h"

namespace {

using Hovar::Ternary;

struct Cell {
  std::string text;
  Ternary value;
};

// Plain cells are the most, so that runs of four and single ones alternate in every way.
Cell RandomCell(Testing::SeededRandom& random, bool mayBeMissing) {
  static const std::vector<Cell> kOdd = {
      {" 0", Ternary::kZero},  {"01", Ternary::kOne},  {"+1", Ternary::kOne},
      {"\t1 ", Ternary::kOne}, {"0x", Ternary::kZero}, {"1 2", Ternary::kOne},
      {"-0", Ternary::kZero},  {"1.5", Ternary::kOne}, {"\r0", Ternary::kZero}};
  static const std::vector<Cell> kMissing = {
      {"", Ternary::kMissing}, {" ", Ternary::kMissing}, {"\t \t", Ternary::kMissing}};
  const auto size = [](const auto& list) { return static_cast<int>(list.size()); };
  if (random.Chance(0.05)) {
    return kOdd[static_cast<std::size_t>(random.Integer(0, size(kOdd) - 1))];
  }
  if (mayBeMissing && random.Chance(0.1)) {
    return kMissing[static_cast<std::size_t>(random.Integer(0, size(kMissing) - 1))];
  }
  return random.Chance(0.5) ? Cell{"1", Ternary::kOne} : Cell{"0", Ternary::kZero};
}

struct Row {
  std::string text;
  std::vector<Ternary> values;
};

Row RandomRow(Testing::SeededRandom& random, int cells, bool mayBeMissing) {
  Row row;
  for (int j = 0; j < cells; ++j) {
    const Cell cell = RandomCell(random, mayBeMissing);
    row.text += cell.text + (j + 1 < cells ? "," : "\n");
    row.values.push_back(cell.value);
  }
  return row;
}

// 100,000 bytes of rows, so that a block of the stream ends within a row.
TEST(CellReaderTest, RowsOfTernaryCellsAreReadAsTheirCells) {
  Testing::SeededRandom random(41);
  SCOPED_TRACE(random.Text());
  for (const int cells : {1, 2, 3, 4, 5, 8, 9, 61}) {
    std::string text;
    std::vector<Ternary> expected;
    while (text.size() < 100'000) {
      const Row row = RandomRow(random, cells, true);
      text += row.text;
      expected.insert(expected.end(), row.values.begin(), row.values.end());
    }
    const Testing::InputStream stream(text);
    Vell::TernaryVector packed(static_cast<std::int32_t>(expected.size()));
    Vell::PackedWriter writer(packed.Bytes());
    for (std::size_t first = 0; first < expected.size(); first += static_cast<std::size_t>(cells)) {
      Hovar::ReadTernaryCells(writer, *stream, cells);
    }
    writer.Finish();
    EXPECT_EQ(stream->ReadByte(), Vell::IO::kEndOfStream);
    for (std::int32_t i = 0; i < packed.Size(); ++i) {
      const Ternary value = expected[static_cast<std::size_t>(i)];
      ASSERT_EQ(packed.Value(i), value == Ternary::kOne) << "cell " << i;
      ASSERT_EQ(packed.IsMissing(i), value == Ternary::kMissing) << "cell " << i;
    }
  }
}

TEST(CellReaderTest, RowsOfBinaryCellsAreReadAsTheirCells) {
  Testing::SeededRandom random(43);
  SCOPED_TRACE(random.Text());
  for (const int cells : {1, 3, 4, 6, 61}) {
    std::string text;
    std::vector<Ternary> expected;
    while (text.size() < 100'000) {
      const Row row = RandomRow(random, cells, false);
      text += row.text;
      expected.insert(expected.end(), row.values.begin(), row.values.end());
    }
    const Testing::InputStream stream(text);
    Vell::BitVector packed(static_cast<std::int32_t>(expected.size()));
    Vell::PackedWriter writer(packed.Bytes());
    for (std::size_t first = 0; first < expected.size(); first += static_cast<std::size_t>(cells)) {
      Hovar::ReadBinaryCells(writer, *stream, cells);
    }
    writer.Finish();
    EXPECT_EQ(stream->ReadByte(), Vell::IO::kEndOfStream);
    for (std::int32_t i = 0; i < packed.Size(); ++i) {
      ASSERT_EQ(packed.Get(i), expected[static_cast<std::size_t>(i)] == Ternary::kOne)
          << "cell " << i;
    }
  }
}

/// Reads a row of nine cells with this one at every place, after and before plain ones.
template <typename E>
void ExpectEveryPlaceRaises(const std::string& wrong, const std::string& error) {
  for (int place = 0; place < 9; ++place) {
    std::string text;
    for (int j = 0; j < 9; ++j) {
      text += (j == place ? wrong : "1") + (j < 8 ? "," : "\n");
    }
    SCOPED_TRACE(text);
    const Testing::InputStream stream(text);
    std::vector<std::uint8_t> block(4);
    Vell::PackedWriter writer(block);
    Testing::ExpectRaises<E>(error, [&] { Hovar::ReadBinaryCells(writer, *stream, 9); });
  }
}

TEST(CellReaderTest, OtherNumbersAreInvalidInput) {
  using Vell::Exceptions::InvalidInputException;
  for (const char* number : {"2", "-1", "10", "99999999999999999999"}) {
    ExpectEveryPlaceRaises<InvalidInputException>(number, "Invalid input");
  }
}

TEST(CellReaderTest, OtherTextIsNoNumber) {
  using Vell::Exceptions::IOException;
  for (const char* text : {"a", "\"1\"", "-", ".1"}) {
    ExpectEveryPlaceRaises<IOException>(text, "IO Exception");
  }
}

TEST(CellReaderTest, EmptyBinaryCellIsNoNumber) {
  const Testing::InputStream stream("1,1,1,1,,1\n");
  std::vector<std::uint8_t> block(4);
  Vell::PackedWriter writer(block);
  Testing::ExpectRaises<Vell::Exceptions::IOException>(
      "IO Exception", [&] { Hovar::ReadBinaryCells(writer, *stream, 6); });
}

TEST(CellReaderTest, CellsEndWithTheStream) {
  std::vector<std::uint8_t> block(4);
  {
    const Testing::InputStream stream("1,0");
    Vell::PackedWriter writer(block);
    Hovar::ReadBinaryCells(writer, *stream, 2);
    writer.Finish();
    EXPECT_EQ(block[0], 0x80);
    Testing::ExpectRaises<Vell::Exceptions::EndOfStreamException>(
        "Unexpected end of stream", [&] { Hovar::ReadBinaryCell(*stream); });
    EXPECT_EQ(Hovar::ReadTernaryCell(*stream), Ternary::kMissing);
  }
  const Testing::InputStream stream("\r");
  Testing::ExpectRaises<Vell::Exceptions::EndOfStreamException>(
      "Unexpected end of stream", [&] { Hovar::ReadTernaryCell(*stream); });
}

TEST(CellReaderTest, EmptyCellBeforeCarriageReturnAndLineFeedIsMissing) {
  const Testing::InputStream stream("\r\n \t\r\n1\r\n");
  EXPECT_EQ(Hovar::ReadTernaryCell(*stream), Ternary::kMissing);
  EXPECT_EQ(Hovar::ReadTernaryCell(*stream), Ternary::kMissing);
  EXPECT_EQ(Hovar::ReadTernaryCell(*stream), Ternary::kOne);
  EXPECT_EQ(stream->ReadByte(), Vell::IO::kEndOfStream);
}

}  // namespace
