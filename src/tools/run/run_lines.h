#pragma once

// The program's lines, read as they come: how far the run is, what it warned of and where, and the
// error that ended it. docs/formats.md lists the lines.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Hovar {

/// Stages of a run in the order in which they come.
enum class Stage { kReading, kFits, kBurnin, kMcmc, kPasses, kHospitals };

/// The warnings of one kind that a run gave in one place.
struct RunWarning {
  std::string text;
  /// The error line that the program gave as the reason, or empty.
  std::string reason;
  /// Label of the fit that it followed, such as "[P|X]"; empty while data are read.
  std::string fit;
  std::int64_t count = 0;
  /// Of these, how many came in iterations of the chain, and the first such iteration. An iteration
  /// that an error ended counts in neither phase.
  std::int64_t burninCount = 0;
  std::int64_t mainCount = 0;
  std::int64_t firstBurnin = 0;
  std::int64_t firstMain = 0;
  /// Numbers of the records that were named, counted from 0.
  std::vector<std::int64_t> records;
};

/// One run of one definition (in a batch there are several).
struct ObservedRun {
  Stage stage = Stage::kReading;
  std::string fit;  // label of the current one
  std::int64_t recordsRead = 0;
  std::int64_t recordCount = 0;
  int fitsBegun = 0;
  std::int64_t burninDone = 0;  // iterations of the chain
  std::int64_t mcmcDone = 0;
  std::int64_t passesBegun = 0;  // passes of imputation of a Prediction or Validation
  std::vector<RunWarning> warnings;
};

class RunLines {
 public:
  /// Takes one line, without its line feed.
  void Take(std::string_view line);
  /// To be called after the last line.
  void End();

  const std::vector<ObservedRun>& Runs() const noexcept { return runs_; }
  /// The last error line that was not the reason of a warning, with "Error: ".
  const std::string& Error() const noexcept { return error_; }
  std::int64_t WarningCount() const noexcept { return warningCount_; }

 private:
  ObservedRun& Run();
  void TakeStage(std::string_view line);
  void TakeWarning(std::string_view line);
  void TakeIteration(Stage stage, std::int64_t iteration);
  RunWarning& WarningOf(std::string_view text, std::string_view reason);
  void SettlePending(Stage stage, std::int64_t iteration);

  std::vector<ObservedRun> runs_;
  std::string error_;
  std::int64_t warningCount_ = 0;
  bool isInChain_ = false;
  // Warnings of the iteration that has not been reported yet: text and reason.
  std::vector<std::pair<std::string, std::string>> pending_;
};

/// What a stage is called in progress lines.
std::string_view NameOf(Stage stage) noexcept;

}  // namespace Hovar
