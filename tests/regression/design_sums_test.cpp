// The sums of a pass, in every form, against sums over single cells in the records' order: the same
// additions in the same order, so the same bits.

#include "regression/design_sums.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "linalg/bit_matrix.h"
#include "support/seeded_random.h"
#include "support/width_limit.h"

namespace {

using Hovar::BlockValues;
using Hovar::FitRows;

struct Design {
  Vell::BitMatrix cells;
  std::int32_t RecordCount() const { return cells.Rows(); }
  std::int32_t ColumnCount() const { return cells.Columns(); }
  bool Includes(std::int32_t /*record*/) const { return true; }
  bool Response(std::int32_t /*record*/) const { return false; }
  std::uint64_t SetColumnWord(std::int32_t record, std::int32_t word) const {
    return Vell::SetColumnWord(cells.Row(record), word);
  }
};

/// Columns of every density, an empty and a full one among them.
Design RandomDesign(Testing::SeededRandom& random, std::int32_t records, std::int32_t columns) {
  Design design{Vell::BitMatrix(records, columns)};
  for (std::int32_t j = 0; j < columns; ++j) {
    const double density = j % 7 == 0 ? 1 : j % 7 == 1 ? 0 : random.Real(0, 1);
    for (std::int32_t i = 0; i < records; ++i) {
      design.cells.Set(i, j, random.Chance(density));
    }
  }
  return design;
}

BlockValues RandomValues(Testing::SeededRandom& random) {
  BlockValues values;
  for (double& value : values) {
    value = random.Real(-1, 1);
  }
  return values;
}

class DesignSumsTest : public testing::TestWithParam<Vell::VectorWidth> {
 protected:
  void SetUp() override {
    if (Vell::BestVectorWidth() != GetParam()) {
      GTEST_SKIP() << "this processor lacks the instructions";
    }
  }

  /// Calls check(design, rows) for designs of one and of several blocks and words.
  template <typename Check>
  void ForEachDesign(Check check) {
    struct Size {
      std::int32_t records;
      std::int32_t columns;
    };
    for (const Size& size : {Size{1, 1}, Size{5, 8}, Size{300, 9}, Size{2049, 40}, Size{100, 63},
                             Size{4100, 64}, Size{77, 65}, Size{33, 128}, Size{50, 171}}) {
      SCOPED_TRACE(std::to_string(size.records) + " x " + std::to_string(size.columns));
      const Design design = RandomDesign(random_, size.records, size.columns);
      Vell::IndexVector hospitalSize(1);
      hospitalSize[0] = size.records;
      FitRows rows;
      rows.Collect(design, hospitalSize);
      check(design.cells, rows);
    }
  }

