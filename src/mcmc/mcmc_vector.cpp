#include "mcmc/mcmc_vector.h"

#include <algorithm>

#include "foundation/random/random_generator.h"
#include "mcmc/mcmc_model.h"

namespace Vell::Mcmc {

void McmcVector::Step() {
  Vector proposal(values_.Size());
  Propose(proposal);
  if (RandomGenerator::Accept(AcceptanceProbability(proposal))) {
    OnAccept(proposal);
    std::copy(proposal.begin(), proposal.end(), values_.begin());
    for (VariableStatistics& component : statistics_) {
      ++component.accepted;
    }
  }
}

void McmcVector::ResetStatistics() {
  for (VariableStatistics& component : statistics_) {
    component.Reset();
  }
}

void McmcVector::Record(std::int32_t row) {
  for (std::int32_t i = 0; i < values_.Size(); ++i) {
    statistics_[i].Record(values_[i], row);
  }
}

void McmcVector::WriteChainHeader(IO::TextWriter& writer) const {
  for (std::int32_t i = 0; i < values_.Size(); ++i) {
    statistics_[i].WriteChainName(writer, GetName(i));
  }
}

void McmcVector::WriteChainValues(IO::TextWriter& writer, std::int32_t row) const {
  for (const VariableStatistics& component : statistics_) {
    component.WriteChainValue(writer, row);
  }
}

void McmcVector::WriteSummary(IO::TextWriter& writer) const {
  for (std::int32_t i = 0; i < values_.Size(); ++i) {
    statistics_[i].WriteSummaryLine(writer, GetName(i), Model().Kept(), Model().Thinning());
  }
}

void McmcVector::Resize(std::int32_t count) {
  values_.Resize(count);
  statistics_.Resize(count);
}

void McmcVector::AllocateChainBuffers() {
  for (VariableStatistics& component : statistics_) {
    component.AllocateChain(Model().BufferSize());
  }
}

}  // namespace Vell::Mcmc
