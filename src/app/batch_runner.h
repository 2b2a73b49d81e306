#pragma once

#include "app/definition/definitions.h"
#include "app/runner.h"

namespace Hovar {

/// Runs a list of definition files one after another, as if each had been named on the command
/// line. A listed definition may be a batch itself. The first error ends everything; what was
/// written stays. A batch has no log file of its own, and the log files of its runs stay attached.
class BatchRunner final : public Runner {
 public:
  /// Reads the definition after the root's start tag.
  /// Errors: those of ReadBatchDefinition.
  explicit BatchRunner(Vell::XmlReader& reader);

  /// Opens each definition only when its turn has come, so a run can write a definition that
  /// follows.
  /// Errors: those of DispatchDefinition and of the runs; "Out of memory" when batches are nested
  ///         so deeply that the stack is used up, as by a batch that names itself.
  void Run() override;

 private:
  BatchDefinition definition_;
};

}  // namespace Hovar
