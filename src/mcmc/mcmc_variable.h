#pragma once

// What the driver of mcmc_model.h asks of an unknown. mcmc_scalar.h and mcmc_vector.h have what the
// variables of one number and of several share.

#include <cstdint>

#include "foundation/io/text_writer.h"

namespace Vell::Mcmc {

class McmcModel;

/// One unknown of a model. The model asks each variable in turn to make one Metropolis step and,
/// every thinning-th iteration, to record its current value. What a variable raises ends the run.
class McmcVariable {
 public:
  McmcVariable() = default;
  McmcVariable(const McmcVariable&) = delete;
  McmcVariable& operator=(const McmcVariable&) = delete;
  virtual ~McmcVariable() = default;

  /// Called once before the first and once after the last iteration of a run; the second call comes
  /// after the files have been closed. Not called after an error.
  virtual void Initialize() {}
  virtual void Finalize() {}

  /// One Metropolis step: proposes, and takes the proposal with its acceptance probability.
  virtual void Step() = 0;
  /// Forgets sums and counts at the start of a phase; the current value stays.
  virtual void ResetStatistics() = 0;
  /// Adds the current value to the statistics and records it in row `row` (from 0, below the
  /// model's buffer size) of the chain buffers, if there are any.
  virtual void Record(std::int32_t row) = 0;

  // Cells of the chain file, each with a comma before it (none for a variable without buffers), and
  // lines of the summary, one per number. `row` is one that was recorded since the buffers were
  // last written. Errors: "IO Exception"; "Out of memory".
  virtual void WriteChainHeader(IO::TextWriter& writer) const = 0;
  virtual void WriteChainValues(IO::TextWriter& writer, std::int32_t row) const = 0;
  virtual void WriteSummary(IO::TextWriter& writer) const = 0;

 protected:
  /// The model that runs this variable; set when it is registered.
  const McmcModel& Model() const noexcept { return *model_; }

 private:
  friend class McmcModel;
  const McmcModel* model_ = nullptr;
};

}  // namespace Vell::Mcmc
