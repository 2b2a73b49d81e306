#pragma once

// Runs of the built launcher in a scratch folder.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {

/// The launcher in a folder, called by its path as a shell would.
Command LauncherIn(const ScratchFolder& folder, const std::vector<std::string>& arguments,
                   const std::string& launcher = HOVAR_LAUNCHER);

ProcessResult RunLauncher(const ScratchFolder& folder, const std::vector<std::string>& arguments,
                          const std::string& launcher = HOVAR_LAUNCHER);

/// A copy of bin/ and libexec/ below a folder; returns the launcher.
std::string CopyTreeTo(const std::filesystem::path& root);

/// The names of these two files in such a tree.
std::string LauncherFile();  // bin/hovar or bin/hovar.exe
std::string ProgramFile();   // libexec/hovar/hovar or libexec/hovar/hovar.exe

/// Expects that the launcher runs the study's prediction.xml to its end.
void ExpectPredicts(const TinyStudy& study, const std::string& launcher);
inline const std::string kPredictionProgress = std::string(kTinyReading) +
                                               "Calculating individual predictions\n"
                                               "Calculating hospital-aggregated predictions\n";

/// The same with a small page for reports in share/: kPageHead, the line for the files, kPageTail.
std::string CopyTreeWithPageTo(const std::filesystem::path& root);
inline constexpr std::string_view kPageHead =
    "<!DOCTYPE html>\n<title>Hovar report</title>\n<p>not <!-- hovar:files --> here\n";
inline constexpr std::string_view kPageTail = "\n<p>the end\n";

/// The same with a shell script as the program. POSIX only.
std::string LauncherOfScript(const ScratchFolder& place, const std::string& script);

/// An analysis with a chain of so many iterations.
std::string ChainedAnalysisText(int burnin, int steps);

/// Waits until a file holds a text; false when it does not within a minute.
bool WaitForText(const std::filesystem::path& file, std::string_view text);

/// True when a file does not grow for a while: whoever wrote it has gone.
bool HasStoppedGrowing(const std::filesystem::path& file);

/// Expects that a text holds, or does not hold, a part.
void ExpectHolds(const std::string& text, const std::string& part);
void ExpectLacks(const std::string& text, const std::string& part);

}  // namespace Testing
