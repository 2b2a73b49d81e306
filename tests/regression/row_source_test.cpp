#include "regression/row_source.h"

#include <gtest/gtest.h>

#include <string>

#include "support/data_sets.h"

namespace {

using Hovar::DataSet;

/// What a fit reads: for each record that takes part its index, the response and the set columns.
template <Hovar::RowSource Rows>
std::string Describe(const Rows& rows) {
  std::string text;
  for (std::int32_t i = 0; i < rows.RecordCount(); ++i) {
    if (rows.Includes(i)) {
      text += std::to_string(i) + (rows.Response(i) ? ": 1 from" : ": 0 from");
      Vell::VisitBits(rows.SetColumnWord(i, 0), [&](int j) { text += " " + std::to_string(j); });
      text += "\n";
    }
  }
  return text;
}

/// Complete records with each Y and P, and incomplete ones.
DataSet MakeMixedData() {
  return Testing::MakeDataSet(
      "A 1 0 100 011\n"
      "A 0 0 010 000\n"
      "A 1 1 001 110\n"
      "B 1 . 111 101\n"
      "B 1 * 000 010\n"
      "B 0 0 101 1.0\n"
      "B 1 1 011 0*1\n");
}

TEST(RowSourceTest, POfXTakesCompleteRecords) {
  EXPECT_EQ(Describe(RowsOfPGivenX(MakeMixedData())),
            "0: 0 from 0 2 3\n"
            "1: 0 from 0\n"
            "2: 1 from 0 1 2\n");
}

TEST(RowSourceTest, YOfZTakesAllRecords) {
  EXPECT_EQ(Describe(RowsOfYGivenZ(MakeMixedData())),
            "0: 1 from 0 1\n"
            "1: 0 from 0 2\n"
            "2: 1 from 0 3\n"
            "3: 1 from 0 1 2 3\n"
            "4: 1 from 0\n"
            "5: 0 from 0 1 3\n"
            "6: 1 from 0 2 3\n");
}

TEST(RowSourceTest, YOfXTakesCompleteRecords) {
  EXPECT_EQ(Describe(RowsOfYGivenX(MakeMixedData())),
            "0: 1 from 0 2 3\n"
            "1: 0 from 0\n"
            "2: 1 from 0 1 2\n");
}

TEST(RowSourceTest, YOfXWithoutPTakesCompleteRecordsWithPEqualToZero) {
  EXPECT_EQ(Describe(RowsOfYGivenXWithoutP(MakeMixedData())),
            "0: 1 from 0 2 3\n"
            "1: 0 from 0\n");
}

TEST(RowSourceTest, ImputedDataTakeRecordsWhoseValueOfPIsZeroCompleteOrNot) {
  // A missing cell counts as its current value.
  EXPECT_EQ(Describe(RowsOfYGivenXWithoutImputedP(MakeMixedData())),
            "0: 1 from 0 2 3\n"
            "1: 0 from 0\n"
            "3: 1 from 0 1 3\n"
            "5: 0 from 0 1\n");
}

}  // namespace
