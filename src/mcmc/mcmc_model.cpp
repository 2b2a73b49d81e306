#include "mcmc/mcmc_model.h"

#include <algorithm>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/platform/platform.h"
#include "foundation/io/standard_writers.h"
#include "mcmc/chain_file.h"
#include "messages/error_texts.h"
#include "messages/output_lines.h"

namespace Vell::Mcmc {

std::int32_t LongestChain(const McmcRunParameters& parameters) noexcept {
  const std::int64_t longerPhase = std::max(parameters.burnin, parameters.steps);
  return static_cast<std::int32_t>(longerPhase / parameters.thinning);
}

void McmcModel::Register(McmcVariable& variable) {
  variable.model_ = this;
  variables_.Append(&variable);
}

void McmcModel::Run(const McmcRunParameters& parameters) {
  if (parameters.thinning == 0) {
    throw Exceptions::InvalidArgumentException(Messages::kErrors.invalidArgument);
  }
  reportInterval_ = parameters.reportInterval;
  thinning_ = parameters.thinning;
  bufferSize_ = parameters.bufferSize >= 1 ? parameters.bufferSize : LongestChain(parameters);
  Initialize();
  for (McmcVariable* variable : variables_) {
    variable->Initialize();
  }
  ChainFile files(parameters.folder);
  files.WriteChainHeader(variables_.Span());
  if (parameters.burnin > 0) {
    RunPhase(files, parameters.burnin, true);
  }
  if (parameters.steps > 0) {
    RunPhase(files, parameters.steps, false);
  }
  files.Close();
  for (McmcVariable* variable : variables_) {
    variable->Finalize();
  }
  Finalize();
}

void McmcModel::RunPhase(ChainFile& files, std::int32_t iterations, bool isBurnin) {
  flushed_ = 0;
  kept_ = 0;
  for (McmcVariable* variable : variables_) {
    variable->ResetStatistics();
  }
  const std::int64_t start = IO::Platform::ProcessorMilliseconds();
  for (std::int32_t i = 0; i < iterations;) {
    for (McmcVariable* variable : variables_) {
      variable->Step();
    }
    ++i;
    if (i % thinning_ == 0) {
      RecordState(files, isBurnin);
    }
    if (reportInterval_ > 0 && i % reportInterval_ == 0) {
      ReportProgress(i, isBurnin);
    }
  }
  const auto elapsed = static_cast<std::int32_t>(IO::Platform::ProcessorMilliseconds() - start);
  IO::StandardOutput().WriteMessage(Messages::kLines.phaseEnd, iterations, elapsed / 1000.0);
  if (!isBurnin) {
    FlushChain(files);
    files.WriteSummary(variables_.Span());
  }
}

void McmcModel::RecordState(ChainFile& files, bool isBurnin) {
  if (kept_ - flushed_ == bufferSize_) {
    if (!isBurnin) {
      FlushChain(files);
    }
    flushed_ = kept_;
  }
  for (McmcVariable* variable : variables_) {
    variable->Record(kept_ - flushed_);
  }
  ++kept_;
}

void McmcModel::FlushChain(ChainFile& files) {
  for (std::int32_t k = flushed_; k < kept_; ++k) {
    files.WriteChainRow(variables_.Span(), k - flushed_, (k + 1) * thinning_);
  }
}

void McmcModel::ReportProgress(std::int32_t iteration, bool isBurnin) {
  IO::StandardOutput().WriteLine(
      (isBurnin ? Messages::kLines.burnin : Messages::kLines.mcmc).Piece(0), iteration);
}

}  // namespace Vell::Mcmc
