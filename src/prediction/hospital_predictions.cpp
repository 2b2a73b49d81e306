#include "prediction/hospital_predictions.h"

#include "foundation/io/standard_writers.h"
#include "messages/output_lines.h"

namespace Hovar {
namespace {

void AddRecord(HospitalMeans& sums, const DataSet& dataSet,
               const IndividualPredictions& predictions, std::int32_t record) {
  const auto add = [&sums](HospitalMeans::Column column, double value) {
    sums.columns[column].mean += value;
    sums.columns[column].count += 1;
  };
  const double y = dataSet.y.Get(record) ? 1.0 : 0.0;
  add(HospitalMeans::kY, y);
  add(HospitalMeans::kYWithoutP, y * (1 - predictions.pGivenAll[record]));
  add(HospitalMeans::kYGivenZ, predictions.yGivenZ[record]);
  add(HospitalMeans::kYGivenX, predictions.yGivenX[record]);
  add(HospitalMeans::kYGivenXWithoutP, predictions.yGivenXWithoutP[record]);
  add(HospitalMeans::kYGivenXWithoutPMcmc, predictions.yGivenXWithoutPMcmc[record]);
  if (!dataSet.p.IsMissing(record)) {
    add(HospitalMeans::kP, dataSet.p.Value(record) ? 1.0 : 0.0);
  }
  add(HospitalMeans::kPGivenX, predictions.pGivenX[record]);
  add(HospitalMeans::kPGivenAll, predictions.pGivenAll[record]);
}

}  // namespace

void ComputeHospitalPredictions(HospitalPredictions& hospitalPredictions, const DataSet& dataSet,
                                const IndividualPredictions& predictions) {
  Vell::IO::StandardOutput().WriteMessage(Messages::kLines.hospitalPredictions);
  hospitalPredictions.Resize(dataSet.hospitalCount);
  for (std::int32_t h = 0; h < dataSet.hospitalCount; ++h) {
    HospitalMeans& means = hospitalPredictions[h];
    for (std::int32_t i = dataSet.hospitalStart[h]; i < dataSet.hospitalStart[h + 1]; ++i) {
      AddRecord(means, dataSet, predictions, i);
    }
    for (HospitalMean& column : means.columns) {
      if (column.count > 0) {
        column.mean /= column.count;
      }
    }
  }
}

}  // namespace Hovar
