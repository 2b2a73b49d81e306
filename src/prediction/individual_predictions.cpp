#include "prediction/individual_predictions.h"

#include <algorithm>

#include "foundation/io/standard_writers.h"
#include "mcmc/imputation_passes.h"
#include "mcmc/imputation_sweep.h"
#include "messages/output_lines.h"

namespace Hovar {
namespace {

/// The coefficients that predict, one entry per column.
class Predictor {
 public:
  Predictor(const DataSet& dataSet, const RegressionResults& results)
      : data_(dataSet),
        yGivenZ_(EstimateVector(results.Block(Model::kYGivenZ))),
        yGivenX_(EstimateVector(results.Block(Model::kYGivenX))),
        yGivenXWithoutP_(EstimateVector(results.Block(Model::kYGivenXWithoutP))),
        yGivenXWithoutPMcmc_(EstimateVector(results.Block(Model::kYGivenXWithoutPMcmc))),
        pGivenX_(EstimateVector(results.Block(Model::kPGivenX))),
        scratch_(dataSet.variableCount) {}

  /// What does not depend on imputed values.
  void Store(IndividualPredictions& predictions, std::int32_t record) {
    const auto columns = Vell::SetColumns(data_.z.Row(record), scratch_.Span());
    predictions.yGivenZ[record] = Logistic(LinearPredictor(yGivenZ_, columns));
  }

  /// Adds one pass of what does.
  void Add(IndividualPredictions& sums, std::int32_t record) {
    const auto columns = Vell::SetColumns(data_.x.Row(record), scratch_.Span());
    const double p = data_.p.Value(record) ? 1.0 : 0.0;
    sums.yGivenX[record] += Logistic(LinearPredictor(yGivenX_, columns));
    sums.yGivenXWithoutP[record] += (1 - p) * Logistic(LinearPredictor(yGivenXWithoutP_, columns));
    sums.yGivenXWithoutPMcmc[record] +=
        (1 - p) * Logistic(LinearPredictor(yGivenXWithoutPMcmc_, columns));
    sums.pGivenX[record] += Logistic(LinearPredictor(pGivenX_, columns));
    sums.pGivenAll[record] += p;
  }

 private:
  const DataSet& data_;
  Vell::Vector yGivenZ_;
  Vell::Vector yGivenX_;
  Vell::Vector yGivenXWithoutP_;
  Vell::Vector yGivenXWithoutPMcmc_;
  Vell::Vector pGivenX_;
  Vell::IndexVector scratch_;
};

void Divide(IndividualPredictions& sums, std::int32_t record, double passes) {
  sums.yGivenX[record] /= passes;
  sums.yGivenXWithoutP[record] /= passes;
  sums.yGivenXWithoutPMcmc[record] /= passes;
  sums.pGivenX[record] /= passes;
  sums.pGivenAll[record] /= passes;
}

}  // namespace

void IndividualPredictions::Resize(std::int32_t records) {
  for (Vell::Vector* column :
       {&yGivenZ, &yGivenX, &yGivenXWithoutP, &yGivenXWithoutPMcmc, &pGivenX, &pGivenAll}) {
    column->Resize(records);
  }
}

void ComputeIndividualPredictions(IndividualPredictions& predictions, DataSet& dataSet,
                                  const RegressionResults& results, const McmcSettings& settings) {
  Vell::IO::StandardOutput().WriteMessage(Messages::kLines.individualPredictions);
  predictions.Resize(dataSet.recordCount);
  ImputationPasses passes(dataSet, results, settings);
  passes.RunBurnin();

  Predictor predictor(dataSet, results);
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    predictor.Store(predictions, i);
    predictor.Add(predictions, i);
  }
  for (std::int32_t pass = 1; pass < passes.Steps(); ++pass) {
    passes.Run(pass);
    for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
      if (dataSet.recordHasMissing.Get(i)) {
        predictor.Add(predictions, i);
      }
    }
  }
  const double count = std::max(passes.Steps(), 1);
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    if (dataSet.recordHasMissing.Get(i)) {
      Divide(predictions, i, count);
    }
  }
}

}  // namespace Hovar
