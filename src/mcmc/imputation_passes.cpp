#include "mcmc/imputation_passes.h"

#include "foundation/io/standard_writers.h"
#include "messages/output_lines.h"

namespace Hovar {

ImputationPasses::ImputationPasses(DataSet& dataSet, const RegressionResults& results,
                                   const McmcSettings& settings)
    : dataSet_(dataSet),
      yGivenXWithoutP_(EstimateVector(results.Block(Model::kYGivenXWithoutPMcmc))),
      pGivenX_(EstimateVector(results.Block(Model::kPGivenX))),
      priorTable_(PriorTable(results, dataSet.variableCount)),
      burnin_(dataSet.HasIncompleteRecords() ? settings.burnin : 0),
      steps_(dataSet.HasIncompleteRecords() ? settings.steps : 1) {
  PrepareImputation(dataSet_);
}

void ImputationPasses::RunBurnin() {
  for (std::int32_t pass = 0; pass < burnin_; ++pass) {
    Sweep(pass, burnin_);
  }
}

void ImputationPasses::Run(std::int32_t pass) { Sweep(pass, steps_); }

void ImputationPasses::Sweep(std::int32_t pass, std::int32_t passes) {
  Vell::IO::StandardOutput().WriteMessage(Messages::kLines.pass, pass, passes);
  RunImputationSweep(dataSet_, {yGivenXWithoutP_, pGivenX_, priorTable_});
}

}  // namespace Hovar
