#pragma once

// A small driver of Markov chain Monte Carlo that knows nothing of any particular model: it runs a
// burn-in phase that is thrown away and a main phase that is kept, asks every variable in turn to
// step, and records every thinning-th state.
//
// Source of the acceptance step: N. Metropolis, A. W. Rosenbluth, M. N. Rosenbluth, A. H. Teller,
// E. Teller, Journal of Chemical Physics 21 (1953), pages 1087-1092.

#include <cstdint>

#include "foundation/growable_array.h"
#include "foundation/string.h"
#include "mcmc/mcmc_variable.h"

namespace Vell::Mcmc {

class ChainFile;

/// The length of a run and where its files go.
struct McmcRunParameters {
  /// Receives Chain.csv and Summary.csv.
  String folder;
  /// Rows of the chain buffers; below 1 as many as the longer phase keeps.
  std::int32_t bufferSize = 0;
  /// Iterations between progress lines; below 1 none.
  std::int32_t reportInterval = 0;
  /// Iterations between recorded states.
  std::int32_t thinning = 1;
  /// Iterations of the two phases; below 1 the phase is left out.
  std::int32_t burnin = 0;
  std::int32_t steps = 0;
};

/// The states that the longer phase keeps, and so the rows of the chain buffers where none are
/// asked for: negative for a run that is refused. The thinning must not be 0.
std::int32_t LongestChain(const McmcRunParameters& parameters) noexcept;

/// A model is its variables and the order of their steps, which a derived class registers.
class McmcModel {
 public:
  McmcModel() = default;
  McmcModel(const McmcModel&) = delete;
  McmcModel& operator=(const McmcModel&) = delete;
  virtual ~McmcModel() = default;

  /// Runs both phases and writes the two files. To be called once. Summary.csv stays empty without
  /// a main phase, and so does Chain.csv but for its header. After each phase standard output
  /// receives the iterations and the processor time taken.
  /// Errors: InvalidArgumentException "Invalid argument" for a thinning of 0, or sizes that give a
  ///         negative buffer; FileOpenException; "IO Exception"; "Out of memory"; whatever a
  ///         variable raises. What was written stays.
  void Run(const McmcRunParameters& parameters);

  /// States recorded in the current phase, or in the last one that ran.
  std::int32_t Kept() const noexcept { return kept_; }
  /// As the run's parameters say; the buffer size with its default filled in.
  std::int32_t Thinning() const noexcept { return thinning_; }
  std::int32_t BufferSize() const noexcept { return bufferSize_; }

 protected:
  /// A derived model registers its variables here, in the order of their steps.
  virtual void Initialize() {}
  /// Called at the end of a run, after the variables' own Finalize.
  virtual void Finalize() {}
  /// Writes a line on standard output after iteration `iteration` (from 1).
  virtual void ReportProgress(std::int32_t iteration, bool isBurnin);

  /// Adds a variable to the end of the order. It must live as long as the model, and have no other.
  /// Errors: "Out of memory".
  void Register(McmcVariable& variable);

 private:
  void RunPhase(ChainFile& files, std::int32_t iterations, bool isBurnin);
  void RecordState(ChainFile& files, bool isBurnin);
  void FlushChain(ChainFile& files);

  GrowableArray<McmcVariable*> variables_;
  std::int32_t reportInterval_ = 0;
  std::int32_t thinning_ = 1;
  std::int32_t bufferSize_ = 0;
  std::int32_t flushed_ = 0;  // kept states of this phase that have left the buffers
  std::int32_t kept_ = 0;
};

}  // namespace Vell::Mcmc
