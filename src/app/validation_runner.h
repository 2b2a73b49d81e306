#pragma once

#include "app/definition/definitions.h"
#include "app/runner.h"

namespace Hovar {

/// Reads the data, the coefficients of an analysis and the individual predictions made with them,
/// and writes the C-statistics.
class ValidationRunner final : public Runner {
 public:
  /// Reads the definition after the root's start tag, creates the output folder and attaches the
  /// log file.
  /// Errors: those of ReadValidationDefinition; FileOpenException.
  explicit ValidationRunner(Vell::XmlReader& reader);

  /// Errors: those of ReadDataFile, ReadCoefficientFile, ReconcileVariables,
  ///         ReadIndividualPredictions and ComputeCStatistics; FileOpenException; "IO Exception";
  ///         "Out of memory".
  void Run() override;

 private:
  ValidationDefinition definition_;
};

}  // namespace Hovar
