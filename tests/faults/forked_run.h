#pragma once

// Runs of the program in a copy of the test process: as whole as a run of its own process, but
// without the cost of starting one, so that very many fit into a test.

#include <filesystem>
#include <functional>
#include <string>

#include "support/child_process.h"

namespace Testing {

inline constexpr char kBanner[] = "Target platform: 64-bit\n";
inline constexpr char kPrompt[] = "Press any button to continue . . .\n";

struct RunResult {
  ProcessEnd end;
  std::string output;
  std::string error;

  /// Everything, for messages.
  std::string Text() const;
};

/// Runs one after the other. A run that takes longer than a minute ends by SIGALRM.
class ForkedRuns {
 public:
  ForkedRuns();
  ~ForkedRuns();
  ForkedRuns(const ForkedRuns&) = delete;
  ForkedRuns& operator=(const ForkedRuns&) = delete;

  /// Runs `definition` in `folder`, with an empty standard input; `prepare` is called in the copy
  /// before the program begins.
  RunResult Run(const std::filesystem::path& folder, const std::string& definition,
                const std::function<void()>& prepare = {});

 private:
  int output_;
  int error_;
};

/// The program in this process and this working folder; its exit status.
int RunHere(const std::string& definition);

/// Expects the end of a run that failed with one line on standard error.
void ExpectFailed(const RunResult& result, const std::string& line);

/// Expects a run without an error.
void ExpectSucceeded(const RunResult& result);

}  // namespace Testing
