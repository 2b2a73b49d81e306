#include "regression/regression_analysis.h"

#include "foundation/io/standard_writers.h"
#include "messages/output_lines.h"
#include "regression/logistic_regression.h"

namespace Hovar {
namespace {

void FitBlock(RegressionResults& results, Model model, const LogisticRegression& regression,
              const auto& rows) {
  Vell::IO::StandardOutput().WriteLine(kModelLabels[static_cast<std::size_t>(model)]);
  results.Block(model) = regression.Fit(rows);
}

}  // namespace

void RunRegressionAnalysis(RegressionResults& results, const DataSet& dataSet,
                           const FitSettings& settings) {
  results.xNames = dataSet.xNames;
  results.zNames = dataSet.zNames;
  AnnounceStage(settings.workingCorrelation, Messages::kLines.regressionAnalysis,
                Messages::kLines.regressionAnalysisGee);
  results.xzTables.Resize(dataSet.variableCount - 1);
  for (std::int32_t k = 1; k < dataSet.variableCount; ++k) {
    results.xzTables[k - 1] = ComputeXzTable(dataSet, k);
  }
  const LogisticRegression regression{dataSet.hospitalSize, settings};
  FitBlock(results, Model::kPGivenX, regression, RowsOfPGivenX(dataSet));
  FitBlock(results, Model::kYGivenZ, regression, RowsOfYGivenZ(dataSet));
  FitBlock(results, Model::kYGivenX, regression, RowsOfYGivenX(dataSet));
  FitBlock(results, Model::kYGivenXWithoutP, regression, RowsOfYGivenXWithoutP(dataSet));
}

void AnnounceStage(WorkingCorrelation workingCorrelation, const Messages::Pattern& independent,
                   const Messages::Pattern& exchangeable) {
  const bool isIndependent = workingCorrelation == WorkingCorrelation::kIndependent;
  Vell::IO::StandardOutput().WriteLine((isIndependent ? independent : exchangeable).Text());
}

}  // namespace Hovar
