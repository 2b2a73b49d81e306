#include "tools/run/progress.h"

#include <algorithm>
#include <cmath>

#include "tools/support/files.h"

namespace Hovar {
namespace {

/// Bytes of a data file; a file that is not there yet weighs like a small one.
double DataSize(const std::string& path) {
  constexpr double kSmall = 1e5;
  const std::optional<std::int64_t> size = FileSize(path);
  return size ? std::max(static_cast<double>(*size), 1.0) : kSmall;
}

/// The cost of a pass per byte of data, relative to an imputation sweep: an iteration of the chain
/// also fits a model, a pass of a Validation counts pairs.
double CostOfPass(RunKind kind) noexcept {
  switch (kind) {
    case RunKind::kAnalysis:
      return 5;
    case RunKind::kValidation:
      return 2;
    case RunKind::kPrediction:
    case RunKind::kBatch:
      return 1;
  }
  return 1;
}

}  // namespace

Progress::Progress(const RunPlan& plan, double start) : start_(start) {
  const bool isAlone = plan.runs.size() == 1;
  for (const PlannedRun& run : plan.runs) {
    Part part{run.kind, run.burnin + run.steps, run.burnin, 1};
    if (run.kind == RunKind::kPrediction) {
      // The first averaged pass uses what the burn-in left and prints no line.
      part.passes = run.burnin + std::max<std::int64_t>(run.steps - 1, 0);
    }
    part.unitWeight = isAlone ? 1 : CostOfPass(run.kind) * DataSize(run.data);
    totalWeight_ += WeightOf(part);
    parts_.push_back(part);
  }
}

double Progress::WeightOf(const Part& part) {
  return part.unitWeight * (kOtherUnits + static_cast<double>(part.passes));
}

void Progress::UpdatePasses(const ObservedRun& run, double now) {
  // A pass of imputation is announced before it is made, an iteration reported after it.
  const std::int64_t done =
      std::max(std::max<std::int64_t>(run.passesBegun - 1, 0),
               run.mcmcDone > 0 ? parts_[current_].burnin + run.mcmcDone : run.burninDone);
  if (done > done_) {
    if (done_ == 0) {
      firstDone_ = done;
      firstTime_ = now;
    }
    done_ = done;
    lastTime_ = now;
  }
}

void Progress::Update(const RunLines& lines, double now) {
  if (lines.Runs().empty() || parts_.empty()) {
    return;
  }
  const std::size_t current = std::min(lines.Runs().size(), parts_.size()) - 1;
  if (current != current_) {
    current_ = current;
    done_ = 0;
  }
  observed_ = lines.Runs().back();
  UpdatePasses(observed_, now);

  const Part& part = parts_[current_];
  const double read = observed_.recordCount > 0 ? static_cast<double>(observed_.recordsRead) /
                                                      static_cast<double>(observed_.recordCount)
                                                : 0;
  constexpr double kFits = 4;
  double units = observed_.stage == Stage::kReading ? read : 1.0;
  units += observed_.stage > Stage::kFits ? 1.0 : std::max(observed_.fitsBegun - 1, 0) / kFits;
  units += static_cast<double>(std::min(done_, part.passes));
  if (observed_.stage == Stage::kHospitals) {
    units = kOtherUnits + static_cast<double>(part.passes);
  }
  double weight = part.unitWeight * units;
  for (std::size_t before = 0; before < current_; ++before) {
    weight += WeightOf(parts_[before]);
  }
  constexpr double kAlmostAll = 0.999;
  share_ = std::max(share_, std::min(weight / totalWeight_, kAlmostAll));
}

double Progress::SecondsLeft(double now) const {
  if (parts_.empty() || done_ <= firstDone_ || lastTime_ <= firstTime_) {
    return -1;
  }
  const Part& part = parts_[current_];
  const double perPass = (lastTime_ - firstTime_) / static_cast<double>(done_ - firstDone_);
  const auto passesLeft = static_cast<double>(std::max<std::int64_t>(part.passes - done_, 0));
  double left = std::max(perPass * passesLeft - (now - lastTime_), 0.0);
  double laterWeight = 0;
  for (std::size_t later = current_ + 1; later < parts_.size(); ++later) {
    laterWeight += WeightOf(parts_[later]);
  }
  if (share_ > 0) {
    left += laterWeight / totalWeight_ * (now - start_) / share_;
  }
  return left;
}

std::string Progress::Activity() const {
  if (parts_.empty()) {
    return {};
  }
  const Part& part = parts_[current_];
  std::string text;
  if (parts_.size() > 1) {
    text = std::to_string(current_ + 1) + " of " + std::to_string(parts_.size()) + ": ";
  }
  text.append(NameOf(part.kind)).append(", ").append(NameOf(observed_.stage));
  if (observed_.stage == Stage::kFits) {
    text.append(" ").append(observed_.fit);
  } else if (observed_.stage == Stage::kBurnin) {
    text += " " + std::to_string(observed_.burninDone) + " of " + std::to_string(part.burnin);
  } else if (observed_.stage == Stage::kMcmc) {
    text += " " + std::to_string(observed_.mcmcDone) + " of " +
            std::to_string(part.passes - part.burnin);
  } else if (observed_.stage == Stage::kPasses && part.passes > 0) {
    text += " " + std::to_string(done_) + " of " + std::to_string(part.passes);
  }
  return text;
}

std::string ProgressLine(const Progress& progress, double now, int columns) {
  constexpr int kBar = 20;
  const int percent = static_cast<int>(progress.Share() * 100);
  const int filled = static_cast<int>(progress.Share() * kBar);
  std::string line("[");
  line.append(static_cast<std::size_t>(filled), '#');
  line.append(static_cast<std::size_t>(kBar - filled), '-');
  std::string number = std::to_string(percent);
  number.insert(0, 4 - std::min<std::size_t>(number.size(), 4), ' ');
  line += "]" + number + " %";
  if (progress.Share() < 1) {
    const double left = progress.SecondsLeft(now);
    line += left >= 0 ? "  " + DurationText(left) + " left" : "";
    line += "  " + progress.Activity();
  }
  return line.substr(0, static_cast<std::size_t>(std::max(columns, 0)));
}

std::string DurationText(double seconds) {
  constexpr std::int64_t kMinute = 60;
  const auto whole = static_cast<std::int64_t>(std::ceil(seconds));
  const auto twoDigits = [](std::int64_t value) {
    return (value < 10 ? "0" : "") + std::to_string(value);
  };
  const std::int64_t minutes = whole / kMinute;
  const std::string tail = ":" + twoDigits(whole % kMinute);
  return minutes < kMinute
             ? std::to_string(minutes) + tail
             : std::to_string(minutes / kMinute) + ":" + twoDigits(minutes % kMinute) + tail;
}

}  // namespace Hovar
