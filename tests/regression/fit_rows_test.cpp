#include "regression/fit_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "foundation/exceptions/exceptions.h"
#include "support/data_sets.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

using Hovar::FitRows;

/// A record as a fit sees it.
using Record = std::tuple<std::int32_t, bool, std::vector<std::int32_t>>;

std::vector<Record> RecordsOf(const FitRows& rows) {
  std::vector<Record> records;
  for (std::int32_t block = 0; block < rows.BlockCount(); ++block) {
    std::size_t expected = 0;
    std::size_t length = 0;
    rows.VisitLists(block, [&](std::size_t i, auto setColumns) {
      EXPECT_EQ(i, expected++);
      EXPECT_GE(setColumns.size(), length) << "lists of a block are ordered by length";
      EXPECT_TRUE(std::ranges::is_sorted(setColumns));
      length = setColumns.size();
      const std::int32_t record = block * FitRows::kBlockSize + static_cast<std::int32_t>(i);
      records.emplace_back(rows.Hospital(record), rows.Response(record) == 1.0,
                           std::vector<std::int32_t>(setColumns.begin(), setColumns.end()));
    });
    EXPECT_TRUE(block + 1 == rows.BlockCount() || expected == FitRows::kBlockSize);
  }
  std::ranges::sort(records);
  return records;
}

Hovar::DataSet RandomDataSet(Testing::SeededRandom& random, std::int32_t records,
                             std::int32_t covariates) {
  std::string text;
  for (std::int32_t i = 0; i < records; ++i) {
    text += "H" + std::to_string(i / 70) + (random.Chance(0.5) ? " 1 " : " 0 ") +
            (random.Chance(0.2) ? "1 " : "0 ");
    const double density = random.Real(0, 1);
    for (int matrix = 0; matrix < 2; ++matrix) {
      for (std::int32_t j = 0; j < covariates; ++j) {
        text += random.Chance(density) ? '1' : '0';
      }
      text += matrix == 0 ? ' ' : '\n';
    }
  }
  return Testing::MakeDataSet(text);
}

std::vector<Record> DirectRecordsOf(const Hovar::DataSet& data) {
  std::vector<Record> records;
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    if (data.p.Value(i)) {
      continue;
    }
    std::vector<std::int32_t> columns;
    for (std::int32_t j = 0; j < data.variableCount; ++j) {
      if (data.x.Value(i, j)) {
        columns.push_back(j);
      }
    }
    records.emplace_back(data.recordHospital[i], data.y.Get(i), columns);
  }
  std::ranges::sort(records);
  return records;
}

// Block borders at 512 records; lists of more columns than the unrolled loops have.
TEST(FitRowsTest, HoldsEveryRecordThatTakesPartOnce) {
  Testing::SeededRandom random(5);
  SCOPED_TRACE(random.Text());
  FitRows rows;
  for (const std::int32_t records : {1, 511, 512, 513, 1300}) {
    const Hovar::DataSet data = RandomDataSet(random, records, 20);
    rows.Collect(Hovar::RowsOfYGivenXWithoutImputedP(data), data.hospitalSize);
    EXPECT_EQ(RecordsOf(rows), DirectRecordsOf(data)) << records << " records";
    std::vector<std::int32_t> sizes(static_cast<std::size_t>(data.hospitalCount));
    for (const Record& record : DirectRecordsOf(data)) {
      ++sizes[static_cast<std::size_t>(std::get<0>(record))];
    }
    EXPECT_TRUE(std::ranges::equal(rows.ClusterSize(), sizes));
  }
}

TEST(FitRowsTest, NoRecordTakesPart) {
  const Hovar::DataSet data = Testing::MakeDataSet("A 1 1 0 0\nB 1 1 0 1\n");
  FitRows rows;
  rows.Collect(Hovar::RowsOfYGivenXWithoutImputedP(data), data.hospitalSize);
  EXPECT_EQ(rows.RecordCount(), 0);
  EXPECT_EQ(rows.BlockCount(), 0);
  EXPECT_EQ(rows.ColumnCount(), 2);
}

TEST(FitRowsTest, MoreColumnsThanATriangleCanHaveOverflow) {
  Hovar::DataSet data;
  data.recordCount = 1;
  data.variableCount = 65536;
  data.x = Vell::TernaryMatrix(1, data.variableCount);
  data.p.Resize(1);
  data.hospitalSize.Resize(1);
  FitRows rows;
  Testing::ExpectRaises<Vell::Exceptions::IntegerOverflowException>("Integer overflow", [&] {
    rows.Collect(Hovar::RowsOfYGivenXWithoutImputedP(data), data.hospitalSize);
  });
}

}  // namespace
