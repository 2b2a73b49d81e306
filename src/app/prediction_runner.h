#pragma once

#include "app/definition/definitions.h"
#include "app/runner.h"

namespace Hovar {

/// Reads the data and the coefficients of an analysis and writes individual and hospital
/// predictions. Hospital predictions are computed and written after the individual ones are stored.
class PredictionRunner final : public Runner {
 public:
  /// Reads the definition after the root's start tag, creates the output folder and attaches the
  /// log file.
  /// Errors: those of ReadPredictionDefinition; FileOpenException.
  explicit PredictionRunner(Vell::XmlReader& reader);

  /// Errors: those of ReadDataFile, ReadCoefficientFile, ReconcileVariables and
  ///         WriteIndividualPredictions; FileOpenException; "IO Exception"; "Out of memory".
  void Run() override;

 private:
  PredictionDefinition definition_;
};

}  // namespace Hovar
