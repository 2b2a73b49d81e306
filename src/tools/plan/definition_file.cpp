#include "tools/plan/definition_file.h"

#include <algorithm>
#include <utility>

#include "foundation/io/file_stream.h"
#include "tools/support/error_capture.h"

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

/// Collects the outputs of a run, whose folder must be set.
class Outputs {
 public:
  explicit Outputs(DefinitionFile& file) : file_(file) {}

  void Add(const char* element, const char* what, const Vell::String& name) {
    file_.outputs.push_back({element, what, Text(Vell::JoinPath(file_.folder, name))});
  }
  void AddChainFile(const char* what, const char* name) {
    file_.outputs.push_back(
        {"Output/McmcSubFolder", what, Text(Vell::JoinPath(file_.chainFolder, name))});
  }

 private:
  DefinitionFile& file_;
};

// Each takes over what a definition says; outputs in the order in which the runners open them.

void Store(DefinitionFile& file, const AnalysisDefinition& definition) {
  file.data = Text(definition.data);
  file.poaCount = definition.numberOfPoaIndicators;
  file.folder = Text(definition.folder);
  file.chainFolder = Text(Vell::JoinPath(definition.folder, definition.mcmcSubFolder));
  file.mcmc = definition.mcmc;
  file.analysis = definition;
  Outputs outputs(file);
  outputs.Add("Output/LogFile", "log file", definition.logFile);
  outputs.AddChainFile("summary of the chain", "Summary.csv");
  outputs.AddChainFile("chain", "Chain.csv");
  outputs.Add("Output/RegressionCoefficients", "coefficient file",
              definition.regressionCoefficients);
}

void Store(DefinitionFile& file, const PredictionDefinition& definition) {
  file.data = Text(definition.data);
  file.poaCount = definition.numberOfPoaIndicators;
  file.coefficients = Text(definition.regressionCoefficients);
  file.folder = Text(definition.folder);
  file.mcmc = definition.mcmc;
  Outputs outputs(file);
  outputs.Add("Output/LogFile", "log file", definition.logFile);
  outputs.Add("Output/IndividualPredictions", "file of individual predictions",
              definition.individualPredictions);
  outputs.Add("Output/HospitalPredictions", "file of hospital predictions",
              definition.hospitalPredictions);
}

void Store(DefinitionFile& file, const ValidationDefinition& definition) {
  file.data = Text(definition.data);
  file.poaCount = definition.numberOfPoaIndicators;
  file.coefficients = Text(definition.regressionCoefficients);
  file.individualPredictions = Text(definition.individualPredictions);
  file.folder = Text(definition.folder);
  file.mcmc = definition.mcmc;
  Outputs outputs(file);
  outputs.Add("Output/LogFile", "log file", definition.logFile);
  outputs.Add("Output/CStatistics", "file of C-statistics", definition.cStatistics);
}

void Store(DefinitionFile& file, const BatchDefinition& definition) {
  for (const Vell::String& path : definition) {
    file.simulations.push_back(Text(path));
  }
}

/// Reads what stands between the root's tags.
void ReadContent(DefinitionFile& file, XmlReader& reader) {
  switch (file.kind) {
    case RunKind::kAnalysis:
      Store(file, ReadAnalysisDefinition(reader));
      break;
    case RunKind::kPrediction:
      Store(file, ReadPredictionDefinition(reader));
      break;
    case RunKind::kValidation:
      Store(file, ReadValidationDefinition(reader));
      break;
    case RunKind::kBatch:
      Store(file, ReadBatchDefinition(reader));
      break;
  }
}

std::string TypeOf(const XmlTag& tag) {
  for (const Vell::XmlAttribute& attribute : tag.attributes) {
    if (attribute.name.View() == "xsi:type") {
      return Text(attribute.value);
    }
  }
  return {};
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
      values.push_back({outer + Text(tag.name), offset, "", TypeOf(tag)});
      if (!tag.isEmpty) {
        groups.push_back(values.back().element);
        values.back().text = Text(reader.ReadText());
      }
    }
  });
  return values;
}

}  // namespace

const DefinedValue& DefinitionFile::Value(std::string_view element) const {
  static const DefinedValue none;
  const auto found = std::find_if(values.begin(), values.end(), [element](const DefinedValue& v) {
    return v.element == element;
  });
  return found != values.end() ? *found : none;
}

Place DefinitionFile::PlaceOfValue(std::string_view element) const {
  return PlaceOf(path, Value(element).offset);
}

Place DefinitionFile::PlaceOfTag(std::string_view element) const {
  return PlaceOf(path, TagBefore(path, Value(element).offset));
}

DefinitionReading ReadDefinitionFile(const std::string& path) {
  DefinitionReading reading;
  DefinitionFile definition;
  definition.path = path;
  const std::optional<std::string> error = ErrorOf([&] {
    const Vell::SharedHandle<FileStream> stream = OpenText(path);
    XmlReader reader(stream);
    try {
      const XmlTag root = ReadRootTag(reader);
      definition.kind = RunKindOf(root);
      ReadContent(definition, reader);
      reader.ReadEndTag(root.name);
    } catch (const Vell::Exceptions::Exception&) {
      reading.stop = stream->TellOr(0);
      throw;
    }
  });
  if (error.has_value()) {
    reading.error = *error;
    return reading;
  }
  definition.values = ValuesOf(path);
  reading.definition = std::move(definition);
  return reading;
}

}  // namespace Hovar
