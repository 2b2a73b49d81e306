// The definition reader: the XML reader with the four grammars, entered as the program enters them.

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>

#include "app/definition/definitions.h"
#include "foundation/shared_handle.h"
#include "foundation/xml/xml_reader.h"
#include "fuzz_support.h"
#include "support/memory_stream.h"

namespace {

using Fuzzing::Require;

/// The values of a definition, one after the other.
class Values {
 public:
  void Add(const Vell::String& text) { text_.append(text.View()).push_back('\n'); }
  void Add(std::int32_t number) { text_ += std::to_string(number) + '\n'; }
  void Add(Hovar::WorkingCorrelation correlation) { Add(static_cast<std::int32_t>(correlation)); }
  void Add(double number) {
    text_ +=
        number != number ? "nan\n" : std::to_string(std::bit_cast<std::uint64_t>(number)) + '\n';
  }
  void Add(const Hovar::McmcSettings& settings) {
    Add(settings.thinning);
    Add(settings.burnin);
    Add(settings.steps);
  }
  void Add(const Hovar::RegressionParameters& parameters) {
    Add(parameters.tolerance);
    Add(parameters.maxIterations);
    Add(parameters.priorPrecision);
  }
  void Add(const Hovar::AnalysisDefinition& definition) {
    AddAll(definition.data, definition.numberOfPoaIndicators, definition.folder,
           definition.regressionCoefficients, definition.mcmcSubFolder, definition.logFile,
           definition.useGeneralizedEstimatingEquations, definition.linearDependenceTolerance,
           definition.parameters, definition.parametersMcmc, definition.mcmc);
  }
  void Add(const Hovar::PredictionDefinition& definition) {
    AddAll(definition.data, definition.numberOfPoaIndicators, definition.regressionCoefficients,
           definition.folder, definition.individualPredictions, definition.hospitalPredictions,
           definition.logFile, definition.mcmc);
  }
  void Add(const Hovar::ValidationDefinition& definition) {
    AddAll(definition.data, definition.numberOfPoaIndicators, definition.regressionCoefficients,
           definition.individualPredictions, definition.folder, definition.cStatistics,
           definition.logFile, definition.mcmc);
  }
  void Add(const Hovar::BatchDefinition& definition) {
    for (const Vell::String& path : definition) {
      Add(path);
    }
  }

  const std::string& Text() const { return text_; }

 private:
  template <typename... Parts>
  void AddAll(const Parts&... parts) {
    (Add(parts), ...);
  }

  std::string text_;
};

void AddTag(Values& values, const Vell::XmlTag& tag) {
  values.Add(static_cast<std::int32_t>(tag.kind));
  values.Add(std::int32_t{tag.isEmpty ? 1 : 0});
  values.Add(tag.name);
  for (const Vell::XmlAttribute& attribute : tag.attributes) {
    values.Add(attribute.name);
    values.Add(attribute.value);
  }
}

/// Under a root that no grammar has: every tag and text of the file.
void ReadTagsAndTexts(Values& values, Vell::XmlReader& reader) {
  while (reader.Source().Peek() != Vell::IO::kEndOfStream) {
    values.Add(reader.ReadText());
    AddTag(values, reader.ReadTag());
  }
}

void ReadDefinition(Values& values, Vell::XmlReader& reader) {
  Vell::XmlTag root = reader.ReadTag();
  while (root.kind == Vell::XmlTag::Kind::kDeclaration) {
    root = reader.ReadTag();
  }
  AddTag(values, root);
  const std::string_view name = root.name;
  if (name == "Analysis") {
    values.Add(Hovar::ReadAnalysisDefinition(reader));
  } else if (name == "Prediction") {
    values.Add(Hovar::ReadPredictionDefinition(reader));
  } else if (name == "Validation") {
    values.Add(Hovar::ReadValidationDefinition(reader));
  } else if (name == "Batch") {
    values.Add(Hovar::ReadBatchDefinition(reader));
  } else {
    ReadTagsAndTexts(values, reader);
    return;
  }
  reader.ReadEndTag(name);
}

struct Reading {
  const std::type_info* error = nullptr;
  Values values;
  std::int64_t position = 0;  // of the stream, afterwards
};

Reading Read(std::string_view text, std::size_t windowSize) {
  Reading reading;
  Vell::XmlReader reader(
      Vell::MakeShared<Testing::MemoryStream>(text, windowSize, "definition.xml"));
  reading.error = Fuzzing::ErrorOf([&] { ReadDefinition(reading.values, reader); });
  reading.position = reader.Source().Tell();
  return reading;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = Fuzzing::TextOf(data, size);
  const Reading whole = Read(text, Testing::MemoryStream::kWhole);
  const Reading bytewise = Read(text, 1);
  Require(Fuzzing::AreSameError(whole.error, bytewise.error), "the block decides about the error");
  Require(whole.values.Text() == bytewise.values.Text(), "the block decides about the values");
  Require(whole.position == bytewise.position, "the block decides how much is read");
  return 0;
}
