#include "tools/run/run_record.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <set>

#include "build_info.h"
#include "foundation/io/platform/folders.h"
#include "foundation/io/platform/processes.h"
#include "tools/plan/estimating_equations.h"
#include "tools/support/files.h"
#include "tools/support/sha256.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

void WriteText(JsonWriter& json, std::string_view name, std::string_view value) {
  value.empty() ? json.Null(name) : json.Text(name, value);
}

void WriteSeed(JsonWriter& json, const PlannedRun& run) {
  json.BeginObject("seed");
  json.Bytes("type", run.seedType);
  json.BeginArray("elements");
  for (const std::string& word : run.seedWords) {
    json.Bytes({}, word);
  }
  json.EndArray();
  json.EndObject();
}

void WriteWarning(JsonWriter& json, const RunWarning& warning) {
  json.BeginObject();
  json.Text("text", warning.text);
  WriteText(json, "reason", warning.reason);
  WriteText(json, "fit", warning.fit);
  json.Number("count", warning.count);
  if (warning.burninCount + warning.mainCount > 0) {
    json.BeginObject("iterations");
    json.Number("burnin", warning.burninCount);
    json.Number("main", warning.mainCount);
    warning.burninCount > 0 ? json.Number("firstBurnin", warning.firstBurnin)
                            : json.Null("firstBurnin");
    warning.mainCount > 0 ? json.Number("firstMain", warning.firstMain) : json.Null("firstMain");
    json.EndObject();
  }
  if (!warning.records.empty()) {
    json.Numbers("records", warning.records);
  }
  json.EndObject();
}

/// Whether the fits, or the coefficients that the run has read, come from estimating equations, and
/// what of the run is not fit for inference then.
void WriteEstimatingEquations(JsonWriter& json, const PlannedRun& run) {
  const bool isAnalysis = run.kind == RunKind::kAnalysis;
  const std::optional<bool> isUsed =
      isAnalysis ? std::optional(run.usesEstimatingEquations) : HasClusteredDraws(run.coefficients);
  isUsed.has_value() ? json.Boolean("generalizedEstimatingEquations", *isUsed)
                     : json.Null("generalizedEstimatingEquations");
  const bool isUnfit = isAnalysis ? run.hasUnfitDraws : isUsed.value_or(false);
  isUnfit ? json.Text("notFitForInference", WhatIsUnfit({})) : json.Null("notFitForInference");
}

std::string Host() {
  std::array<char, 256> name;
  return Platform::HostName(name.data(), name.size()) ? std::string(name.data()) : std::string();
}

std::string WorkingFolder() {
  std::array<char, 4096> path;
  return Platform::CurrentFolder(path.data(), path.size()) ? std::string(path.data())
                                                           : std::string();
}

void WriteProgram(JsonWriter& json) {
  json.BeginObject("program");
  json.Text("version", kVersion);
  json.Text("compiler", kCompiler);
  WriteText(json, "buildType", kBuildType);
  json.Text("system", kSystem);
  json.EndObject();
}

}  // namespace

RunRecord::InputFacts RunRecord::FactsOf(const std::string& path) {
  const std::optional<std::string> hash = Sha256OfFile(path);
  const std::int64_t size = hash ? FileSize(path).value_or(-1) : -1;
  return size >= 0 ? InputFacts{path, *hash, size} : InputFacts{path, {}, 0};
}

/// Of a definition, of which no bytes are known when it could not be read.
RunRecord::InputFacts RunRecord::FactsOf(const std::string& path, const std::string& bytes) {
  return {path, bytes.empty() ? std::string() : Sha256Of(bytes),
          static_cast<std::int64_t>(bytes.size())};
}

RunRecord::RunRecord(const RunPlan& plan)
    : plan_(plan), start_(Platform::CalendarSeconds()), end_(start_) {
  std::map<std::string, InputFacts> known;  // definitions of a batch often share their data
  for (const PlannedRun& run : plan.runs) {
    const auto place = known.find(run.data);
    data_.push_back(place != known.end() ? place->second : FactsOf(run.data));
    known.emplace(run.data, data_.back());
  }
}

