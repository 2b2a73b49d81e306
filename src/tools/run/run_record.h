#pragma once

// The record of a run: what was run, on what, with what seed, when, where, and how it went, as
// JSON. docs/run-record.md describes it.

#include <cstdint>
#include <string>
#include <vector>

#include "tools/plan/run_plan.h"
#include "tools/run/run_lines.h"
#include "tools/support/json_text.h"

namespace Hovar {

class RunRecord {
 public:
  /// Notes the inputs of the planned runs as they are now, before the program starts.
  explicit RunRecord(const RunPlan& plan);

  /// The first data file that is there but could not be read, or the empty text.
  std::string UnreadableData() const;
  /// The first coefficient file of a run that cannot be read now; empty when all can.
  std::string UnreadCoefficients() const;

  /// Notes the end of the program, and which files no longer have the bytes that were noted before:
  /// changed, removed or no longer readable. Of a file that could not be read before nothing is
  /// said. Without `withData`, which takes as long as hashing them, data files are not looked at.
  void NoteEnd(bool withData);

  /// The paths of those files, definitions first, each once.
  const std::vector<std::string>& ChangedFiles() const noexcept { return changed_; }

  /// The record as text.
  std::string Text(const RunLines& lines, int exitStatus) const;

 private:
  struct InputFacts {
    std::string path;
    std::string sha256;  // empty when the file cannot be read
    std::int64_t size = 0;
  };

  static InputFacts FactsOf(const std::string& path);
  static InputFacts FactsOf(const std::string& path, const std::string& bytes);
  void AddChanged(const std::string& path);
  void WriteFile(JsonWriter& json, std::string_view name, const InputFacts& facts) const;

  const RunPlan& plan_;
  std::vector<InputFacts> data_;  // one per run
  std::int64_t start_;
  std::int64_t end_;
  std::vector<std::string> changed_;
};

/// Seconds since 1970-01-01 00:00 UTC as "2024-02-29T12:00:00Z".
std::string UtcText(std::int64_t seconds);

}  // namespace Hovar
