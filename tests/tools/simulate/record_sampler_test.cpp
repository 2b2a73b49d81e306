// The records that the data generator draws.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "studies.h"

namespace Hovar::Simulate {
namespace {

TEST(RecordSamplerTest, OutcomeFollowsWhatWasPresentExceptWherePlanted) {
  for (const std::int32_t warnings : {0, 1, 7, 500, 20000}) {
    Options options = Everything();
    options.warnings = warnings;
    std::int32_t planted = 0;
    for (const Record& record : Records(DrawStudyModel(options), options)) {
      const bool anySet = std::count(record.indicators.begin(), record.indicators.end(), 1) > 0;
      ASSERT_EQ(anySet, record.poa);
      ASSERT_EQ(record.poa && !record.outcome, record.planted);
      ASSERT_FALSE(record.planted && record.indicatorHidden);
      planted += record.planted ? 1 : 0;
    }
    EXPECT_EQ(planted, warnings);
  }
}

TEST(RecordSamplerTest, EveryIndicatorIsUsed) {
  const Options options = Everything();
  std::array<std::int64_t, 3> counts{};
  std::int64_t present = 0;
  for (const Record& record : Records(DrawStudyModel(options), options)) {
    present += record.poa ? 1 : 0;
    for (std::size_t k = 0; k < counts.size(); ++k) {
      counts[k] += record.indicators[k];
    }
  }
  for (const std::int64_t count : counts) {
    ExpectShare(count, present, 1.0 / 3.0 + 2.0 / 3.0 * 0.25, "an indicator where P = 1");
  }
}

TEST(RecordSamplerTest, WithoutIndicatorsNothingIsPresentOnAdmission) {
  Options options = Everything();
  options.indicators = 0;
  options.warnings = 0;
  options.missingP = 0.0;
  std::int64_t outcomes = 0;
  for (const Record& record : Records(DrawStudyModel(options), options)) {
    ASSERT_FALSE(record.poa);
    outcomes += record.outcome ? 1 : 0;
  }
  EXPECT_GT(outcomes, 0);
}

TEST(RecordSamplerTest, NeverSeenVariableHasNoSetXCell) {
  Options options = Everything();
  const StudyModel model = DrawStudyModel(options);
  ASSERT_TRUE(model.neverSeen.has_value());
  const std::size_t j = *model.neverSeen;
  EXPECT_EQ(j, 2u);
  std::int64_t signs = 0;
  for (const Record& record : Records(model, options)) {
    ASSERT_EQ(record.x[j], 0);
    signs += record.z[j];
  }
  ExpectShare(signs, options.records, model.variables[j].zPrevalence, "its Z cells");
}

TEST(RecordSamplerTest, DependentVariableIsHalfTheSumOfItsTests) {
  const Options options = Everything();
  const StudyModel model = DrawStudyModel(options);
  ASSERT_TRUE(model.dependent.has_value());
  const std::size_t first = model.dependent->first;
  ASSERT_EQ(first + DependentGroup::kSize, model.variables.size());
  std::array<std::int64_t, 3> pairs{};
  for (const Record& record : Records(model, options)) {
    const int d = record.x[first];
    const int a = record.x[first + 1];
    const int b = record.x[first + 2];
    const int c = record.x[first + 3];
    ASSERT_EQ(2 * d, a + b + c) << "record " << record.index;
    pairs[0] += a * b;
    pairs[1] += a * c;
    pairs[2] += b * c;
  }
  // All three pairs occur, so no further relation holds among a, b and c.
  for (std::size_t k = 0; k < pairs.size(); ++k) {
    ExpectShare(pairs[k], options.records, model.dependent->pairs[k], "a pair");
  }
}

TEST(RecordSamplerTest, CellsHaveTheProbabilitiesOfTheModel) {
  // Includes the dependent group, whose Z cells are drawn the other way round.
  const Options options = Everything();
  const StudyModel model = DrawStudyModel(options);
  const std::vector<Record> records = Records(model, options);
  for (std::size_t j = 0; j < model.variables.size(); ++j) {
    std::array<std::int64_t, 2> trials{};
    std::array<std::int64_t, 2> set{};
    for (const Record& record : records) {
      ++trials[record.z[j]];
      set[record.z[j]] += record.x[j];
    }
    const Variable& variable = model.variables[j];
    ExpectShare(trials[1], options.records, variable.zPrevalence, "Z" + variable.name);
    ExpectShare(set[0], trials[0], variable.xGivenZ0, "X" + variable.name + " where Z = 0");
    ExpectShare(set[1], trials[1], variable.xGivenZ1, "X" + variable.name + " where Z = 1");
  }
}

TEST(RecordSamplerTest, SixtyVariablesHaveAboutSixSetCells) {
  // The mean over ten models, whose probabilities are drawn: a wide range, not a bound of chance.
  Options options;
  options.records = 2000;
  options.variables = 60;
  double cells = 0.0;
  for (options.seed = 1; options.seed <= 10; ++options.seed) {
    for (const Record& record : Records(DrawStudyModel(options), options)) {
      cells += std::accumulate(record.x.begin(), record.x.end(), 0);
    }
  }
  EXPECT_NEAR(cells / 20000.0, 6.0, 1.0);
}

// The sums that are the score of a logistic model at its true coefficients: of the residuals
// (response minus probability) in total, by variable and by hospital. Each is centred, with the
// summed p * (1 - p) as its variance.
class Score {
 public:
  explicit Score(const StudyModel& model)
      : sums_(1 + model.variables.size() + model.hospitals.size()) {}

