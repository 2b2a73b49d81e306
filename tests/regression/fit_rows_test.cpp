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

/// The records in their order, from their words; the hospitals from the cluster sizes.
std::vector<Record> RecordsOf(const FitRows& rows) {
  std::vector<Record> records;
  std::int32_t hospital = 0;
  std::int32_t hospitalEnd = rows.ClusterSize().Size() > 0 ? rows.ClusterSize()[0] : 0;
  for (std::int32_t block = 0; block < rows.BlockCount(); ++block) {
    const std::uint64_t* words = rows.Words(block, 0);
    for (std::int32_t i = 0; i < rows.BlockSize(block); ++i) {
      const std::int32_t record = FitRows::FirstRecord(block) + i;
      while (record == hospitalEnd) {
        hospitalEnd += rows.ClusterSize()[++hospital];
      }
      std::vector<std::int32_t> columns;
      for (std::int32_t word = 0; word < rows.WordCount(); ++word) {
        Vell::VisitBits(*words++, [&](int bit) { columns.push_back(64 * word + bit); });
      }
      records.emplace_back(hospital, rows.Response(record) == 1.0, columns);
    }
  }
  return records;
}

/// The set columns of the records, from the columns' lists.
std::vector<std::vector<std::int32_t>> ColumnsFromLists(const FitRows& rows) {
  std::vector<std::vector<std::int32_t>> columns(static_cast<std::size_t>(rows.RecordCount()));
  std::int32_t cells = 0;
  for (std::int32_t block = 0; block < rows.BlockCount(); ++block) {
    for (std::int32_t j = 0; j < rows.ColumnCount(); ++j) {
      const auto places = rows.Places(block, j);
      EXPECT_TRUE(std::ranges::is_sorted(places));
      for (const FitRows::Place place : places) {
        columns[static_cast<std::size_t>(FitRows::FirstRecord(block) + place)].push_back(j);
        ++cells;
      }
    }
  }
  EXPECT_EQ(cells, rows.SetCellCount());
  return columns;
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
  return records;
}

// Block borders at 2,048 records, word borders at 64 columns.
TEST(FitRowsTest, HoldsEveryRecordThatTakesPartOnce) {
  Testing::SeededRandom random(5);
  SCOPED_TRACE(random.Text());
  struct Size {
    std::int32_t records;
    std::int32_t covariates;
  };
  FitRows rows;
  for (const Size& size : {Size{1, 20}, Size{2400, 5}, Size{2560, 62}, Size{300, 63}, Size{300, 64},
                           Size{5500, 3}, Size{100, 150}}) {
    SCOPED_TRACE(std::to_string(size.records) + " x " + std::to_string(size.covariates));
    const Hovar::DataSet data = RandomDataSet(random, size.records, size.covariates);
    rows.Collect(Hovar::RowsOfYGivenXWithoutImputedP(data), data.hospitalSize);
    const std::vector<Record> expected = DirectRecordsOf(data);
    EXPECT_EQ(RecordsOf(rows), expected);
    std::vector<std::vector<std::int32_t>> columns;
    std::vector<std::int32_t> sizes(static_cast<std::size_t>(data.hospitalCount));
    for (const Record& record : expected) {
      columns.push_back(std::get<2>(record));
      ++sizes[static_cast<std::size_t>(std::get<0>(record))];
    }
    EXPECT_EQ(ColumnsFromLists(rows), columns);
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