std::string RunRecord::UnreadableData() const {
  const auto found = std::find_if(data_.begin(), data_.end(), [](const InputFacts& data) {
    return data.sha256.empty() && Platform::KindOf(data.path.c_str()) == Platform::PathKind::kFile;
  });
  return found != data_.end() ? found->path : std::string();
}

std::string RunRecord::UnreadCoefficients() const {
  const auto found = std::find_if(plan_.runs.begin(), plan_.runs.end(), [](const PlannedRun& run) {
    return !run.coefficients.empty() && !HasClusteredDraws(run.coefficients).has_value();
  });
  return found != plan_.runs.end() ? found->coefficients : std::string();
}

void RunRecord::AddChanged(const std::string& path) {
  if (std::find(changed_.begin(), changed_.end(), path) == changed_.end()) {
    changed_.push_back(path);
  }
}

void RunRecord::NoteEnd(bool withData) {
  end_ = Platform::CalendarSeconds();
  const auto lookAt = [this](const std::string& path, const std::string& bytes) {
    if (!bytes.empty() && ReadSmallFile(path) != bytes) {
      AddChanged(path);
    }
  };
  lookAt(plan_.definition, plan_.definitionBytes);
  for (const PlannedRun& run : plan_.runs) {
    lookAt(run.definition, run.definitionBytes);
  }
  std::set<std::string> known;
  for (const InputFacts& data : data_) {
    const bool isToHash = withData && !data.sha256.empty() && known.insert(data.path).second;
    const bool hasOther = isToHash && Sha256OfFile(data.path) != data.sha256;
    if (hasOther && Platform::StopRequest() == 0) {  // which would have ended the hashing
      AddChanged(data.path);
    }
  }
}

void RunRecord::WriteFile(JsonWriter& json, std::string_view name, const InputFacts& facts) const {
  json.BeginObject(name);
  json.Bytes("path", facts.path);
  WriteText(json, "sha256", facts.sha256);
  facts.sha256.empty() ? json.Null("bytes") : json.Number("bytes", facts.size);
  if (std::find(changed_.begin(), changed_.end(), facts.path) != changed_.end()) {
    json.Boolean("changedDuringRun", true);
  }
  json.EndObject();
}

std::string RunRecord::Text(const RunLines& lines, int exitStatus) const {
  JsonWriter json;
  json.BeginObject();
  json.Text("format", "hovar run record");
  json.Number("formatVersion", 1);
  WriteProgram(json);
  WriteText(json, "host", Host());
  const std::string folder = WorkingFolder();
  folder.empty() ? json.Null("folder") : json.Bytes("folder", folder);
  json.Text("start", UtcText(start_));
  json.Text("end", UtcText(end_));
  json.Number("exitStatus", exitStatus);
  lines.Error().empty() ? json.Null("error") : json.Bytes("error", lines.Error());
  WriteFile(json, "definition", FactsOf(plan_.definition, plan_.definitionBytes));
  plan_.kind ? json.Text("kind", NameOf(*plan_.kind)) : json.Null("kind");
  json.BeginArray("runs");
  for (std::size_t i = 0; i < plan_.runs.size(); ++i) {
    const PlannedRun& run = plan_.runs[i];
    json.BeginObject();
    WriteFile(json, "definition", FactsOf(run.definition, run.definitionBytes));
    json.Text("kind", NameOf(run.kind));
    WriteFile(json, "data", data_[i]);
    WriteSeed(json, run);
    WriteEstimatingEquations(json, run);
    json.BeginArray("warnings");
    if (i < lines.Runs().size()) {
      for (const RunWarning& warning : lines.Runs()[i].warnings) {
        WriteWarning(json, warning);
      }
    }
    json.EndArray();
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
  return json.Finish();
}

std::string UtcText(std::int64_t seconds) {
  using std::chrono::days;
  const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
  const auto day = std::chrono::floor<days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  const auto padded = [](std::int64_t value, std::size_t digits) {
    const std::string text = std::to_string(value);
    return std::string(digits - std::min(text.size(), digits), '0') + text;
  };
  return padded(int{date.year()}, 4) + "-" + padded(unsigned{date.month()}, 2) + "-" +
         padded(unsigned{date.day()}, 2) + "T" + padded(clock.hours().count(), 2) + ":" +
         padded(clock.minutes().count(), 2) + ":" + padded(clock.seconds().count(), 2) + "Z";
}

}  // namespace Hovar
