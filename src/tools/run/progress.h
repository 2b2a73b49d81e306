#pragma once

// How much of a run is done and how long the rest will take, from the program's own lines.
//
// Work is counted in units of one pass: an iteration of the chain, or a pass of imputation. Reading
// and the four fits count one unit each. Definitions of a batch weigh as the size of their data
// file and the cost of a pass of their kind say; the weights only share out the bar. The time left
// of the current run is measured: the seconds per pass so far, times the passes that are left.

#include <cstdint>
#include <string>
#include <vector>

#include "tools/plan/run_plan.h"
#include "tools/run/run_lines.h"

namespace Hovar {

class Progress {
 public:
  /// `start` is the time in seconds, on any clock, at which the program was started.
  Progress(const RunPlan& plan, double start);

  /// Updates the progress from the lines read by the time `now`.
  void Update(const RunLines& lines, double now);

  /// The share of the work that is done, from 0 to 1; never falls, and is 1 only at the end.
  double Share() const noexcept { return share_; }
  /// Called when the program has ended with success.
  void Complete() noexcept { share_ = 1; }

  /// Seconds left at the time `now`, or -1 while they are unknown.
  double SecondsLeft(double now) const;

  /// What the program is doing, for example "2 of 3: Prediction, pass 4 of 20".
  std::string Activity() const;

 private:
  struct Part {
    RunKind kind = RunKind::kAnalysis;
    std::int64_t passes = 0;
    std::int64_t burnin = 0;
    double unitWeight = 1;
  };

  static constexpr double kOtherUnits = 2;  // reading, and the fits
  static double WeightOf(const Part& part);
  void UpdatePasses(const ObservedRun& run, double now);

  std::vector<Part> parts_;
  double totalWeight_ = 0;
  double start_;
  double share_ = 0;
  std::size_t current_ = 0;
  ObservedRun observed_;
  // The passes of the current run: how many are done, when the first and the last one were.
  std::int64_t done_ = 0;
  std::int64_t firstDone_ = 0;
  double firstTime_ = 0;
  double lastTime_ = 0;
};

/// The line "[#####-----]  50 %  0:12 left  ACTIVITY" in at most `columns` characters.
std::string ProgressLine(const Progress& progress, double now, int columns);

/// Seconds as "0:07", "12:34" or "1:02:03".
std::string DurationText(double seconds);

}  // namespace Hovar
