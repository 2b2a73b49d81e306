#pragma once

#include "app/definition/definitions.h"
#include "app/runner.h"

namespace Hovar {

/// Reads the data, eliminates columns without information, fits the four regressions, samples the
/// hierarchical model and writes the coefficient file. The file comes last, so a coefficient file
/// of this name that is complete belongs to a sampler that came to its end.
class AnalysisRunner final : public Runner {
 public:
  /// Reads the definition after the root's start tag, creates the output folder and attaches the
  /// log file.
  /// Errors: those of ReadAnalysisDefinition; FileOpenException.
  explicit AnalysisRunner(Vell::XmlReader& reader);

  /// Errors: those of ReadDataFile, EliminateColumns, RunRegressionAnalysis and RunMcmcStage;
  ///         FileOpenException; "IO Exception"; "Out of memory".
  void Run() override;

 private:
  AnalysisDefinition definition_;
};

}  // namespace Hovar
