#pragma once

// The launcher's own options. A command line whose first argument is none of them is the program's
// matter and reaches it untouched.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Hovar {

/// What the launcher is asked to do.
enum class Task {
  kRun,     // run a definition, watched
  kCheck,   // tell what is wrong with a definition
  kChains,  // run an Analysis several times with different seeds
  kReport,  // make a page of finished runs
};

struct Options {
  Task task = Task::kRun;
  std::string definition;

  // kRun
  std::string recordFile;  // empty: no run record
  bool keepOutputs = false;
  bool showProgress = false;

  // kCheck
  bool isStrict = false;
  bool describesData = false;

  // kChains
  int chainCount = 0;
  int jobs = 0;       // 0: as many as there are processors
  int onlyChain = 0;  // 0: all chains
  bool collectOnly = false;

  // kReport
  std::vector<std::string> folders;
  std::string reportFile;  // empty: report.html in the first folder
};

/// True for a first argument that begins a command line of the launcher.
bool IsLauncherOption(std::string_view argument) noexcept;

/// The meaning of the arguments (without the launcher's own name). When they have none, a line on
/// standard error says why, and there is no result.
std::optional<Options> ParseOptions(const std::vector<std::string_view>& arguments);

}  // namespace Hovar
