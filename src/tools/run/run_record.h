#pragma once

// The record of a run: what was run, on what, with what seed, when, where, and how it went, as
// JSON. docs/run-record.md describes it.

#include <cstdint>
#include <string>
#include <vector>

#include "tools/plan/run_plan.h"
#include "tools/run/run_lines.h"

namespace Hovar {

class RunRecord {
 public:
  /// Notes the inputs of the planned runs as they are now, before the program starts.
  explicit RunRecord(const RunPlan& plan);

  /// The record as text, after the end of the program.
  std::string Text(const RunLines& lines, int exitStatus) const;

 private:
  struct InputFacts {
    std::string path;
    std::string sha256;  // empty when the file cannot be read
    std::int64_t size = 0;
  };

  static InputFacts FactsOf(const std::string& path);

  const RunPlan& plan_;
  std::vector<InputFacts> data_;  // one per run
  std::int64_t start_;
};

/// Seconds since 1970-01-01 00:00 UTC as "2024-02-29T12:00:00Z".
std::string UtcText(std::int64_t seconds);

}  // namespace Hovar
