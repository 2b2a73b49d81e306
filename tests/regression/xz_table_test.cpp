#include "regression/xz_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/data_sets.h"
#include "support/outcome.h"

namespace {

using Hovar::ComputeXzTable;
using Hovar::DataSet;
using Testing::MakeDataSet;

TEST(XzTableTest, FractionsOfXAmongRecordsOfEachZ) {
  // Variable 1: Z = 0 in five records, X = 1 in two of them; Z = 1 in three, X = 1 in two.
  // Variable 2: Z = 0 in two, X never 1; Z = 1 in six, X always 1.
  const DataSet data = MakeDataSet(
      "A 1 0 01 01\n"
      "A 1 0 01 11\n"
      "A 0 0 00 10\n"
      "A 0 0 01 01\n"
      "B 1 0 01 01\n"
      "B 1 0 11 11\n"
      "B 0 0 11 11\n"
      "C 0 0 10 00\n");
  EXPECT_EQ(ComputeXzTable(data, 1).probability, (std::array<double, 2>{2.0 / 5, 2.0 / 3}));
  EXPECT_EQ(ComputeXzTable(data, 2).probability, (std::array<double, 2>{0.0, 1.0}));
}

TEST(XzTableTest, RecordsWhoseCellIsMissingAreSkippedAndNoOthers) {
  // Y, P, other cells and their missing marks do not matter. Of variable 1: Z = 0 with X = 1, 0, 0;
  // Z = 1 with X = 1, 0.
  const DataSet data = MakeDataSet(
      "A 1 0 01 1.\n"
      "A 1 . 01 01\n"
      "A 0 0 00 0*\n"
      "A 1 1 01 .1\n"
      "A 1 0 01 *1\n"
      "B 1 1 11 11\n"
      "B 1 * 11 0.\n"
      "B 1 0 10 *0\n");
  EXPECT_EQ(ComputeXzTable(data, 1).probability, (std::array<double, 2>{1.0 / 3, 1.0 / 2}));
}

TEST(XzTableTest, InterceptHasNoRecordWithZEqualToZero) {
  const DataSet data = MakeDataSet("A 1 0 01 01\nA 1 0 10 11\n");
  EXPECT_EQ(Testing::Observe([&] { ComputeXzTable(data, 0); }).Failure(),
            "Exception: Cannot compute XZ table");
}

TEST(XzTableTest, RecordsOfOneZAloneGiveNoTable) {
  for (const std::string text : {
           // Z is always 0, or always 1.
           "A 1 0 0 0\nA 1 0 0 1\n",
           "A 1 0 1 0\nA 1 0 1 1\n",
           // Z varies, but the cells of one class are missing.
           "A 1 0 0 .\nA 1 0 1 1\nA 0 0 1 0\n",
           "A 1 0 0 0\nA 1 0 1 *\nA 0 0 1 .\n",
           // All are missing.
           "A 1 0 0 .\nA 1 0 1 .\n",
       }) {
    const DataSet data = MakeDataSet(text);
    EXPECT_EQ(Testing::Observe([&] { ComputeXzTable(data, 1); }).Failure(),
              "Exception: Cannot compute XZ table")
        << text;
  }
}

}  // namespace
