#pragma once

#include "app/definition/definitions.h"
#include "app/runner.h"

namespace Hovar {

/// Reads the data, eliminates columns without information, fits the four regressions, samples the
/// hierarchical model and writes the coefficient file.
class AnalysisRunner final : public Runner {
 public:
  /// Reads the definition after the root's start tag, creates the output folder and attaches the
  /// log file.
  /// Errors: those of ReadAnalysisDefinition; FileOpenException.
  explicit AnalysisRunner(Vell::XmlReader& reader);

  void Run() override;

 private:
  AnalysisDefinition definition_;
};

}  // namespace Hovar
