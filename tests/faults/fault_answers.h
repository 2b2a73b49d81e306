#pragma once

#include <string>

#include "faults/fault_study.h"
#include "faults/forked_run.h"
#include "faults/system_calls.h"

namespace Testing {

/// How the runs of one definition of a FaultStudy must answer a system call that fails.
class FaultAnswers {
 public:
  /// `whole` is a run without a fault and `complete` what it wrote.
  FaultAnswers(std::string definition, RunResult whole, OutputFiles complete);

  /// Expects that a fault made no difference.
  void ExpectWhole(const RunResult& result, const OutputFiles& files) const;
  /// Expects an end with exit status 1 after which no file is wrong, only cut short.
  void ExpectBroken(const RunResult& result, const OutputFiles& files) const;
  /// Expects the same with this error line, after those of errors that the run has answered, and
  /// with the prompt.
  void ExpectFailed(const std::string& line, const RunResult& result,
                    const OutputFiles& files) const;

  /// Expects the answer to one call that failed with an error (other than EINTR).
  void ExpectAnswer(const SystemCallReport& call, const RunResult& result,
                    const OutputFiles& files) const;

  const OutputFiles& Complete() const { return complete_; }

 private:
  void ExpectAnswerToMissingFolder(const SystemCallReport& call, const RunResult& result,
                                   const OutputFiles& files) const;

  std::string definition_;
  RunResult whole_;
  OutputFiles complete_;
};

}  // namespace Testing