  void Add(const Record& record, bool response, double probability) {
    AddTo(0, response, probability);
    for (std::size_t j = 0; j < record.x.size(); ++j) {
      if (record.x[j] != 0) {
        AddTo(1 + j, response, probability);
      }
    }
    AddTo(1 + record.x.size() + static_cast<std::size_t>(record.hospital), response, probability);
  }

  void ExpectZero() const {
    for (std::size_t k = 0; k < sums_.size(); ++k) {
      EXPECT_LE(std::abs(sums_[k].residual), Bound(sums_[k].variance)) << "sum " << k;
    }
  }

 private:
  struct Sum {
    double residual = 0.0;
    double variance = 0.0;
  };

  void AddTo(std::size_t k, bool response, double probability) {
    sums_[k].residual += (response ? 1.0 : 0.0) - probability;
    sums_[k].variance += probability * (1.0 - probability);
  }

  std::vector<Sum> sums_;
};

TEST(RecordSamplerTest, ResponsesFollowTheirLogisticModels) {
  Options options = Everything();
  options.records = 200000;
  options.hospitalEffect = 1.0;
  const StudyModel model = DrawStudyModel(options);
  Score poaScore(model);
  Score outcomeScore(model);
  RecordSampler sampler(model, options);
  for (Record record; sampler.Next(record);) {
    if (record.planted) {
      continue;
    }
    double poa = model.poaIntercept;
    double outcome =
        model.outcomeIntercept + model.hospitals[static_cast<std::size_t>(record.hospital)].effect;
    for (std::size_t j = 0; j < record.x.size(); ++j) {
      poa += record.x[j] * model.variables[j].poaCoefficient;
      outcome += record.x[j] * model.variables[j].outcomeCoefficient;
    }
    poaScore.Add(record, record.poa, 1.0 / (1.0 + std::exp(-poa)));
    if (!record.poa) {
      outcomeScore.Add(record, record.outcome, 1.0 / (1.0 + std::exp(-outcome)));
    }
  }
  poaScore.ExpectZero();
  outcomeScore.ExpectZero();
}

TEST(RecordSamplerTest, EventRatesAreThoseOfTheField) {
  // The rates depend on the coefficients drawn: these are wide ranges, not bounds of chance.
  Options options;
  options.records = 20000;
  for (const std::int32_t variables : {6, 12, 60}) {
    options.variables = variables;
    std::int64_t outcomes = 0;
    std::int64_t present = 0;
    for (const Record& record : Records(DrawStudyModel(options), options)) {
      outcomes += record.outcome ? 1 : 0;
      present += record.poa ? 1 : 0;
    }
    EXPECT_GT(outcomes, 2000) << variables;  // 10 %
    EXPECT_LT(outcomes, 5000) << variables;  // 25 %
    EXPECT_GT(outcomes - present, 1000) << variables;
    EXPECT_GT(present, 500) << variables;
  }
}

}  // namespace
}  // namespace Hovar::Simulate
