#include "tools/run/run_lines.h"

#include <charconv>
#include <optional>
#include <span>

#include "messages/error_texts.h"
#include "messages/output_lines.h"
#include "regression/regression_results.h"

namespace Hovar {
namespace {

using Messages::kErrorPrefix;
using Messages::kLines;
using Messages::kWarningPrefix;
using Messages::kWarnings;

// The warning that names a record, up to and without what precedes the number.
constexpr std::string_view kBeforeRecord = ": ";
constexpr std::string_view kRecordWarning = [] {
  std::string_view text = kWarnings.outcomeAbsent.Piece(0);
  text.remove_suffix(kBeforeRecord.size());
  return text;
}();
static_assert(kWarnings.outcomeAbsent.Piece(0).ends_with(kBeforeRecord));
static_assert(kRecordWarning.starts_with(kWarningPrefix));
static_assert(kWarnings.iterationLimit.Text().starts_with(kWarningPrefix));

// The fits before the chain, which have a line of their own each.
constexpr std::span kFitLabels = std::span(kModelLabels).first<4>();
constexpr std::string_view kChainFit =
    kModelLabels[static_cast<std::size_t>(Model::kYGivenXWithoutPMcmc)];

/// Takes a prefix off the text; false when it does not begin with it.
bool TakePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) {
    return false;
  }
  text.remove_prefix(prefix.size());
  return true;
}

/// Takes the number that the text begins with.
std::optional<std::int64_t> TakeNumber(std::string_view& text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) {
    return std::nullopt;
  }
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

/// True for "3/20".
bool IsPass(std::string_view line) {
  return TakeNumber(line) && TakePrefix(line, kLines.pass.Piece(1)) && TakeNumber(line) &&
         line.empty();
}

}  // namespace

ObservedRun& RunLines::Run() {
  if (runs_.empty()) {
    runs_.emplace_back();
  }
  return runs_.back();
}

void RunLines::Take(std::string_view line) {
  if (line.ends_with('\r')) {
    line.remove_suffix(1);
  }
  if (line.starts_with(kErrorPrefix)) {
    error_ = line;
  } else if (line.starts_with(kWarningPrefix) || line == kWarnings.empiricalVariance) {
    TakeWarning(line);
  } else {
    TakeStage(line);
  }
}

void RunLines::TakeStage(std::string_view line) {
  if (line == kLines.readingDataFile) {
    End();
    runs_.emplace_back();
    isInChain_ = false;
    return;
  }
  if (runs_.empty()) {
    return;  // the banner
  }
  ObservedRun& run = Run();
  for (const std::string_view label : kFitLabels) {
    if (line == label && run.stage <= Stage::kFits) {
      run.stage = Stage::kFits;
      run.fit = label;
      ++run.fitsBegun;
      return;
    }
  }
  if (line == kLines.mcmcAnalysis || line == kLines.mcmcAnalysisGee) {
    isInChain_ = true;
    run.fit = kChainFit;
  } else if (line == kLines.individualPredictions) {
    run.stage = Stage::kPasses;
  } else if (line == kLines.hospitalPredictions) {
    run.stage = Stage::kHospitals;
  } else if (IsPass(line)) {
    run.stage = Stage::kPasses;
    ++run.passesBegun;
  } else if (TakePrefix(line, kLines.burnin.Piece(0))) {
    TakeIteration(Stage::kBurnin, TakeNumber(line).value_or(0));
  } else if (TakePrefix(line, kLines.mcmc.Piece(0))) {
    TakeIteration(Stage::kMcmc, TakeNumber(line).value_or(0));
  } else if (run.stage == Stage::kReading && line.starts_with(kLines.hospital.Piece(0))) {
    // An ID may hold any text, so the numbers are looked for at the end.
    constexpr std::string_view kRecord = kLines.hospital.Piece(1);
    const std::size_t place = line.rfind(kRecord);
    if (place != std::string_view::npos) {
      line.remove_prefix(place + kRecord.size());
      run.recordsRead = TakeNumber(line).value_or(0);
      run.recordCount =
          TakePrefix(line, kLines.hospital.Piece(2)) ? TakeNumber(line).value_or(0) : 0;
    }
  }
}

void RunLines::TakeIteration(Stage stage, std::int64_t iteration) {
  ObservedRun& run = Run();
  run.stage = stage;
  (stage == Stage::kBurnin ? run.burninDone : run.mcmcDone) = iteration;
  SettlePending(stage, iteration);
}

void RunLines::TakeWarning(std::string_view line) {
  ++warningCount_;
  std::string reason;
  if (line == kWarnings.empiricalVariance) {
    // The failed factorisation's own line came first; it ends nothing.
    reason.swap(error_);
  }
  if (isInChain_) {
    pending_.emplace_back(line, reason);
    return;
  }
  if (line.starts_with(kRecordWarning)) {
    RunWarning& warning = WarningOf(kRecordWarning, reason);
    ++warning.count;
    line.remove_prefix(kRecordWarning.size());
    if (TakePrefix(line, kBeforeRecord)) {
      warning.records.push_back(TakeNumber(line).value_or(-1));
    }
    return;
  }
  ++WarningOf(line, reason).count;
}

RunWarning& RunLines::WarningOf(std::string_view text, std::string_view reason) {
  ObservedRun& run = Run();
  for (RunWarning& warning : run.warnings) {
    if (warning.text == text && warning.reason == reason && warning.fit == run.fit) {
      return warning;
    }
  }
  run.warnings.emplace_back();
  run.warnings.back().text = text;
  run.warnings.back().reason = reason;
  run.warnings.back().fit = run.fit;
  return run.warnings.back();
}

void RunLines::SettlePending(Stage stage, std::int64_t iteration) {
  for (const auto& [text, reason] : pending_) {
    RunWarning& warning = WarningOf(text, reason);
    ++warning.count;
    std::int64_t& count = stage == Stage::kBurnin ? warning.burninCount : warning.mainCount;
    std::int64_t& first = stage == Stage::kBurnin ? warning.firstBurnin : warning.firstMain;
    first = count++ == 0 ? iteration : first;
  }
  pending_.clear();
}

void RunLines::End() {
  for (const auto& [text, reason] : pending_) {
    ++WarningOf(text, reason).count;
  }
  pending_.clear();
}

std::string_view NameOf(Stage stage) noexcept {
  switch (stage) {
    case Stage::kReading:
      return "reading data";
    case Stage::kFits:
      return "fits";
    case Stage::kBurnin:
      return "burn-in";
    case Stage::kMcmc:
      return "iteration";
    case Stage::kPasses:
      return "pass";
    case Stage::kHospitals:
      return "hospitals";
  }
  return "";
}

}  // namespace Hovar
