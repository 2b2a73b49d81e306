#include "data/column_elimination.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "support/allocation_fault.h"
#include "support/data_sets.h"
#include "support/matrices.h"
#include "support/outcome.h"
#include "support/seeded_random.h"

namespace {

using Hovar::DataSet;
using Testing::Describe;
using Testing::Elements;
using Testing::MakeDataSet;
using Testing::MakeIndexVector;
using Testing::MakeMatrix;
using Testing::Observe;
using Testing::Outcome;
using Testing::Texts;

using Indices = std::vector<std::int32_t>;
using Names = std::vector<std::string>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kTolerance = 1e-9;

const std::string kStage1 = "Eliminating Z zero columns\n";
const std::string kStage2 = "Eliminating X zero columns\n";
const std::string kStage3 = "Eliminating dependent Z columns\n";
const std::string kStage4 = "Eliminating dependent X columns P = 0\n";

/// The log lines of a removal.
std::string RemovalLines(const std::string& names, int variables, int complete, int completeP0) {
  return "Eliminating columns:\n" + names + "Number of variables: " + std::to_string(variables) +
         "\nCounting non missing records:\nNumber of non-missing records: " +
         std::to_string(complete) +
         "\nNumber of non-missing records with P = 0: " + std::to_string(completeP0) + "\n";
}

/// The rank of 0/1 rows, by elimination modulo a prime. Exact: a minor of such a matrix with 16
/// columns is at most 17^8.5 / 2^16 < 500,000 (Hadamard), so none vanishes only modulo the prime.
std::int32_t RankModuloPrime(std::vector<std::vector<std::uint64_t>> rows) {
  constexpr std::uint64_t kPrime = 2'147'483'647;
  const auto inverse = [](std::uint64_t a) {  // a^(prime - 2)
    std::uint64_t result = 1;
    for (std::uint64_t e = kPrime - 2; e != 0; e >>= 1, a = a * a % kPrime) {
      result = (e & 1) != 0 ? result * a % kPrime : result;
    }
    return result;
  };
  std::size_t rank = 0;
  for (std::size_t column = 0; !rows.empty() && column < rows[0].size(); ++column) {
    std::size_t pivot = rank;
    while (pivot < rows.size() && rows[pivot][column] == 0) {
      ++pivot;
    }
    if (pivot == rows.size()) {
      continue;
    }
    std::swap(rows[rank], rows[pivot]);
    const std::uint64_t scale = inverse(rows[rank][column]);
    for (std::size_t i = rank + 1; i < rows.size(); ++i) {
      const std::uint64_t factor = rows[i][column] * scale % kPrime;
      for (std::size_t j = column; j < rows[i].size(); ++j) {
        rows[i][j] = (rows[i][j] + (kPrime - factor) * rows[rank][j]) % kPrime;
      }
    }
    ++rank;
  }
  return static_cast<std::int32_t>(rank);
}

std::int32_t RankOfZ(const DataSet& data) {
  std::vector<std::vector<std::uint64_t>> rows;
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    auto& row = rows.emplace_back();
    for (std::int32_t j = 0; j < data.variableCount; ++j) {
      row.push_back(data.z.Get(i, j) ? 1 : 0);
    }
  }
  return RankModuloPrime(rows);
}

/// Over the complete records with P = 0.
std::int32_t RankOfX(const DataSet& data) {
  std::vector<std::vector<std::uint64_t>> rows;
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    if (data.IsCompleteWithoutP(i)) {
      auto& row = rows.emplace_back();
      for (std::int32_t j = 0; j < data.variableCount; ++j) {
        row.push_back(data.x.Value(i, j) ? 1 : 0);
      }
    }
  }
  return RankModuloPrime(rows);
}

// In the data sets of these tests all columns are independent except where it is said.

/// Four variables over eight records; all eight rows of three cells, so 1, a, b, c are independent.
std::string IndependentTriple(std::int32_t row) {
  return {"01"[row >> 2 & 1], "01"[row >> 1 & 1], "01"[row & 1]};
}

DataSet MakeFromCells(const std::function<std::string(std::int32_t)>& pzx, std::int32_t records) {
  std::string text;
  for (std::int32_t i = 0; i < records; ++i) {
    text += "A " + std::to_string(i % 2) + " " + pzx(i) + "\n";
  }
  return MakeDataSet(text);
}

