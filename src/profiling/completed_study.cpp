#include "profiling/completed_study.h"

#include <algorithm>
#include <cassert>

#include "foundation/random/random_generator.h"
#include "linalg/kernels/exponentials.h"
#include "linalg/kernels/set_columns.h"
#include "mcmc/imputation_sweep.h"

namespace Hovar {

CompletedStudies::CompletedStudies(DataSet& dataSet, const RegressionResults& results,
                                   const CompletedStudySettings& settings)
    : dataSet_(dataSet),
      settings_(settings),
      pGivenX_(EstimateVector(results.Block(Model::kPGivenX))),
      priorTable_(PriorTable(results, dataSet.variableCount)),
      coefficients_(dataSet.variableCount),
      scratch_(dataSet.variableCount) {
  pGivenX_[0] += settings.shiftOfP;
}

void CompletedStudies::Draw(CompletedStudy& study, std::int32_t number,
                            std::span<const double> coefficients) {
  assert(coefficients.size() == coefficients_.Span().size());
  std::copy(coefficients.begin(), coefficients.end(), coefficients_.begin());
  const Vell::SeedWords seed =
      Vell::SeedOfChain(settings_.seed, static_cast<std::uint32_t>(number));
  Vell::RandomGenerator::Seed(seed.z, seed.w);
  PrepareImputation(dataSet_);
  for (std::int32_t sweep = 0; sweep < settings_.sweeps; ++sweep) {
    RunImputationSweep(dataSet_, {coefficients_, pGivenX_, priorTable_});
  }

  study.probability.Truncate(0);
  study.probability.Reserve(dataSet_.recordCount);
  study.outcome.Truncate(0);
  study.outcome.Reserve(dataSet_.recordCount);
  study.hospitalStart.Truncate(0);
  for (std::int32_t h = 0; h < dataSet_.hospitalCount; ++h) {
    study.hospitalStart.Append(study.probability.Size());
    for (std::int32_t i = dataSet_.hospitalStart[h]; i < dataSet_.hospitalStart[h + 1]; ++i) {
      if (!dataSet_.p.Value(i)) {
        const auto columns = Vell::SetColumns(dataSet_.x.Row(i), scratch_.Span());
        study.probability.Append(-LinearPredictor(coefficients_, columns));
        study.outcome.Append(dataSet_.y.Get(i) ? 1 : 0);
      }
    }
  }
  study.hospitalStart.Append(study.probability.Size());
  // The logistic function as Logistic defines it, all exponentials together.
  Vell::ReplaceByExponentials(study.probability.Span());
  for (double& value : study.probability) {
    value = 1 / (value + 1);
  }
}

std::int64_t EvenlySpacedDraw(std::int32_t study, std::int32_t studies,
                              std::int64_t draws) noexcept {
  return (2 * std::int64_t{study} - 1) * draws / (2 * std::int64_t{studies});
}

}  // namespace Hovar
