// The counted C-statistic against its definition, pair by pair.

#include "prediction/c_statistic.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <sstream>

#include "models.h"
#include "support/files.h"
#include "support/pairwise_concordance.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

using Hovar::PredictionRanking;
using Testing::VectorOf;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTiny = std::numeric_limits<double>::denorm_min();

struct Record {
  bool event;
  double prediction;
};

Hovar::Concordance ConcordanceOf(const std::vector<Record>& records) {
  Vell::Vector predictions(static_cast<std::int32_t>(records.size()));
  for (std::int32_t i = 0; i < predictions.Size(); ++i) {
    predictions[i] = records[static_cast<std::size_t>(i)].prediction;
  }
  return PredictionRanking(predictions, predictions.Size())
      .Count([&](std::int32_t i) { return records[static_cast<std::size_t>(i)].event; },
             [](std::int32_t) { return true; });
}

/// Expects the same integer and the same bits from both forms.
void ExpectAsPairwise(const std::vector<Record>& records) {
  std::vector<double> events;
  std::vector<double> others;
  for (const Record& record : records) {
    (record.event ? events : others).push_back(record.prediction);
  }
  const Hovar::Concordance counted = ConcordanceOf(records);
  const bool isSame = counted.score == Testing::PairwiseScore(events, others) &&
                      counted.Statistic() == Testing::PairwiseStatistic(events, others);
  if (!isSame) {
    std::ostringstream text;
    for (const Record& record : records) {
      text << (record.event ? " 1:" : " 0:") << record.prediction;
    }
    ADD_FAILURE() << "score " << counted.score << " for" << text.str();
  }
}

TEST(ConcordanceTest, WithoutPairsThereIsNoStatistic) {
  EXPECT_EQ(ConcordanceOf({}).Statistic(), -1.0);
  for (const bool event : {false, true}) {
    const Hovar::Concordance counted = ConcordanceOf({{event, 0.5}, {event, 0.5}, {event, 0.5}});
    EXPECT_EQ(counted.score, 0);
    EXPECT_EQ(counted.Statistic(), -1.0);
  }
}

TEST(ConcordanceTest, EqualPredictionsGiveOneHalf) {
  EXPECT_EQ(ConcordanceOf({{true, 0.3}, {false, 0.3}, {true, 0.3}, {false, 0.3}, {true, 0.3}})
                .Statistic(),
            0.5);
}

TEST(ConcordanceTest, PerfectSeparationGivesOneAndItsReverseZero) {
  const double larger = std::nextafter(0.5, 1);
  EXPECT_EQ(ConcordanceOf({{true, larger}, {false, 0.5}, {true, larger}, {false, 0.5}}).Statistic(),
            1.0);
  EXPECT_EQ(ConcordanceOf({{false, larger}, {true, 0.5}, {false, larger}, {true, 0.5}}).Statistic(),
            0.0);
}

TEST(ConcordanceTest, ZerosOfBothSignsAreEqualAndANaNIsEqualToNothing) {
  EXPECT_EQ(ConcordanceOf({{true, -0.0}, {false, 0.0}}).score, 1);
  const Hovar::Concordance counted =
      ConcordanceOf({{true, kNaN}, {false, kNaN}, {false, -kInfinity}, {true, 0.1}});
  EXPECT_EQ(counted.score, 2);  // 0.1 against -infinity
  EXPECT_EQ(counted.Statistic(), 2.0 / 8.0);
}

TEST(ConcordanceTest, AllSmallWorldsAgreeWithThePairwiseCount) {
  const std::vector<double> values = {kNaN, -kInfinity, -0.0, 0.0, 1};
  const int kinds = 2 * static_cast<int>(values.size());
  for (int size = 0; size <= 4; ++size) {
    int worlds = 1;
    for (int i = 0; i < size; ++i) {
      worlds *= kinds;
    }
    for (int world = 0; world < worlds; ++world) {
      std::vector<Record> records;
      for (int i = 0, rest = world; i < size; ++i, rest /= kinds) {
        const int kind = rest % kinds;
        records.push_back({kind % 2 == 1, values[static_cast<std::size_t>(kind / 2)]});
      }
      ExpectAsPairwise(records);
    }
  }
}

