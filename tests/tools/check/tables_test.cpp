#include "tools/check/tables.h"

#include <gtest/gtest.h>

#include "support/files.h"

namespace {

using Hovar::Cell;
using Hovar::CellAt;
using Hovar::QuoteUse;
using Hovar::TableForm;

TEST(CheckTablesTest, AnErrorWithoutWordsOfItsOwnIsToldAsItIs) {
  const Testing::ScratchFolder folder;
  const std::string path = folder.Write("data.csv", "a,b\nc,d\n");
  Hovar::Findings findings;
  AddCommonError(findings, path, {6, "Integer overflow"});
  EXPECT_EQ(findings.Lines(),
            path + ":2:3: error: The program would end here in \"Integer overflow\".\n");
}

/// The number of the field, from 0, in which a reader of two numbers stopped after `read`.
std::size_t FieldOfStop(const std::string& read, const std::string& rest) {
  const Testing::ScratchFolder folder;
  const TableForm form = {QuoteUse::kIgnore, 1, 0b0110};
  return CellAt(folder.Write("f", "h,1,2\n" + read + rest),
                static_cast<std::int64_t>(6 + read.size()), form)
      .field;
}

TEST(CheckTablesTest, ABrokenWordTakesTheCommaBehindIt) {
  for (const char* word :
       {"n,", "na,", "NA,", "-na,", "+n,", " \tnA,", "i,", "In,", "infi,", "-INFINIT,"}) {
    EXPECT_EQ(FieldOfStop("k," + std::string(word), "x\n"), 1U) << word;
  }
  for (const char* word :
       {"nan,", " NaN,", "   nan,", "nano,", "inf,", "-Infinity,", "0,", "-,", ","}) {
    EXPECT_EQ(FieldOfStop("k," + std::string(word), "x\n"), 2U) << word;
  }
  EXPECT_EQ(FieldOfStop("na,", "x,1\n"), 1U) << "no number is read of the first field";
}

TEST(CheckTablesTest, FieldsFarBehindAreNotRead) {
  constexpr TableForm kForm = {QuoteUse::kIgnore, 1, 0x8000'0002U};
  for (const std::size_t field : {1U, 31U}) {
    EXPECT_TRUE(kForm.IsReal(field)) << field;
  }
  for (const std::size_t field : {0U, 2U, 30U, 32U, 33U, 65U}) {
    EXPECT_FALSE(kForm.IsReal(field)) << field;
  }
}

TEST(CheckTablesTest, AStopBeforeTheFirstNumberBelongsToTheRecordBefore) {
  const Testing::ScratchFolder folder;
  const std::string path = folder.Write("f", "h,1\nk,\nl,2\n");
  for (const QuoteUse quotes : {QuoteUse::kIgnore, QuoteUse::kHonour}) {
    const Cell cell = CellAt(path, 7, {quotes, 1, 0b10});
    EXPECT_EQ(cell.field, 1U);
    EXPECT_EQ(cell.place.line, 2);
    EXPECT_EQ(cell.place.column, 3);
    EXPECT_EQ(cell.text, "");
  }
  // Before the first record is none.
  for (const QuoteUse quotes : {QuoteUse::kIgnore, QuoteUse::kHonour}) {
    EXPECT_EQ(CellAt(path, 0, {quotes, 1, 0b10}).place.line, 1);
  }
}

}  // namespace
