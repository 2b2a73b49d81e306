#include "faults/hostile_places.h"

#include <algorithm>

#include "blackbox/runs.h"
#include "blackbox/tiny_study.h"

namespace Testing {
namespace {

/// A file that a definition names.
struct Role {
  std::string what;
  std::string definition;
  std::string file;
  std::string content;
  bool isOutput = false;
  bool isNameFixed = false;
};

std::string Coefficients() { return std::string(kCoefficientHeader) + kModelRow; }
std::string Individual() { return std::string(kIndividualHeader) + kIndividualRows; }

std::vector<Role> Roles() {
  const std::string analysis = AnalysisText();
  const std::string prediction = PredictionText();
  const std::string validation = ValidationText();
  const auto named = [](const std::string& text, const std::string& name) {
    return Replaced(text, ">" + name + "<", ">@<");
  };
  const auto data = [&](const std::string& text) { return named(text, "data.csv"); };
  return {
      {"data of an Analysis", data(analysis), "@", kTinyData},
      {"data of a Prediction", data(prediction), "@", kTinyData},
      {"data of a Validation", data(validation), "@", kTinyData},
      {"coefficients", named(prediction, "coefficients.csv"), "@", Coefficients()},
      {"coefficients of a Validation", named(validation, "coefficients.csv"), "@", Coefficients()},
      {"individual predictions", named(validation, "individual.csv"), "@", Individual()},
      {"member of a Batch", BatchText({"@"}), "@", prediction},
      {"later member of a Batch", BatchText({"analysis.xml", "@"}), "@", validation},
      {"output folder", named(analysis, "out"), "@", "", true},
      {"fitted coefficients", named(analysis, "fitted.csv"), "out/@", "", true},
      {"chain folder", named(analysis, "mcmc"), "out/@", "", true},
      {"log", named(analysis, "analysis.log"), "out/@", "", true},
      {"chain", analysis, "out/mcmc/Chain.csv", "", true, true},
      {"summary", analysis, "out/mcmc/Summary.csv", "", true, true},
      {"predictions", named(prediction, "predicted.csv"), "out/@", "", true},
      {"hospital predictions", named(prediction, "hospital.csv"), "out/@", "", true},
      {"C-statistics", named(validation, "cstatistics.csv"), "out/@", "", true},
  };
}

struct Tool {
  Task task;
  std::vector<std::string> arguments;
  bool hasChains = false;
};

std::vector<Tool> Tools() {
  return {
      {Task::kPlainRun, {"%"}},
      {Task::kEchoedRun, {"--keep", "%"}},
      {Task::kEchoedRun, {"--json", "r.json", "%"}},
      {Task::kEchoedRun, {"--json", "/dev/null", "%"}},
      {Task::kWatchedRun, {"--progress", "%"}},
      {Task::kWatchedRun, {"--keep", "--json", "r.json", "--progress", "%"}},
      {Task::kCheck, {"--check", "%"}},
      {Task::kCheck, {"--check", "--data", "--strict", "%"}},
      {Task::kChains, {"--chains", "2", "--jobs", "2", "%"}},
      {Task::kChains, {"--chains", "2", "--only", "1", "%"}},
      {Task::kChains, {"--chains", "2", "--collect", "%"}, true},
  };
}

std::string TextOf(const std::vector<std::string>& arguments) {
  std::string text = "hovar";
  for (const std::string& argument : arguments) {
    text += " " + argument;
  }
  return text;
}

/// A file of a tool itself, beside an analysis.
HostilePlace Own(Task task, const std::vector<std::string>& arguments, const std::string& file,
                 bool isOutput, bool hasChains = false) {
  HostilePlace place;
  place.what = TextOf(arguments) + ", " + file;
  place.task = task;
  place.arguments = arguments;
  place.definition = AnalysisText();
  place.definitionName = "d.xml";
  place.file = file;
  place.content = "table\n";
  place.isOutput = isOutput;
  place.isNameFixed = file.find('@') == std::string::npos;
  place.hasChains = hasChains;
  return place;
}

std::vector<HostilePlace> OwnPlaces() {
  const std::vector<std::string> chains{"--chains", "2", "%"};
  const std::vector<std::string> collect{"--chains", "2", "--collect", "%"};
  std::vector<HostilePlace> places = {
      Own(Task::kEchoedRun, {"--json", "@", "%"}, "@", true),
      Own(Task::kEchoedRun, {"--keep", "--json", "@", "%"}, "@", true),
      Own(Task::kWatchedRun, {"--progress", "--json", "@", "%"}, "@", true),
      Own(Task::kWatchedRun, {"--progress", "%"}, "out/analysis.log.output.txt", true),
      Own(Task::kWatchedRun, {"--keep", "--progress", "%"}, "out/analysis.log.output.txt", true),
      Own(Task::kReport, {"--report", "@"}, "@", false),
      Own(Task::kReport, {"--report", "out", "@"}, "@", false),
      Own(Task::kReport, {"--report", "out"}, "out/@", false),
      Own(Task::kReport, {"--report", "out"}, "out/sub/@", false),
      Own(Task::kReport, {"--report", "out"}, "out/@/a.csv", false),
      Own(Task::kReport, {"--report", "out"}, "out/report.html", true),
      Own(Task::kReport, {"--report", "out", "--output", "@"}, "@", true),
      Own(Task::kReport, {"--report", "out", "--output", "out/@"}, "out/@", true),
  };
  for (const char* file : {"chain-1", "chain-1/chain-1.xml", "chain-2/analysis.log.output.txt",
                           "chain-2/mcmc/Chain.csv", "chain-1/fitted.csv", "report.html"}) {
    places.push_back(Own(Task::kChains, chains, std::string("out/") + file, true));
    places.push_back(Own(Task::kChains, collect, std::string("out/") + file, true, true));
  }
  return places;
}

}  // namespace

bool HostilePlace::IsInDefinition() const { return definition.find('@') != std::string::npos; }

bool HostilePlace::IsOfTheTool() const {
  return !IsInDefinition() && definitionName != "@" && !file.starts_with("out/mcmc/");
}

std::vector<HostilePlace> HostilePlaces() {
  std::vector<HostilePlace> places = OwnPlaces();
  for (const Tool& tool : Tools()) {
    HostilePlace argument = Own(tool.task, tool.arguments, "@", false, tool.hasChains);
    argument.what = TextOf(tool.arguments) + ", the definition";
    argument.definition = "";
    argument.definitionName = "@";
    argument.content = AnalysisText();
    places.push_back(argument);
    for (const Role& role : Roles()) {
      HostilePlace place = argument;
      place.what = TextOf(tool.arguments) + ", " + role.what;
      place.definition = role.definition;
      place.definitionName = "d.xml";
      place.file = role.file;
      place.content = role.content;
      place.isOutput = role.isOutput;
      place.isNameFixed = role.isNameFixed;
      places.push_back(place);
    }
  }
  return places;
}

std::string WithName(std::string text, const std::string& name) {
  const std::size_t mark = text.find('@');
  return mark == std::string::npos ? text : text.replace(mark, 1, name);
}

}  // namespace Testing
