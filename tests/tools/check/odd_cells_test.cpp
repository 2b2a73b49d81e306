#include "tools/check/odd_cells.h"

#include <gtest/gtest.h>

#include "support/files.h"

namespace {

using Hovar::IntegerOf;
using Hovar::IsReadAsWritten;
using Hovar::IsWholeReal;

TEST(CheckOddCellsTest, CellsThatAreReadAsWritten) {
  for (const char* cell : {"", " ", "\t", "\r", "0", "1", " 1", "1 ", "\t0\t", "1\r", "01", "+1",
                           "-0", "000", "1.0", "0.000", "1.", "0x0"}) {
    EXPECT_TRUE(IsReadAsWritten(cell)) << '"' << cell << '"';
  }
}

TEST(CheckOddCellsTest, CellsThatAreReadOtherwise) {
  for (const char* cell : {"0.7", "1.9", "1x", "1 0", "0x1", "1e5", "0-", "1;", "1.0x", "1\"",
                           "4294967297", "4294967296", "-4294967295", "1..", "0,1"}) {
    EXPECT_FALSE(IsReadAsWritten(cell)) << cell;
  }
}

TEST(CheckOddCellsTest, TheNumberThatIsRead) {
  EXPECT_EQ(IntegerOf("0.7"), 0);
  EXPECT_EQ(IntegerOf(" +1x"), 1);
  EXPECT_EQ(IntegerOf("0x1"), 0);
  EXPECT_EQ(IntegerOf("-4294967295"), 1);  // its low 32 bits
}

TEST(CheckOddCellsTest, RealNumbersAsAWhole) {
  for (const char* text : {"0", "-1.5", " 1e-9 ", ".5", "5.", "nan", "-inf", "0x10", "1\r"}) {
    EXPECT_TRUE(IsWholeReal(text)) << text;
  }
  for (const char* text : {"1.5abc", "1e", "1e-", "0.5 0.6", "1.5.2", "0x", "\"1\""}) {
    EXPECT_FALSE(IsWholeReal(text)) << text;
  }
}

constexpr Messages::Pattern kOne{"<field> <holds>, read as <number>."};
constexpr Messages::Pattern kSeveral{"<field> <holds>, read as <number>; <cells> odd."};
constexpr Messages::Pattern kOthers{"<cells> odd, the first one here."};

std::string TenCharacters(int column) { return std::string(9, ' ') + std::to_string(column % 10); }

TEST(CheckOddCellsTest, TheFirstOfAColumnAndTheNumberOfTheOthers) {
  const Testing::ScratchFolder folder;
  const std::string path = folder.Write("f", "h,i\na,b\nc,d\n");
  const auto tell = [](std::size_t field, std::string_view cell) {
    return Hovar::OddCell{std::to_string(field), "holds " + std::string(cell), "7"};
  };
  Hovar::OddCells odd;
  Hovar::Findings none;
  odd.Warn(none, path, tell, {kOne, kSeveral, kOthers});
  EXPECT_EQ(none.Lines(), "");
  odd.Add(1, 6, "b");
  odd.Add(1, 10, "d");
  odd.Add(0, 8, "c");
  Hovar::Findings findings;
  odd.Warn(findings, path, tell, {kOne, kSeveral, kOthers});
  EXPECT_EQ(findings.Lines(), path +
                                  ":2:3: warning: 1 holds b, read as 7; 1 more cell of this "
                                  "column is odd.\n" +
                                  path + ":3:1: warning: 0 holds c, read as 7.\n");
}

TEST(CheckOddCellsTest, ColumnsBehindTheTenthAreToldTogether) {
  const Testing::ScratchFolder folder;
  std::string text;
  for (int i = 0; i < 12; ++i) {
    text += TenCharacters(i);
  }
  const std::string path = folder.Write("f", text);
  Hovar::OddCells odd;
  for (std::size_t field = 0; field < 12; ++field) {
    // The last column's come first in the file, and twice.
    odd.Add(field, static_cast<std::int64_t>(119 - 10 * field), "x");
  }
  odd.Add(11, 119, "x");
  Hovar::Findings findings;
  odd.Warn(findings, path, [](std::size_t, std::string_view) { return Hovar::OddCell(); },
           {kOne, kSeveral, kOthers});
  EXPECT_EQ(findings.Warnings(), 11);
  EXPECT_TRUE(findings.Lines().starts_with(
      path + ":1:10: warning: 3 more cells of 2 other columns are odd, the first one here.\n"))
      << findings.Lines();
}

}  // namespace
