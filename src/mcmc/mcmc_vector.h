#pragma once

// The Metropolis step and the statistics of a variable of several numbers. Each component has a
// line of the summary and, with buffers, a column of the chain file.

#include "foundation/growable_array.h"
#include "foundation/string.h"
#include "linalg/vector.h"
#include "mcmc/mcmc_variable.h"
#include "mcmc/variable_statistics.h"

namespace Vell::Mcmc {

/// A variable of several numbers that are proposed and accepted as one block.
class McmcVector : public McmcVariable {
 public:
  /// The current values; the reference is good as long as the variable.
  const Vector& Values() const noexcept { return values_; }

  void Step() override;
  void ResetStatistics() override;
  void Record(std::int32_t row) override;
  void WriteChainHeader(IO::TextWriter& writer) const override;
  void WriteChainValues(IO::TextWriter& writer, std::int32_t row) const override;
  void WriteSummary(IO::TextWriter& writer) const override;

  /// The probability with which the proposal becomes the value; see RandomGenerator::Accept.
  virtual double AcceptanceProbability(const Vector& proposal) = 0;
  /// Fills the proposal, which has the size of Values() and begins with zeros.
  virtual void Propose(Vector& proposal) = 0;
  /// Called before an accepted proposal becomes the value.
  virtual void OnAccept(const Vector& /*proposal*/) {}
  /// The name of a component (from 0) in both files.
  /// Errors: "Out of memory".
  virtual String GetName(std::int32_t component) const = 0;

 protected:
  // Errors of both: "Invalid argument" for a negative size; "Out of memory".

  /// Becomes `count` zeros with fresh statistics and no chain buffers.
  void Resize(std::int32_t count);
  /// Gives every component a chain buffer of the model's buffer size.
  void AllocateChainBuffers();
  /// The statistics of a component (from 0) in the current phase.
  const VariableStatistics& Statistics(std::int32_t component) const noexcept {
    return statistics_[component];
  }

 private:
  Vector values_;
  GrowableArray<VariableStatistics> statistics_;
};

}  // namespace Vell::Mcmc
