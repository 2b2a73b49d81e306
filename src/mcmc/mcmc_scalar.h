#pragma once

// The Metropolis step and the statistics of a variable of one number. A derived class proposes and
// says how likely a proposal is accepted.

#include "foundation/string.h"
#include "mcmc/mcmc_variable.h"
#include "mcmc/variable_statistics.h"

namespace Vell::Mcmc {

/// A variable of one number. It has no chain buffer, hence no column in the chain file, unless a
/// derived class allocates one.
class McmcScalar : public McmcVariable {
 public:
  /// The current value; 0 at first.
  double Value() const noexcept { return value_; }

  void Step() override;
  void ResetStatistics() override { statistics_.Reset(); }
  void Record(std::int32_t row) override { statistics_.Record(value_, row); }
  void WriteChainHeader(IO::TextWriter& writer) const override;
  void WriteChainValues(IO::TextWriter& writer, std::int32_t row) const override;
  void WriteSummary(IO::TextWriter& writer) const override;

  /// The probability with which the proposal becomes the value; see RandomGenerator::Accept.
  virtual double AcceptanceProbability(double proposal) = 0;
  /// Makes a proposal; called once a step, before AcceptanceProbability.
  virtual double Propose() = 0;
  /// Called before an accepted proposal becomes the value.
  virtual void OnAccept(double /*proposal*/) {}
  /// The name in both files.
  /// Errors: "Out of memory".
  virtual String GetName() const = 0;

 protected:
  double value_ = 0;
  VariableStatistics statistics_;
};

}  // namespace Vell::Mcmc