TEST(EliminateColumnsTest, IndependentColumnsStay) {
  DataSet data = MakeFromCells(
      [](std::int32_t i) { return "0 " + IndependentTriple(i) + " " + IndependentTriple(7 - i); },
      8);
  const std::string before = Describe(data);
  const Outcome outcome = Observe([&] { EliminateColumns(data, kTolerance); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.log, kStage1 + kStage2 + kStage3 + kStage4);
  EXPECT_EQ(outcome.output, outcome.log) << "no rank check without a removal";
  EXPECT_EQ(Describe(data), before);
  EXPECT_EQ(data.variableCount, 4);
}

TEST(EliminateColumnsTest, ZeroZColumnGoesWithItsXColumn) {
  // Z2 is 0 everywhere; X2 is not.
  DataSet data = MakeDataSet(
      "A 1 0 00 01\n"
      "A 1 0 10 10\n"
      "A 0 0 00 00\n"
      "B 1 1 10 1.\n");
  const Outcome outcome = Observe([&] { EliminateColumns(data, kTolerance); });
  EXPECT_EQ(outcome.Failure(), "");
  // Without X2 the last record is complete.
  EXPECT_EQ(outcome.log, kStage1 + RemovalLines("Z2, X2\n", 2, 4, 3) + kStage2 + kStage3 + kStage4);
  EXPECT_EQ(outcome.output, outcome.log);
  EXPECT_EQ(Describe(data), "A 1 0 0 0\nA 1 0 1 1\nA 0 0 0 0\nB 1 1 1 1\n");
  EXPECT_EQ(Texts(data.zNames), (Names{"ZIntercept", "Z1"}));
  EXPECT_EQ(Texts(data.xNames), (Names{"XIntercept", "X1"}));
  EXPECT_EQ(data.variableCount, 2);
  EXPECT_EQ(data.completeCount, 4);
}

TEST(EliminateColumnsTest, XColumnThatIsZeroInAllCompleteRecordsGoesWithItsZColumn) {
  // X1 is 1 only where a cell is missing, X3 only in a missing cell's value bit.
  DataSet data = MakeDataSet(
      "A 1 0 100 010\n"
      "A 1 0 010 000\n"
      "A 0 0 001 010\n"
      "B 1 . 000 110\n"
      "B 1 0 000 11.\n"
      "B 1 0 000 00*\n");
  const Outcome outcome = Observe([&] { EliminateColumns(data, kTolerance); });
  EXPECT_EQ(outcome.Failure(), "");
  // Without X3 two more records are complete.
  EXPECT_EQ(outcome.log,
            kStage1 + kStage2 + RemovalLines("Z1, X1\nZ3, X3\n", 2, 5, 5) + kStage3 + kStage4);
  EXPECT_EQ(Describe(data), "A 1 0 0 1\nA 1 0 1 0\nA 0 0 0 1\nB 1 . 0 1\nB 1 0 0 1\nB 1 0 0 0\n");
}

TEST(EliminateColumnsTest, DependentZColumnGoesAndTheRankIsChecked) {
  // Rows of a, b, c, d with d = (a + b + c) / 2: the null vector is (0, 1, 1, 1, -2), so d has
  // clearly the largest weight. X has no dependency in d's absence.
  DataSet data = MakeDataSet(
      "A 1 0 0000 0000\n"
      "A 1 0 1101 1000\n"
      "A 0 0 1011 0100\n"
      "A 0 0 0111 0011\n"
      "B 1 0 0000 1101\n"
      "B 0 0 1101 1010\n");
  const Outcome outcome = Observe([&] { EliminateColumns(data, kTolerance); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.log, kStage1 + kStage2 + kStage3 + RemovalLines("Z4, X4\n", 4, 6, 6) + kStage4);
  EXPECT_EQ(outcome.output, kStage1 + kStage2 + kStage3 + RemovalLines("Z4, X4\n", 4, 6, 6) +
                                "Check rank\n" + kStage4);
  EXPECT_EQ(Texts(data.zNames), (Names{"ZIntercept", "Z1", "Z2", "Z3"}));
}

TEST(EliminateColumnsTest, DependentXColumnAmongCompleteRecordsWithoutPGoesAndTheRankIsChecked) {
  // X4 = (X1 + X2 + X3) / 2 in the first six records; the rest would break that, but they are
  // incomplete or have P = 1. Z has no dependency.
  DataSet data = MakeDataSet(
      "A 1 0 0000 0000\n"
      "A 1 0 1000 1101\n"
      "A 0 0 0100 1011\n"
      "A 0 0 0010 0111\n"
      "B 1 0 0001 0000\n"
      "B 0 0 1100 1101\n"
      "B 1 1 0110 1110\n"
      "B 1 . 0011 0001\n"
      "B 1 0 0101 .100\n");
  const Outcome outcome = Observe([&] { EliminateColumns(data, kTolerance); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.log, kStage1 + kStage2 + kStage3 + kStage4 + RemovalLines("Z4, X4\n", 4, 7, 6));
  EXPECT_EQ(outcome.output, outcome.log + "Check rank\n");
}

TEST(EliminateColumnsTest, ColumnThatIsZeroOnlyWithoutPGoesInTheLastStage) {
  DataSet data = MakeDataSet(
      "A 1 0 00 00\n"
      "A 1 0 10 10\n"
      "A 0 0 01 00\n"
      "B 1 1 00 01\n");
  const Outcome outcome = Observe([&] { EliminateColumns(data, kTolerance); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.log, kStage1 + kStage2 + kStage3 + kStage4 + RemovalLines("Z2, X2\n", 2, 4, 3));
  EXPECT_EQ(outcome.output, outcome.log + "Check rank\n");
}

TEST(EliminateColumnsTest, OneOfTwoIdenticalXColumnsGoesAndNeverTheIntercept) {
  DataSet data = MakeFromCells(
      [](std::int32_t i) {
        const std::string x = IndependentTriple(i);
        return "0 " + IndependentTriple(i) + "1 " + x + x[1];
      },
      8);
  // Z4 is always 1, as is the intercept: it is the one to go, though both are as good.
  const Outcome outcome = Observe([&] { EliminateColumns(data, kTolerance); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(Texts(data.zNames), (Names{"ZIntercept", "Z1", "Z2", "Z3"}));

  data = MakeFromCells(
      [](std::int32_t i) {
        const std::string cells = IndependentTriple(i);
        return "0 " + cells + (i == 3 ? "1 " : "0 ") + cells + cells[1];
      },
      8);
  EXPECT_EQ(Observe([&] { EliminateColumns(data, kTolerance); }).Failure(), "");
  EXPECT_EQ(data.variableCount, 4);
  EXPECT_EQ(RankOfX(data), 4);
  const Names names = Texts(data.xNames);
  EXPECT_EQ(names[0], "XIntercept");
  EXPECT_EQ(
      std::count(names.begin(), names.end(), "X2") + std::count(names.begin(), names.end(), "X4"),
      1);
}

TEST(EliminateColumnsTest, InterceptStaysWhenOthersAddUpToIt) {
  // X1 + X2 + X3 = 1 in every record.
  DataSet data = MakeFromCells(
      [](std::int32_t i) {
        const std::vector<std::string> x = {"100", "010", "001"};
        return "0 " + IndependentTriple(i) + " " + x[static_cast<std::size_t>(i % 3)];
      },
      8);
  EXPECT_EQ(Observe([&] { EliminateColumns(data, kTolerance); }).Failure(), "");
  EXPECT_EQ(data.variableCount, 3);
  EXPECT_EQ(Texts(data.xNames)[0], "XIntercept");
  EXPECT_EQ(RankOfX(data), 3);
}

TEST(EliminateColumnsTest, LoggedOrderIsThatOfThePivots) {
  // Two dependencies: X4 = (X1 + X2 + X3) / 2 and X8 = (X5 + X6 + X7) / 2. Each null vector has its
  // largest weight on X4 or X8, and which of them comes first is for the pivoting to say.
  const std::vector<std::string> triples = {"0000", "1101", "1011", "0111"};
  std::string text;
  for (std::size_t i = 0; i < 16; ++i) {
    std::string z = "00000000";
    z[i % 8] = i < 8 ? '1' : '0';
    text += "A " + std::to_string(i % 2) + " 0 " + z + " " + triples[i % 4] + triples[i / 4] + "\n";
  }
  DataSet data = MakeDataSet(text);
  Vell::Matrix counts(9, 9);
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    for (std::int32_t j = 0; j < 9; ++j) {
      for (std::int32_t k = 0; k < 9; ++k) {
        counts(j, k) += data.x.Value(i, j) && data.x.Value(i, k) ? 1 : 0;
      }
    }
  }
  Indices pivots = Elements(Hovar::FindDependentColumns(counts, kTolerance));
  std::string lines;
  for (const std::int32_t j : pivots) {
    lines += "Z" + std::to_string(j) + ", X" + std::to_string(j) + "\n";
  }
  const Outcome outcome = Observe([&] { EliminateColumns(data, kTolerance); });
  EXPECT_EQ(outcome.log, kStage1 + kStage2 + kStage3 + kStage4 + RemovalLines(lines, 7, 16, 16));
  std::sort(pivots.begin(), pivots.end());
  EXPECT_EQ(pivots, (Indices{4, 8}));
}

TEST(EliminateColumnsTest, NoCompleteRecordRemovesEveryVariable) {
  DataSet data = MakeDataSet(
      "A 1 . 0 1\n"
      "A 1 0 1 .\n");
  const Outcome outcome = Observe([&] { EliminateColumns(data, kTolerance); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.log, kStage1 + kStage2 +
                             RemovalLines("ZIntercept, XIntercept\nZ1, X1\n", 0, 1, 1) + kStage3 +
                             kStage4);
  EXPECT_EQ(data.variableCount, 0);
  EXPECT_EQ(data.zNames.Count(), 0);
  EXPECT_EQ(data.x.Columns(), 0);
}

TEST(EliminateColumnsTest, NoCompleteRecordWithoutPIsAnError) {
  DataSet data = MakeDataSet(
      "A 1 1 0 1\n"
      "A 1 1 1 0\n"
      "A 0 . 1 0\n");
  const Outcome outcome = Observe([&] { EliminateColumns(data, kTolerance); });
  EXPECT_EQ(outcome.Failure(), "Exception: Error in eliminating dependent columns");
  EXPECT_EQ(outcome.log, kStage1 + kStage2 + kStage3 + kStage4);
}

// 40 rows with a in 4 of them and b in 3 others. Among the singular values of the counts
//   40 4 3
//    4 4 0     the smallest is 0.065 and the second 0.0904 times the largest,
//    3 0 3
// and b has the largest weight in the vector of the smallest. Without b the counts (40 4; 4 4) have
// the ratio 0.08806. A tolerance between the two last ratios removes one column and is then not
// met.
std::string RareColumns(std::int32_t row) { return row < 4 ? "10" : row < 7 ? "01" : "00"; }
constexpr double kUnmetTolerance = 0.09;

/// Independent fair columns: ratios 0.0985 and 0.157.
std::string FairColumns(std::int32_t row) { return {"01"[row & 1], "01"[row >> 1 & 1]}; }

TEST(EliminateColumnsTest, RankThatIsStillNotMaximalInZIsAnError) {
  DataSet data = MakeFromCells(
      [](std::int32_t i) { return "0 " + RareColumns(i) + " " + FairColumns(i); }, 40);
  const Outcome outcome = Observe([&] { EliminateColumns(data, kUnmetTolerance); });
  EXPECT_EQ(outcome.Failure(), "Exception: Rank is not maximal");
  EXPECT_EQ(outcome.output,
            kStage1 + kStage2 + kStage3 + RemovalLines("Z2, X2\n", 2, 40, 40) + "Check rank\n");
}

TEST(EliminateColumnsTest, RankThatIsStillNotMaximalInXIsAnError) {
  DataSet data = MakeFromCells(
      [](std::int32_t i) { return "0 " + FairColumns(i) + " " + RareColumns(i); }, 40);
  const Outcome outcome = Observe([&] { EliminateColumns(data, kUnmetTolerance); });
  EXPECT_EQ(outcome.Failure(), "Exception: Rank is not maximal");
  EXPECT_EQ(outcome.output, kStage1 + kStage2 + kStage3 + kStage4 +
                                RemovalLines("Z2, X2\n", 2, 40, 40) + "Check rank\n");
}

TEST(EliminateColumnsTest, ToleranceThatNoSingularValueExceedsIsAnError) {
  // Every column then counts as dependent, the intercept too, which cannot be removed.
  for (const double tolerance : {1.0, 2.0, kInfinity, kNaN}) {
    DataSet data = MakeFromCells(
        [](std::int32_t i) { return "0 " + FairColumns(i) + " " + FairColumns(i); }, 40);
    const Outcome outcome = Observe([&] { EliminateColumns(data, tolerance); });
    EXPECT_EQ(outcome.Failure(), "Exception: Error in eliminating dependent columns") << tolerance;
    EXPECT_EQ(outcome.log, kStage1 + kStage2 + kStage3) << tolerance;
  }
}

TEST(EliminateColumnsTest, NegativeToleranceRemovesNoDependentColumn) {
  DataSet data = MakeFromCells(
      [](std::int32_t i) {
        const std::string cells = IndependentTriple(i);
        return "0 " + cells + cells[1] + " " + cells + "1";
      },
      8);
  const Outcome outcome = Observe([&] { EliminateColumns(data, -1); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.output, kStage1 + kStage2 + kStage3 + kStage4);
  EXPECT_EQ(data.variableCount, 5);
}

/// A random data set of 60 records in which the columns 1 to 6 of one side are random and 7 to 9
/// are planted: a copy of column 1, the complement of column 2, and the larger of the columns 3 and
/// 4 where they exclude each other. The columns of the other side are random.
DataSet MakePlanted(Testing::SeededRandom& random, bool isPlantedInX) {
  std::string text;
  for (std::int32_t i = 0; i < 60; ++i) {
    std::string planted;
    std::string other;
    for (std::int32_t j = 0; j < 9; ++j) {
      planted += "01"[random.Integer(0, 1)];
      other += "01"[random.Integer(0, 1)];
    }
    const bool isInFit = !isPlantedInX || i % 4 != 0;
    if (isInFit) {
      planted[3] = planted[2] == '1' ? '0' : planted[3];
      planted[6] = planted[0];
      planted[7] = planted[1] == '1' ? '0' : '1';
      planted[8] = std::max(planted[2], planted[3]);
    }
    text += std::string("A ") + (isInFit ? "0 0 " : "1 1 ") +
            (isPlantedInX ? other + " " + planted : planted + " " + other) + "\n";
  }
  return MakeDataSet(text);
}

TEST(EliminateColumnsTest, KeptColumnsAreIndependentAndSpanWhatAllSpanned) {
  for (const bool isPlantedInX : {false, true}) {
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
      Testing::SeededRandom random(seed);
      SCOPED_TRACE(random.Text() + (isPlantedInX ? ", X" : ", Z"));
      const DataSet before = MakePlanted(random, isPlantedInX);
      const std::int32_t rank = isPlantedInX ? RankOfX(before) : RankOfZ(before);
      DataSet data = before;
      ASSERT_EQ(Observe([&] { EliminateColumns(data, kTolerance); }).Failure(), "");
      EXPECT_EQ(data.variableCount, rank);
      EXPECT_EQ(isPlantedInX ? RankOfX(data) : RankOfZ(data), rank);
      // Names and both columns of a variable have moved together.
      const Names zNames = Texts(data.zNames);
      const Names xNames = Texts(data.xNames);
      EXPECT_EQ(zNames[0], "ZIntercept");
      for (std::int32_t j = 1; j < data.variableCount; ++j) {
        const std::string number = zNames[static_cast<std::size_t>(j)].substr(1);
        EXPECT_EQ(xNames[static_cast<std::size_t>(j)], "X" + number);
        for (std::int32_t i = 0; i < data.recordCount; ++i) {
          EXPECT_EQ(data.z.Get(i, j), before.z.Get(i, std::stoi(number)));
          EXPECT_EQ(data.x.Value(i, j), before.x.Value(i, std::stoi(number)));
        }
      }
    }
  }
}

/// What column elimination gives back of each variable, as "stage reason column names", with the
/// column that it equals after the reason.
Names EliminatedVariables(DataSet& data, double tolerance = kTolerance) {
  constexpr std::array kStages = {"zero Z", "zero X", "dependent Z", "dependent X"};
  constexpr std::array kReasons = {"zero", "constant", "equal", "dependent"};
  Vell::GrowableArray<Hovar::EliminatedVariable> eliminated;
  Observe([&] { EliminateColumns(eliminated, data, tolerance); });
  Names texts;
  for (const Hovar::EliminatedVariable& variable : eliminated) {
    std::string& text = texts.emplace_back(kStages.at(static_cast<std::size_t>(variable.stage)));
    text += std::string(": ") + kReasons.at(static_cast<std::size_t>(variable.reason));
    text += variable.equalColumn < 0 ? "" : " " + std::to_string(variable.equalColumn);
    text += ": " + std::to_string(variable.column) + " ";
    text.append(variable.zName.View()).append(" ").append(variable.xName.View());
  }
  return texts;
}

TEST(EliminatedVariablesTest, ColumnsAreThoseBeforeTheElimination) {
  // Z2 is 0, X4 is 0, Z5 is 1 and X7 is 1 where P is 0; the others are independent.
  DataSet data = MakeFromCells(
      [](std::int32_t i) {
        const std::string z = IndependentTriple(i);
        const std::string x = IndependentTriple(7 - i);
        return std::string("0 ") + z[0] + "0" + z[1] + z[0] + "1" + z[2] + z[2] + " " +  //
               x[0] + x[1] + x[1] + "0" + x[0] + x[2] + "1";
      },
      8);
  // Z7 repeats Z6. Either may go; with Z6 gone, X7 goes as constant later.
  Names eliminated = EliminatedVariables(data);
  ASSERT_EQ(eliminated.size(), data.variableCount == 3 ? 5U : 4U);
  EXPECT_EQ(eliminated[0], "zero Z: zero: 2 Z2 X2");
  EXPECT_EQ(eliminated[1], "zero X: zero: 4 Z4 X4");
  const Names inZ(eliminated.begin() + 2, eliminated.begin() + 4);
  const std::string constant = "dependent Z: constant: 5 Z5 X5";
  EXPECT_EQ(std::count(inZ.begin(), inZ.end(), constant), 1);
  if (data.variableCount == 3) {
    EXPECT_EQ(std::count(inZ.begin(), inZ.end(), "dependent Z: equal 7: 6 Z6 X6"), 1);
    EXPECT_EQ(eliminated[4], "dependent X: constant: 7 Z7 X7");
  } else {
    EXPECT_EQ(std::count(inZ.begin(), inZ.end(), "dependent Z: equal 6: 7 Z7 X7"), 1);
  }
}

TEST(EliminatedVariablesTest, XIsJudgedInTheCompleteRecordsWithoutP) {
  // X1 is 1 only where P is 1.
  DataSet zero = MakeDataSet("A 1 0 00 01\nA 0 0 10 00\nA 1 0 01 01\nA 0 0 11 00\nA 1 1 11 11\n");
  EXPECT_EQ(EliminatedVariables(zero), Names{"dependent X: zero: 1 Z1 X1"});
  // X1 is 0 only where P is 1.
  DataSet constant =
      MakeDataSet("A 1 0 00 11\nA 0 0 10 10\nA 1 0 01 11\nA 0 0 11 10\nA 1 1 11 01\n");
  EXPECT_EQ(EliminatedVariables(constant), Names{"dependent X: constant: 1 Z1 X1"});
  // X2 = 1 - X1 but where a cell is missing, and either may go.
  DataSet dependent =
      MakeDataSet("A 1 0 00 01\nA 0 0 10 10\nA 1 0 01 01\nA 0 0 11 10\nA 1 0 11 1.\n");
  const Names names = EliminatedVariables(dependent);
  EXPECT_TRUE(names == Names{"dependent X: dependent: 1 Z1 X1"} ||
              names == Names{"dependent X: dependent: 2 Z2 X2"})
      << names.at(0);
}

TEST(EliminatedVariablesTest, TheInterceptIsColumn0) {
  DataSet data = MakeDataSet("A 1 0 1 .\n");
  EXPECT_EQ(EliminatedVariables(data).at(0), "zero X: zero: 0 ZIntercept XIntercept");
}

TEST(EliminatedVariablesTest, ThoseBeforeAnErrorAreKnown) {
  DataSet data = MakeDataSet("A 1 0 0110 1100\nA 0 0 0010 0110\nA 1 0 0001 1011\n");
  Vell::GrowableArray<Hovar::EliminatedVariable> eliminated;
  ASSERT_NE(Observe([&] { EliminateColumns(eliminated, data, kInfinity); }).Failure(), "");
  ASSERT_EQ(eliminated.Size(), 1);
  EXPECT_EQ(eliminated[0].column, 1);
  EXPECT_EQ(eliminated[0].stage, Hovar::EliminationStage::kZeroZ);
}

/// The values of a column of Z, or of X in the complete records without P.
std::vector<bool> CellsOf(const DataSet& data, std::int32_t column, bool isX) {
  std::vector<bool> cells;
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    if (!isX) {
      cells.push_back(data.z.Get(i, column));
    } else if (data.IsCompleteWithoutP(i)) {
      cells.push_back(data.x.Value(i, column));
    }
  }
  return cells;
}

TEST(EliminatedVariablesTest, ReasonsAreThoseOfTheCells) {
  using Hovar::EliminationReason;
  using Hovar::EliminationStage;
  std::set<EliminationReason> seen;
  for (const bool isPlantedInX : {false, true}) {
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
      Testing::SeededRandom random(seed);
      SCOPED_TRACE(random.Text() + (isPlantedInX ? ", X" : ", Z"));
      const DataSet before = MakePlanted(random, isPlantedInX);
      DataSet data = before;
      Vell::GrowableArray<Hovar::EliminatedVariable> eliminated;
      ASSERT_EQ(Observe([&] { EliminateColumns(eliminated, data, kTolerance); }).Failure(), "");
      ASSERT_EQ(eliminated.Size(), before.variableCount - data.variableCount);
      for (const Hovar::EliminatedVariable& variable : eliminated) {
        EXPECT_EQ(variable.zName.View(), "Z" + std::to_string(variable.column));
        EXPECT_EQ(variable.xName.View(), "X" + std::to_string(variable.column));
        const bool isX = variable.stage == EliminationStage::kDependentX;
        const auto cells = CellsOf(before, variable.column, isX);
        EXPECT_EQ(variable.reason == EliminationReason::kZero,
                  std::count(cells.begin(), cells.end(), true) == 0);
        EXPECT_EQ(variable.reason == EliminationReason::kConstant,
                  std::count(cells.begin(), cells.end(), false) == 0);
        EXPECT_EQ(variable.reason == EliminationReason::kEqual, variable.equalColumn > 0);
        if (variable.equalColumn > 0) {
          EXPECT_NE(variable.equalColumn, variable.column);
          EXPECT_EQ(cells, CellsOf(before, variable.equalColumn, isX));
        }
        seen.insert(variable.reason);
      }
    }
  }
  EXPECT_TRUE(seen.count(EliminationReason::kEqual) == 1 &&
              seen.count(EliminationReason::kDependent) == 1);
}

TEST(EliminateColumnsTest, EachFailingAllocationEndsInOutOfMemory) {
  const DataSet data = MakeDataSet(
      "A 1 0 0000 0000\nA 1 0 1000 1101\nA 0 0 0100 1011\nA 0 0 0010 0111\nB 1 . 0001 000.\n");
  Testing::ExpectOutOfMemoryAtEachAllocation([&] {
    DataSet copy = data;
    EliminateColumns(copy, kTolerance);
  });
}

TEST(RemoveColumnsTest, NamesAreLoggedInTheOrderOfTheList) {
  DataSet data = MakeDataSet(
      "A 1 0 0110 1.01\n"
      "A 1 * 1000 010*\n");
  const Outcome outcome = Observe([&] { RemoveColumns(data, MakeIndexVector({4, 2})); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.log, RemovalLines("Z4, X4\nZ2, X2\n", 3, 1, 1));
  EXPECT_EQ(outcome.output, outcome.log);
  EXPECT_EQ(Texts(data.zNames), (Names{"ZIntercept", "Z1", "Z3"}));
  EXPECT_EQ(Texts(data.xNames), (Names{"XIntercept", "X1", "X3"}));
  EXPECT_EQ(Describe(data), "A 1 0 01 10\nA 1 * 10 00\n");
}

TEST(RemoveColumnsTest, EmptyListChangesNothingButCounts) {
  DataSet data = MakeDataSet("A 1 0 01 10\n");
  const Outcome outcome = Observe([&] { RemoveColumns(data, {}); });
  EXPECT_EQ(outcome.log, RemovalLines("", 3, 1, 1));
  EXPECT_EQ(Describe(data), "A 1 0 01 10\n");
}

TEST(RemoveColumnsTest, IndexOutsideIsRefused) {
  for (const Indices& columns : std::vector<Indices>{{3}, {-1}, {1, 3}, {1, -1}, {1000}}) {
    DataSet data = MakeDataSet("A 1 0 01 10\n");
    EXPECT_EQ(Observe([&] { RemoveColumns(data, MakeIndexVector(columns)); }).Failure(),
              "InvalidArgumentException: Index out of range")
        << columns[0];
  }
}

TEST(FindZeroColumnsTest, ZColumnIsZeroWhenNoRecordSetsIt) {
  struct Case {
    std::string text;
    Indices expected;
  };
  for (const Case& c : std::vector<Case>{
           {"A 1 0 0110 0000\nA 1 0 0100 0000\n", {1, 4}},
           {"A 1 0 1111 0000\n", {}},
           {"A 1 0 0000 1111\n", {1, 2, 3, 4}},
           // Missing cells elsewhere do not matter.
           {"A 1 . 10 ..\n", {2}},
           {"A 1 0 - -\n", {}},
       }) {
    EXPECT_EQ(Elements(Hovar::FindZeroColumns(MakeDataSet(c.text).z)), c.expected) << c.text;
  }
}

TEST(FindZeroColumnsTest, XColumnIsZeroWhenNoCompleteRecordSetsIt) {
  struct Case {
    std::string text;
    Indices expected;
  };
  for (const Case& c : std::vector<Case>{
           {"A 1 0 0000 0110\nA 1 0 0000 0100\n", {1, 4}},
           {"A 1 0 0000 1111\n", {}},
           // Only the first record is complete.
           {"A 1 0 000 010\nA 1 . 000 111\nA 1 0 000 1.1\nA 1 0 000 1*1\n", {1, 3}},
           // P = 1 does not exclude a record here.
           {"A 1 0 00 01\nA 1 1 00 10\n", {}},
           // No complete record: not even the intercept is set.
           {"A 1 . 00 11\n", {0, 1, 2}},
           {"A 1 . - -\n", {0}},
       }) {
    const DataSet data = MakeDataSet(c.text);
    EXPECT_EQ(Elements(Hovar::FindZeroColumns(data.x, data.recordHasMissing)), c.expected)
        << c.text;
  }
}

TEST(FindDependentColumnsTest, ColumnWithTheLargestWeightInTheNullSpaceIsFound) {
  // Counts A^T A of rows of (1, a, b, c, d) with 2 d = a + b + c: 000 0, 110 1, 101 1, 011 1.
  const Vell::Matrix counts = MakeMatrix(5, 5, {4, 2, 2, 2, 3,  //
                                                2, 2, 1, 1, 2,  //
                                                2, 1, 2, 1, 2,  //
                                                2, 1, 1, 2, 2,  //
                                                3, 2, 2, 2, 3});
  EXPECT_EQ(Elements(Hovar::FindDependentColumns(counts, kTolerance)), Indices{4});
}

TEST(FindDependentColumnsTest, ColumnThatIsZeroIsFound) {
  const Vell::Matrix counts = MakeMatrix(3, 3, {5, 0, 2, 0, 0, 0, 2, 0, 2});
  EXPECT_EQ(Elements(Hovar::FindDependentColumns(counts, kTolerance)), Indices{1});
}

TEST(FindDependentColumnsTest, IndependentColumnsGiveNothing) {
  EXPECT_EQ(Elements(Hovar::FindDependentColumns(MakeMatrix(2, 2, {4, 2, 2, 2}), kTolerance)),
            Indices{});
  EXPECT_EQ(Elements(Hovar::FindDependentColumns(MakeMatrix(1, 1, {3}), kTolerance)), Indices{});
  EXPECT_EQ(Elements(Hovar::FindDependentColumns(Vell::Matrix(), kTolerance)), Indices{});
}

TEST(FindDependentColumnsTest, InterceptIsNeverFound) {
  // Column 1 equals the intercept.
  EXPECT_EQ(Elements(Hovar::FindDependentColumns(MakeMatrix(2, 2, {4, 4, 4, 4}), kTolerance)),
            Indices{1});
}

TEST(FindDependentColumnsTest, SingularValueAtTheThresholdCountsAsZero) {
  // Singular values 4 and 1; column 1 belongs to the smaller one.
  const Vell::Matrix counts = MakeMatrix(2, 2, {4, 0, 0, 1});
  EXPECT_EQ(Elements(Hovar::FindDependentColumns(counts, 0.25)), Indices{1});
  EXPECT_EQ(Elements(Hovar::FindDependentColumns(counts, std::nextafter(0.25, 0))), Indices{});
}

TEST(FindDependentColumnsTest, DependentInterceptIsAnError) {
  // Every column is dependent, but only those after the intercept can be found: with p columns the
  // null space has p dimensions and its basis without the first coordinate only p - 1.
  const auto failure = [](const Vell::Matrix& counts, double tolerance) {
    return Observe([&] { Hovar::FindDependentColumns(counts, tolerance); }).Failure();
  };
  const std::string expected = "Exception: Error in eliminating dependent columns";
  EXPECT_EQ(failure(Vell::Matrix(1, 1), kTolerance), expected);
  EXPECT_EQ(failure(Vell::Matrix(2, 2), kTolerance), expected);
  EXPECT_EQ(failure(Vell::Matrix(3, 3), kTolerance), expected);
  for (const double tolerance : {1.0, 1.5, kInfinity, kNaN}) {
    EXPECT_EQ(failure(MakeMatrix(2, 2, {4, 2, 2, 2}), tolerance), expected) << tolerance;
  }
}

TEST(IsFullRankTest, EverySingularValueMustExceedTheThreshold) {
  struct Case {
    Vell::Matrix counts;
    double tolerance;
    bool expected;
  };
  for (const Case& c : {
           Case{MakeMatrix(2, 2, {4, 2, 2, 2}), kTolerance, true},
           Case{MakeMatrix(2, 2, {4, 4, 4, 4}), kTolerance, false},
           Case{Vell::Matrix(2, 2), kTolerance, false},
           Case{Vell::Matrix(), kTolerance, true},
           // Singular values 4 and 1.
           Case{MakeMatrix(2, 2, {4, 0, 0, 1}), 0.25, false},
           Case{MakeMatrix(2, 2, {4, 0, 0, 1}), std::nextafter(0.25, 0), true},
           // The largest value is never above itself.
           Case{MakeMatrix(1, 1, {3}), 1, false},
           Case{MakeMatrix(1, 1, {3}), kNaN, false},
           Case{MakeMatrix(1, 1, {3}), kInfinity, false},
           Case{MakeMatrix(2, 2, {4, 4, 4, 4}), -1, true},
       }) {
    EXPECT_EQ(Hovar::IsFullRank(c.counts, c.tolerance), c.expected)
        << testing::PrintToString(Testing::Cells(c.counts)) << " tolerance " << c.tolerance;
  }
}

}  // namespace
