#include "mcmc/mcmc_scalar.h"

#include "foundation/random/random_generator.h"
#include "mcmc/mcmc_model.h"

namespace Vell::Mcmc {

void McmcScalar::Step() {
  const double proposal = Propose();
  if (RandomGenerator::Accept(AcceptanceProbability(proposal))) {
    OnAccept(proposal);
    value_ = proposal;
    ++statistics_.accepted;
  }
}

void McmcScalar::WriteChainHeader(IO::TextWriter& writer) const {
  statistics_.WriteChainName(writer, GetName());
}

void McmcScalar::WriteChainValues(IO::TextWriter& writer, std::int32_t row) const {
  statistics_.WriteChainValue(writer, row);
}

void McmcScalar::WriteSummary(IO::TextWriter& writer) const {
  statistics_.WriteSummaryLine(writer, GetName(), Model().Kept(), Model().Thinning());
}

}  // namespace Vell::Mcmc
