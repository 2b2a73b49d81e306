#include "prediction/hospital_predictions.h"

#include <gtest/gtest.h>

#include "models.h"
#include "support/data_sets.h"
#include "support/raised.h"

namespace {

using Hovar::HospitalMeans;
using Testing::MakeDataSet;
using Testing::VectorOf;

struct Aggregated {
  Hovar::HospitalPredictions hospitals;
  std::string output;
};

Aggregated Aggregate(const Hovar::DataSet& dataSet,
                     const Hovar::IndividualPredictions& predictions) {
  Testing::OutputCapture capture;
  Aggregated aggregated;
  Hovar::ComputeHospitalPredictions(aggregated.hospitals, dataSet, predictions);
  aggregated.output = capture.TakeOutput();
  return aggregated;
}

/// Three records of A, one of B; P is missing in the last two.
Hovar::DataSet ThreeAndOne() { return MakeDataSet("A 1 1 - -\nA 0 0 - -\nA 1 . - -\nB 1 * - -\n"); }

Hovar::IndividualPredictions FourPredictions() {
  Hovar::IndividualPredictions predictions;
  predictions.yGivenZ = VectorOf({0.25, 0.5, 0.75, 0.125});
  predictions.yGivenX = VectorOf({1, 2, 3, 4});
  predictions.yGivenXWithoutP = VectorOf({0, 0.5, 0.25, 0.375});
  predictions.yGivenXWithoutPMcmc = VectorOf({0, 1, 0.5, 0.0625});
  predictions.pGivenX = VectorOf({0.5, 0.5, 0.5, 1});
  predictions.pGivenAll = VectorOf({1, 0, 0.25, 0.75});
  return predictions;
}

TEST(HospitalPredictionsTest, EachMeanIsTheSumOverTheRecordsOfTheHospital) {
  const Aggregated aggregated = Aggregate(ThreeAndOne(), FourPredictions());
  EXPECT_EQ(aggregated.output, "Calculating hospital-aggregated predictions\n");
  ASSERT_EQ(aggregated.hospitals.Size(), 2);
  struct Row {
    HospitalMeans::Column column;
    double firstSum;
    double firstCount;
    double second;
    double secondCount;
  };
  const Row rows[] = {
      {HospitalMeans::kY, 2, 3, 1, 1},
      // Y * (1 - E[P|YPXZ]): 1 * 0 + 0 * 1 + 1 * 0.75, and 1 * 0.25
      {HospitalMeans::kYWithoutP, 0.75, 3, 0.25, 1},
      {HospitalMeans::kYGivenZ, 1.5, 3, 0.125, 1},
      {HospitalMeans::kYGivenX, 6, 3, 4, 1},
      {HospitalMeans::kYGivenXWithoutP, 0.75, 3, 0.375, 1},
      {HospitalMeans::kYGivenXWithoutPMcmc, 1.5, 3, 0.0625, 1},
      // Only where P is known: 1 and 0 of the first hospital, nothing of the second.
      {HospitalMeans::kP, 1, 2, 0, 0},
      {HospitalMeans::kPGivenX, 1.5, 3, 1, 1},
      {HospitalMeans::kPGivenAll, 1.25, 3, 0.75, 1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.column);
    const Hovar::HospitalMean& first = aggregated.hospitals[0].columns[row.column];
    const Hovar::HospitalMean& second = aggregated.hospitals[1].columns[row.column];
    EXPECT_EQ(first.mean, row.firstSum / row.firstCount);
    EXPECT_EQ(first.count, row.firstCount);
    EXPECT_EQ(second.mean, row.second);
    EXPECT_EQ(second.count, row.secondCount);
  }
}

TEST(HospitalPredictionsTest, WithoutTheOutcomeNothingIsPredictedWithoutP) {
  Hovar::IndividualPredictions predictions = FourPredictions();
  const Hovar::DataSet dataSet = MakeDataSet("A 0 0 - -\nA 0 . - -\nB 0 0 - -\nC 0 0 - -\n");
  const Aggregated aggregated = Aggregate(dataSet, predictions);
  ASSERT_EQ(aggregated.hospitals.Size(), 3);
  for (const HospitalMeans& hospital : aggregated.hospitals) {
    EXPECT_EQ(hospital.columns[HospitalMeans::kYWithoutP].mean, 0);
    EXPECT_EQ(hospital.columns[HospitalMeans::kY].mean, 0);
  }
}

TEST(HospitalPredictionsTest, NoRecordsGiveNoHospitals) {
  EXPECT_EQ(Aggregate(MakeDataSet(""), {}).hospitals.Size(), 0);
}

}  // namespace
