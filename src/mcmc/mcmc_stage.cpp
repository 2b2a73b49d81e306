#include "mcmc/mcmc_stage.h"

#include "foundation/io/standard_writers.h"
#include "messages/output_lines.h"
#include "regression/regression_analysis.h"

namespace Hovar {

void RunMcmcStage(RegressionResults& results, DataSet& dataSet, const HBModelSettings& settings) {
  const Vell::Vector pGivenX = EstimateVector(results.Block(Model::kPGivenX));
  const Vell::Vector priorTable = PriorTable(results, dataSet.variableCount);
  HBModel model(dataSet, pGivenX, priorTable, settings);
  AnnounceStage(settings.regression.workingCorrelation, Messages::kLines.mcmcAnalysis,
                Messages::kLines.mcmcAnalysisGee);
  model.Run();
  const Vell::Matrix& table = model.ResultTable();
  CoefficientEstimates& block = results.Block(Model::kYGivenXWithoutPMcmc);
  block.Resize(table.Rows());
  for (std::int32_t i = 0; i < table.Rows(); ++i) {
    block[i] = {table(i, 0), table(i, 1), table(i, 2)};
  }
}

}  // namespace Hovar
