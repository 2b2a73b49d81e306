#include "app/launcher/check_definition.h"

#include <algorithm>

#include "app/launcher/check_grammar.h"
#include "app/launcher/check_places.h"
#include "app/launcher/check_reading.h"
#include "foundation/io/file_stream.h"
#include "foundation/io/platform/folders.h"

namespace Hovar {
namespace {

using Vell::XmlReader;
using Vell::XmlTag;
using Vell::IO::FileStream;

std::string Text(const Vell::String& text) { return std::string(text.View()); }

Vell::SharedHandle<FileStream> OpenText(const std::string& path) {
  return Vell::MakeShared<FileStream>(Vell::String(std::string_view(path)),
                                      Vell::IO::Mode::kReadText);
}

/// Collects the outputs of a plan, whose folder must be set.
class Outputs {
 public:
  explicit Outputs(RunPlan& plan) : plan_(plan) {}

  void Add(const char* element, const char* what, const Vell::String& name) {
    plan_.outputs.push_back({element, what, Text(Vell::JoinPath(plan_.folder, name))});
  }
  void AddChainFile(const char* what, const char* name) {
    plan_.outputs.push_back(
        {"Output/McmcSubFolder", what, Text(Vell::JoinPath(plan_.chainFolder, name))});
  }

 private:
  RunPlan& plan_;
};

// Each turns a definition into the plan; outputs in the order in which the runners open them.

void Store(RunPlan& plan, const AnalysisDefinition& definition) {
  plan.data = Text(definition.data);
  plan.poaCount = definition.numberOfPoaIndicators;
  plan.folder = Text(definition.folder);
  plan.chainFolder = Text(Vell::JoinPath(definition.folder, definition.mcmcSubFolder));
  plan.mcmc = definition.mcmc;
  plan.analysis = definition;
  Outputs outputs(plan);
  outputs.Add("Output/LogFile", "log file", definition.logFile);
  outputs.AddChainFile("summary of the chain", "Summary.csv");
  outputs.AddChainFile("chain", "Chain.csv");
  outputs.Add("Output/RegressionCoefficients", "coefficient file",
              definition.regressionCoefficients);
}

void Store(RunPlan& plan, const PredictionDefinition& definition) {
  plan.data = Text(definition.data);
  plan.poaCount = definition.numberOfPoaIndicators;
  plan.coefficients = Text(definition.regressionCoefficients);
  plan.folder = Text(definition.folder);
  plan.mcmc = definition.mcmc;
  Outputs outputs(plan);
  outputs.Add("Output/LogFile", "log file", definition.logFile);
  outputs.Add("Output/IndividualPredictions", "file of individual predictions",
              definition.individualPredictions);
  outputs.Add("Output/HospitalPredictions", "file of hospital predictions",
              definition.hospitalPredictions);
}

void Store(RunPlan& plan, const ValidationDefinition& definition) {
  plan.data = Text(definition.data);
  plan.poaCount = definition.numberOfPoaIndicators;
  plan.coefficients = Text(definition.regressionCoefficients);
  plan.individualPredictions = Text(definition.individualPredictions);
  plan.folder = Text(definition.folder);
  plan.mcmc = definition.mcmc;
  Outputs outputs(plan);
  outputs.Add("Output/LogFile", "log file", definition.logFile);
  outputs.Add("Output/CStatistics", "file of C-statistics", definition.cStatistics);
}

void Store(RunPlan& plan, const BatchDefinition& definition) {
  for (const Vell::String& path : definition) {
    plan.simulations.push_back(Text(path));
  }
}

/// Reads what stands between the root's tags.
void ReadContent(RunPlan& plan, XmlReader& reader) {
  switch (plan.kind) {
    case RunKind::kAnalysis:
      Store(plan, ReadAnalysisDefinition(reader));
      break;
    case RunKind::kPrediction:
      Store(plan, ReadPredictionDefinition(reader));
      break;
    case RunKind::kValidation:
      Store(plan, ReadValidationDefinition(reader));
      break;
    case RunKind::kBatch:
      Store(plan, ReadBatchDefinition(reader));
      break;
  }
}

/// Walks through a definition that follows the grammar and notes where its values stand.
std::vector<DefinedValue> ValuesOf(const std::string& path) {
  std::vector<DefinedValue> values;
  ErrorOf([&] {
    XmlReader reader(OpenText(path));
    std::vector<std::string> groups;
    for (ReadRootTag(reader);;) {
      const XmlTag tag = reader.ReadTag();
      if (tag.kind == XmlTag::Kind::kEnd) {
        if (groups.empty()) {
          return;
        }
        groups.pop_back();
        continue;
      }
      const std::string outer = groups.empty() ? "" : groups.back() + '/';
      const std::int64_t offset = reader.Source().Tell();
      values.push_back({outer + Text(tag.name), offset, ""});
      if (!tag.isEmpty) {
        groups.push_back(values.back().element);
        values.back().text = Text(reader.ReadText());
      }
    }
  });
  return values;
}

}  // namespace

const DefinedValue& RunPlan::Value(std::string_view element) const {
  static const DefinedValue none;
  const auto found = std::find_if(values.begin(), values.end(), [element](const DefinedValue& v) {
    return v.element == element;
  });
  return found != values.end() ? *found : none;
}

Place RunPlan::PlaceOfValue(std::string_view element) const {
  return PlaceOf(definition, Value(element).offset);
}

Place RunPlan::PlaceOfTag(std::string_view element) const {
  return PlaceOf(definition, TagBefore(definition, Value(element).offset));
}

std::optional<RunPlan> ReadRunPlan(Findings& findings, const std::string& path) {
  RunPlan plan;
  plan.definition = path;
  std::int64_t stop = 0;
  const std::optional<std::string> error = ErrorOf([&] {
    const Vell::SharedHandle<FileStream> stream = OpenText(path);
    XmlReader reader(stream);
    try {
      const XmlTag root = ReadRootTag(reader);
      plan.kind = RunKindOf(root);
      ReadContent(plan, reader);
      reader.ReadEndTag(root.name);
    } catch (const Vell::Exceptions::Exception&) {
      stop = stream->Tell();
      throw;
    }
  });
  if (error.has_value()) {
    const GrammarError explained = ExplainGrammarError(path, stop, *error);
    findings.AddError(path, PlaceOf(path, explained.offset), explained.text);
    return std::nullopt;
  }
  plan.values = ValuesOf(path);
  return plan;
}

bool CheckInputFile(Findings& findings, const std::string& path, std::string_view what,
                    std::string_view file, Place place) {
  using Vell::IO::Platform::PathKind;
  const std::string subject = "The " + std::string(what) + ' ' + Quoted(path);
  switch (Vell::IO::Platform::KindOf(path.c_str())) {
    case PathKind::kMissing: {
      const bool hasBlanks = !path.empty() && (path.front() <= ' ' || path.back() <= ' ');
      findings.AddError(file, place,
                        subject + (hasBlanks ? " does not exist. Remove the white space around the "
                                               "name, which belongs to it."
                                             : " does not exist. Correct the name, or the folder "
                                               "that you start in: paths are taken from there."));
      return false;
    }
    case PathKind::kFolder:
      findings.AddError(file, place, subject + " is a folder. Name a file in it.");
      return false;
    case PathKind::kOther:
      findings.AddError(file, place,
                        subject +
                            " is no regular file. Name one: the program reads "
                            "its input more than once.");
      return false;
    case PathKind::kFile:
      break;
  }
  if (ErrorOf([&path] { OpenText(path)->Peek(); }).has_value()) {
    findings.AddError(file, place, subject + " cannot be read. Ask for the right to read it.");
    return false;
  }
  return true;
}

}  // namespace Hovar
