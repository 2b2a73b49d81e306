#include "mcmc/impute_data.h"

namespace Hovar {

ImputeData::ImputeData(DataSet& dataSet, const BetaYX& beta, const Vell::Vector& pGivenX,
                       const Vell::Vector& priorTable)
    : dataSet_(dataSet), model_{beta.Values(), pGivenX, priorTable} {}

void ImputeData::Initialize() {
  value_ = 0;
  PrepareImputation(dataSet_);
}

double ImputeData::AcceptanceProbability(double /*proposal*/) { return 0; }

double ImputeData::Propose() {
  RunImputationSweep(dataSet_, model_);
  return 0;
}

Vell::String ImputeData::GetName() const { return Vell::String("ImputeData"); }

}  // namespace Hovar
