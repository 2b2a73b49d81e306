#pragma once

// The command line of the launcher, and what it asks for: each tool has settings of its own and
// knows nothing of options. A command line whose first argument is no option reaches the program
// untouched.

#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "tools/chains/chains.h"
#include "tools/check/check.h"
#include "tools/report/report.h"
#include "tools/run/supervised_run.h"

namespace Hovar {

/// The tool that a command line asks for, with its settings.
using Task = std::variant<RunSettings, CheckSettings, ChainSettings, ReportSettings>;

/// True for a first argument that begins a command line of the launcher: the name of an option, which an
/// equals sign and a value may follow.
bool IsLauncherOption(std::string_view argument) noexcept;

/// The meaning of the arguments (without the launcher's own name). When they have none, a line on
/// standard error says why, and there is no result.
std::optional<Task> ParseOptions(const std::vector<std::string_view>& arguments);

}  // namespace Hovar