  Testing::WidthLimit limit_{GetParam()};
  Testing::SeededRandom random_{29};
};

TEST_P(DesignSumsTest, LinearPredictorsAreSumsOverSetColumns) {
  ForEachDesign([&](const Vell::BitMatrix& cells, const FitRows& rows) {
    Vell::Vector beta(cells.Columns());
    for (double& coefficient : beta) {
      coefficient = random_.Chance(0.2) ? 0 : random_.Real(-2, 2);
    }
    BlockValues values;
    for (std::int32_t i = 0; i < cells.Rows(); ++i) {
      const std::int32_t block = i / FitRows::kBlockSize;
      if (i % FitRows::kBlockSize == 0) {
        Hovar::ComputeLinearPredictors(values, rows, block, beta);
      }
      double expected = 0;
      for (std::int32_t j = 0; j < cells.Columns(); ++j) {
        expected += cells.Get(i, j) ? beta[j] : 0;
      }
      ASSERT_EQ(values[static_cast<std::size_t>(i % FitRows::kBlockSize)], expected) << i;
    }
  });
}

TEST_P(DesignSumsTest, CrossproductsAreSumsOverPairsOfSetColumns) {
  ForEachDesign([&](const Vell::BitMatrix& cells, const FitRows& rows) {
    const std::int32_t columns = cells.Columns();
    Hovar::TriangleSums sums(columns);
    Vell::Vector columnSums(columns);
    Vell::SymmetricMatrix expected(columns);
    Vell::Vector expectedColumnSums(columns);
    for (std::int32_t block = 0; block < rows.BlockCount(); ++block) {
      const BlockValues weights = RandomValues(random_);
      const BlockValues values = RandomValues(random_);
      // Every second block without the sums by column.
      const bool hasColumnSums = block % 2 == 0;
      Hovar::AddCrossproducts(sums, hasColumnSums ? columnSums.Span() : std::span<double>(), rows,
                              block, weights, values);
      for (std::int32_t place = 0; place < rows.BlockSize(block); ++place) {
        const std::int32_t i = FitRows::FirstRecord(block) + place;
        const auto at = static_cast<std::size_t>(place);
        for (std::int32_t j = 0; j < columns; ++j) {
          if (!cells.Get(i, j)) {
            continue;
          }
          expectedColumnSums[j] += hasColumnSums ? values[at] : 0;
          for (std::int32_t k = 0; k <= j; ++k) {
            expected(j, k) += cells.Get(i, k) ? weights[at] : 0;
          }
        }
      }
    }
    Vell::SymmetricMatrix result(columns);
    sums.CopyTo(result);
    for (std::int32_t j = 0; j < columns; ++j) {
      ASSERT_EQ(columnSums[j], expectedColumnSums[j]) << j;
      for (std::int32_t k = 0; k <= j; ++k) {
        ASSERT_EQ(result(j, k), expected(j, k)) << j << ", " << k;
      }
    }
  });
}

TEST_P(DesignSumsTest, CountsAreTheCrossproductsOfEqualWeights) {
  ForEachDesign([&](const Vell::BitMatrix& cells, const FitRows& rows) {
    const std::int32_t columns = cells.Columns();
    BlockValues quarters;
    quarters.fill(0.25);
    BlockValues halves;
    for (double& value : halves) {
      value = random_.Chance(0.4) ? 0.5 : -0.5;
    }
    Hovar::TriangleSums counted(columns);
    Hovar::TriangleSums summed(columns);
    Vell::Vector countedSums(columns);
    Vell::Vector summedSums(columns);
    for (std::int32_t block = 0; block < rows.BlockCount(); ++block) {
      // Every second block without the sums by column.
      const bool hasColumnSums = block % 2 == 0;
      Hovar::AddCrossproductsOfQuarters(
          counted, hasColumnSums ? countedSums.Span() : std::span<double>(), rows, block, halves);
      Hovar::AddCrossproducts(summed, hasColumnSums ? summedSums.Span() : std::span<double>(), rows,
                              block, quarters, halves);
    }
    Vell::SymmetricMatrix countedMatrix(columns);
    Vell::SymmetricMatrix summedMatrix(columns);
    counted.CopyTo(countedMatrix);
    summed.CopyTo(summedMatrix);
    ASSERT_TRUE(std::ranges::equal(countedMatrix.Elements(), summedMatrix.Elements()));
    ASSERT_TRUE(std::ranges::equal(countedSums, summedSums));
  });
}

TEST_P(DesignSumsTest, ColumnSumsAreSumsOverSetColumnsOfPartOfABlock) {
  ForEachDesign([&](const Vell::BitMatrix& cells, const FitRows& rows) {
    const std::int32_t columns = cells.Columns();
    const BlockValues first = RandomValues(random_);
    const BlockValues second = RandomValues(random_);
    const std::int32_t size = rows.BlockSize(0);
    for (const Hovar::BlockPart& part :
         {Hovar::BlockPart{0, 0, size}, Hovar::BlockPart{0, size / 3, size / 2},
          Hovar::BlockPart{0, size - 1, size}}) {
      // A further element after the columns shows that nothing is written there.
      std::vector<double> firstSums(static_cast<std::size_t>(columns) + 1, 0.25);
      std::vector<double> secondSums = firstSums;
      std::vector<double> expectedFirst = firstSums;
      std::vector<double> expectedSecond = firstSums;
      const auto count = static_cast<std::size_t>(columns);
      Hovar::AddColumnSums({std::span(firstSums).first(count), first},
                           {std::span(secondSums).first(count), second}, rows, part);
      for (std::int32_t i = part.begin; i < part.end; ++i) {
        for (std::int32_t j = 0; j < columns; ++j) {
          if (cells.Get(i, j)) {
            expectedFirst[static_cast<std::size_t>(j)] += first[static_cast<std::size_t>(i)];
            expectedSecond[static_cast<std::size_t>(j)] += second[static_cast<std::size_t>(i)];
          }
        }
      }
      ASSERT_EQ(firstSums, expectedFirst);
      ASSERT_EQ(secondSums, expectedSecond);
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Widths, DesignSumsTest,
                         testing::Values(Vell::VectorWidth::kPortable, Vell::VectorWidth::kAvx512));

}  // namespace
