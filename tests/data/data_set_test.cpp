#include "data/data_set.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/data_sets.h"
#include "support/outcome.h"

namespace {

using Hovar::DataSet;
using Testing::MakeDataSet;

TEST(CountNonMissingTest, RecordIsIncompleteWhenPOrAnXCellIsMissing) {
  struct Case {
    std::string cells;  // y p z x
    bool isIncomplete;
  };
  for (const Case& c : std::vector<Case>{
           {"1 0 00 00", false},
           {"1 1 11 11", false},
           {"1 . 00 00", true},
           {"1 * 00 00", true},
           {"1 0 00 .0", true},
           {"1 0 00 1.", true},
           {"1 0 00 0*", true},
           {"1 . 00 ..", true},
       }) {
    const DataSet data = MakeDataSet("A " + c.cells);
    EXPECT_EQ(data.recordHasMissing.Get(0), c.isIncomplete) << c.cells;
    EXPECT_EQ(data.HasIncompleteRecords(), c.isIncomplete) << c.cells;
    EXPECT_EQ(data.hospitalHasMissing.Get(0), c.isIncomplete) << c.cells;
    EXPECT_EQ(data.completeCount, c.isIncomplete ? 0 : 1) << c.cells;
  }
}

TEST(CountNonMissingTest, CompleteRecordsWithoutPAreCounted) {
  const DataSet data = MakeDataSet(
      "A 1 0 0 0\n"
      "A 1 1 0 0\n"
      "A 1 . 0 0\n"
      "A 1 0 0 .\n"
      "B 1 * 0 0\n");
  EXPECT_EQ(data.completeCount, 2);
  EXPECT_EQ(data.completeP0Count, 1);
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    EXPECT_EQ(data.IsCompleteWithoutP(i), i == 0) << i;
  }
  EXPECT_EQ(data.hospitalComplete[0], 2);
  EXPECT_EQ(data.hospitalComplete[1], 0);
  EXPECT_EQ(data.hospitalCompleteP0[0], 1);
  EXPECT_EQ(data.hospitalCompleteP0[1], 0);
}

TEST(CountNonMissingTest, LogsItsCounts) {
  DataSet data = MakeDataSet("A 1 1 0 0\nA 1 0 0 0\nA 0 0 0 0\nB 1 0 0 .\n");
  const Testing::Outcome outcome = Testing::Observe([&] { CountNonMissing(data); });
  EXPECT_EQ(outcome.log,
            "Counting non missing records:\n"
            "Number of non-missing records: 3\n"
            "Number of non-missing records with P = 0: 2\n");
  EXPECT_EQ(outcome.output, outcome.log);
}

TEST(CountNonMissingTest, CountsAnewAfterAChange) {
  DataSet data = MakeDataSet("A 1 0 0 .\nB 1 1 0 0\nB 0 . 0 0\n");
  data.x.SetMissing(0, 1, false);
  data.p.SetValue(1, false);
  CountNonMissing(data);
  EXPECT_FALSE(data.recordHasMissing.Get(0));
  EXPECT_FALSE(data.hospitalHasMissing.Get(0));
  EXPECT_TRUE(data.hospitalHasMissing.Get(1));
  EXPECT_EQ(data.completeCount, 2);
  EXPECT_EQ(data.completeP0Count, 2);
  EXPECT_EQ(data.hospitalComplete[0], 1);
  EXPECT_EQ(data.hospitalCompleteP0[1], 1);
}

}  // namespace