TEST(ConcordanceTest, RandomInputsWithManyTiesAgreeWithThePairwiseCount) {
  Testing::SeededRandom random(20240611);
  SCOPED_TRACE(random.Text());
  const std::vector<double> nasty = {kNaN, -kNaN, -kInfinity, kInfinity, -0.0,
                                     0.0,  kTiny, -kTiny,     0.5,       std::nextafter(0.5, 1),
                                     1,    -1};
  for (int round = 0; round < 5000; ++round) {
    std::vector<Record> records(static_cast<std::size_t>(random.Integer(0, 40)));
    const int kind = random.Integer(0, 2);
    const double share = random.Real(0, 1);
    for (Record& record : records) {
      record.event = random.Real(0, 1) < share;
      record.prediction = kind == 0   ? nasty[static_cast<std::size_t>(random.Integer(0, 11))]
                          : kind == 1 ? random.Integer(0, 5) / 4.0
                                      : random.Real(0, 1);
    }
    ExpectAsPairwise(records);
  }
}

// Groups of thousands, where the order may be found in another way than in small ones: all bit
// patterns, few values of both signs that are equal or nearly so, many ties.
TEST(ConcordanceTest, LargeInputsAgreeWithThePairwiseCount) {
  Testing::SeededRandom random(7);
  SCOPED_TRACE(random.Text());
  const std::vector<double> nasty = {kNaN, -kInfinity, kInfinity, -0.0,
                                     0.0,  kTiny,      -kTiny,    std::nextafter(-0.5, 0),
                                     -0.5, 1e300,      -1e300,    0.75};
  struct Row {
    int events;
    int others;
  };
  for (const Row& row : {Row{2047, 2048}, Row{2048, 2049}, Row{3000, 1}, Row{700, 3100}}) {
    for (int kind = 0; kind < 4; ++kind) {
      SCOPED_TRACE(std::to_string(row.events) + " " + std::to_string(kind));
      std::vector<Record> records;
      for (int i = 0; i < row.events + row.others; ++i) {
        const double prediction = kind == 0 ? std::bit_cast<double>(random.Word())
                                  : kind == 1
                                      ? nasty[static_cast<std::size_t>(random.Integer(0, 11))]
                                  : kind == 2 ? random.Integer(-20, 20) / 7.0
                                              : random.Real(0, 1);
        records.push_back({i < row.events, prediction});
      }
      ExpectAsPairwise(records);
    }
  }
}

