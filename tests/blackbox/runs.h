#pragma once

// Runs of the built program in a scratch folder, and what every run must show.

#include <initializer_list>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "support/files.h"
#include "support/process.h"

namespace Testing {

inline constexpr char kBanner[] = "Target platform: 64-bit\n";
inline constexpr char kPrompt[] = "Press any button to continue . . .\n";

/// The path under which the program is started: it must hold a backslash.
inline constexpr char kProgramPath[] = "C:\\hovar\\hovar.exe";

/// The program in a folder, started as kProgramPath, with an empty standard input.
Command HovarIn(const ScratchFolder& folder, const std::vector<std::string>& arguments);

/// A run in an empty folder, of a definition none.xml that is not there, which ends with the prompt
/// and waits for a key on this standard input.
Command FailingRun(const ScratchFolder& folder, Input input, const std::string& text = "");

ProcessResult RunHovar(const ScratchFolder& folder, const std::vector<std::string>& arguments);

/// A run that ended in one error: the banner, `progress` and the prompt on standard output, the one
/// line "Error: " + `line` on standard error, exit status 1.
void ExpectError(const ProcessResult& result, const std::string& line,
                 const std::string& progress = "");

/// A run without an error: the banner and `progress` on standard output, exit status 0.
void ExpectSuccess(const ProcessResult& result, const std::string& progress);

/// The line for a character or a name other than the required one.
std::string Mismatch(const std::string& file, const std::string& expected,
                     const std::string& current);

/// The line for a file that cannot be opened.
std::string CannotOpen(const std::string& path);

/// A path that the launcher put together, given with backslashes, as it shows it on this system.
std::string Shown(std::string path);

/// The names of all files (not folders) below a folder, relative to it.
std::set<std::string> FilesBelow(const ScratchFolder& folder);

/// `text` with the first `from`, which must be there, replaced.
std::string Replaced(std::string text, std::string_view from, std::string_view to);

/// An output with the elapsed seconds of every chain replaced by T.
std::string WithoutSeconds(const std::string& output);

}  // namespace Testing