TEST(ConcordanceTest, TheScoreIsCountedIn64Bits) {
  constexpr int kGroup = 200'000;
  std::vector<Record> records;
  for (int i = 0; i < kGroup; ++i) {
    records.push_back({true, 2.0 + i % 3});
    records.push_back({false, 0.0 + i % 2});
  }
  const Hovar::Concordance counted = ConcordanceOf(records);
  EXPECT_EQ(counted.score, 80'000'000'000);
  EXPECT_EQ(counted.Statistic(), 1.0);
}

// Predictions whose leading 32 bits are the same, among others that are far away, in an order that
// is not theirs.
TEST(ConcordanceTest, PredictionsThatDifferInTheirLastBitsAreToldApart) {
  Testing::SeededRandom random(11);
  SCOPED_TRACE(random.Text());
  std::vector<Record> records = {{true, 1e-300}, {false, 1e300}};
  for (int i = 0; i < 3000; ++i) {
    records.push_back({random.Chance(0.5), std::bit_cast<double>(std::bit_cast<std::uint64_t>(0.5) +
                                                                 random.Word() % 1000)});
  }
  ExpectAsPairwise(records);
}

// Thousands of different predictions that fall, descending, into a single step of every width, next
// to one that stretches the step.
TEST(ConcordanceTest, PredictionsCrowdedInOneStepAreToldApart) {
  for (const int crowd : {100, 3000, 40'000}) {
    std::vector<Record> records = {{true, 0}, {false, 1}, {true, 0.5004}};
    for (int i = crowd; i > 0; --i) {
      records.push_back({i % 3 == 0, 0.5 + i * 1e-14});
    }
    std::vector<double> events;
    std::vector<double> others;
    for (const Record& record : records) {
      (record.event ? events : others).push_back(record.prediction);
    }
    EXPECT_EQ(ConcordanceOf(records).score, Testing::PairwiseScore(events, others)) << crowd;
  }
}

TEST(PredictionRankingTest, CountsAnyResponseOfAnyRecordsFromOneRanking) {
  Testing::SeededRandom random(13);
  SCOPED_TRACE(random.Text());
  Vell::Vector predictions(500);
  for (double& prediction : predictions) {
    prediction = random.Chance(0.1) ? kNaN : random.Integer(0, 50) / 64.0;
  }
  const PredictionRanking ranking(predictions, predictions.Size());
  for (int round = 0; round < 20; ++round) {
    std::vector<bool> isEvent;
    std::vector<bool> isIncluded;
    std::vector<double> events;
    std::vector<double> others;
    for (const double prediction : predictions) {
      isEvent.push_back(random.Chance(0.3));
      isIncluded.push_back(random.Chance(0.7));
      if (isIncluded.back()) {
        (isEvent.back() ? events : others).push_back(prediction);
      }
    }
    const Hovar::Concordance counted =
        ranking.Count([&](std::int32_t i) { return isEvent[static_cast<std::size_t>(i)]; },
                      [&](std::int32_t i) { return isIncluded[static_cast<std::size_t>(i)]; });
    EXPECT_EQ(counted.score, Testing::PairwiseScore(events, others));
    EXPECT_EQ(counted.Statistic(), Testing::PairwiseStatistic(events, others));
  }
}

TEST(PredictionRankingTest, ANegativeSizeIsRejected) {
  Testing::ExpectRaises<Vell::Exceptions::InvalidArgumentException>(
      "Invalid argument", [] { PredictionRanking(Vell::Vector(), -1); });
}

TEST(CStatisticTest, AgreesWithTheAreasUnderTheCurveOfAnotherProgram) {
  const auto predictions = Testing::ReadCsv(Testing::ReferenceFile("cstatistic_predictions.csv"));
  const auto expected = Testing::ReadCsv(Testing::ReferenceFile("cstatistic.csv"));
  ASSERT_GT(predictions.size(), 50U);
  ASSERT_EQ(expected.size(), predictions[0].size());
  const auto records = static_cast<std::int32_t>(predictions.size() - 1);
  const auto row = [&](std::int32_t i) -> const std::vector<std::string>& {
    return predictions[static_cast<std::size_t>(i) + 1];
  };
  for (std::size_t column = 1; column < predictions[0].size(); ++column) {
    ASSERT_EQ(expected[column][0], predictions[0][column]);
    Vell::Vector values(records);
    for (std::int32_t i = 0; i < records; ++i) {
      values[i] = std::stod(row(i)[column]);
    }
    const double statistic = Hovar::CStatistic(
        values, records, [&](std::int32_t i) { return row(i)[0] == "1"; },
        [](std::int32_t) { return true; });
    EXPECT_NEAR(statistic, std::stod(expected[column][1]), 1e-14) << expected[column][0];
  }
}

TEST(CStatisticTest, RecordsThatAreNotIncludedAreIgnored) {
  // Without records 1 and 4: events 0.9, 0.2 against 0.5 score 2 of 4.
  const Vell::Vector predictions = VectorOf({0.9, 0.1, 0.5, 0.2, 0.99});
  const bool responses[] = {true, true, false, true, false};
  EXPECT_EQ(Hovar::CStatistic(
                predictions, 5, [&](std::int32_t i) { return responses[i]; },
                [](std::int32_t i) { return i != 1 && i != 4; }),
            0.5);
  EXPECT_EQ(Hovar::CStatistic(
                predictions, 5, [&](std::int32_t i) { return responses[i]; },
                [](std::int32_t) { return false; }),
            -1.0);
}

TEST(CStatisticTest, FurtherPredictionsAreIgnoredAndTooFewRejected) {
  const Vell::Vector predictions = VectorOf({0.9, 0.1, 7, 8});
  const auto isEven = [](std::int32_t i) { return i % 2 == 0; };
  const auto all = [](std::int32_t) { return true; };
  EXPECT_EQ(Hovar::CStatistic(predictions, 2, isEven, all), 1.0);
  Testing::ExpectRaises<Vell::Exceptions::InvalidArgumentException>(
      "Index out of range", [&] { Hovar::CStatistic(predictions, 5, isEven, all); });
}

}  // namespace
