#include "app/definition/definitions.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <variant>

#include "app/definition/element_table.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/random/random_generator.h"
#include "messages/error_texts.h"

namespace Hovar {
namespace {

using Vell::Exceptions::Exception;

/// Where the value of an element goes.
using Field =
    std::variant<std::monostate, Vell::String*, std::int32_t*, double*, WorkingCorrelation*>;

/// The fields that all runs of a data file have.
template <typename Definition>
Field CommonFieldOf(Definition& definition, Element element) {
  switch (element) {
    case Element::kData:
      return &definition.data;
    case Element::kNumberOfPoaIndicators:
      return &definition.numberOfPoaIndicators;
    case Element::kFolder:
      return &definition.folder;
    case Element::kLogFile:
      return &definition.logFile;
    case Element::kThinning:
      return &definition.mcmc.thinning;
    case Element::kBurnin:
      return &definition.mcmc.burnin;
    case Element::kSteps:
      return &definition.mcmc.steps;
    default:
      return {};
  }
}

Field FieldOf(AnalysisDefinition& definition, Element element) {
  switch (element) {
    case Element::kRegressionCoefficients:
      return &definition.regressionCoefficients;
    case Element::kMcmcSubFolder:
      return &definition.mcmcSubFolder;
    case Element::kUseGeneralizedEstimatingEquations:
      return &definition.useGeneralizedEstimatingEquations;
    case Element::kLinearDependenceTolerance:
      return &definition.linearDependenceTolerance;
    case Element::kParametersTolerance:
      return &definition.parameters.tolerance;
    case Element::kParametersMaxIterations:
      return &definition.parameters.maxIterations;
    case Element::kParametersPriorPrecision:
      return &definition.parameters.priorPrecision;
    case Element::kParametersMcmcTolerance:
      return &definition.parametersMcmc.tolerance;
    case Element::kParametersMcmcMaxIterations:
      return &definition.parametersMcmc.maxIterations;
    case Element::kParametersMcmcPriorPrecision:
      return &definition.parametersMcmc.priorPrecision;
    default:
      return CommonFieldOf(definition, element);
  }
}

Field FieldOf(PredictionDefinition& definition, Element element) {
  switch (element) {
    case Element::kInputRegressionCoefficients:
      return &definition.regressionCoefficients;
    case Element::kIndividualPredictions:
      return &definition.individualPredictions;
    case Element::kHospitalPredictions:
      return &definition.hospitalPredictions;
    default:
      return CommonFieldOf(definition, element);
  }
}

Field FieldOf(ValidationDefinition& definition, Element element) {
  switch (element) {
    case Element::kInputRegressionCoefficients:
      return &definition.regressionCoefficients;
    case Element::kInputIndividualPredictions:
      return &definition.individualPredictions;
    case Element::kCStatistics:
      return &definition.cStatistics;
    default:
      return CommonFieldOf(definition, element);
  }
}

WorkingCorrelation ReadWorkingCorrelation(Vell::XmlReader& reader, std::string_view name) {
  const Vell::String text = reader.ReadTextElement(name);
  if (text.View() == "true") {
    return WorkingCorrelation::kExchangeable;
  }
  if (text.View() == "false") {
    return WorkingCorrelation::kIndependent;
  }
  throw Exception(Messages::kErrors.invalidFlag);
}

/// Reads one element that holds a value. The field has the type that the table says, or no
/// definition could be read.
void ReadValue(Vell::XmlReader& reader, const ElementEntry& entry, const Field& field) {
  switch (ValueKindOf(entry.type)) {
    case ValueKind::kText:
      *std::get<Vell::String*>(field) = reader.ReadTextElement(entry.Name());
      break;
    case ValueKind::kFlag:
      *std::get<WorkingCorrelation*>(field) = ReadWorkingCorrelation(reader, entry.Name());
      break;
    case ValueKind::kWholeNumber:
      *std::get<std::int32_t*>(field) = reader.ReadIntegerElement(entry.Name());
      break;
    case ValueKind::kReal:
      *std::get<double*>(field) = reader.ReadRealElement(entry.Name());
      break;
    case ValueKind::kElements:
      break;
  }
}

/// The groups that have begun, outermost first.
class OpenGroups {
 public:
  explicit OpenGroups(Vell::XmlReader& reader) : reader_(reader) {}

  void Begin(const ElementEntry& group) {
    reader_.ReadStartTag(group.Name());
    names_[count_++] = group.Name();
  }
  /// Ends groups until so many are left.
  void EndTo(std::size_t count) {
    while (count_ > count) {
      reader_.ReadEndTag(names_[--count_]);
    }
  }

 private:
  static constexpr std::size_t kDeepest =
      std::max_element(
          kElements.begin(), kElements.end(),
          [](const ElementEntry& a, const ElementEntry& b) { return a.Depth() < b.Depth(); })
          ->Depth();

  Vell::XmlReader& reader_;
  std::array<std::string_view, kDeepest> names_;
  std::size_t count_ = 0;
};

/// Reads the elements of a kind of run in the order of the table. The content of the Seed element
/// belongs to the random generator.
template <typename Definition>
Definition ReadElements(Vell::XmlReader& reader, RunKind kind) {
  Definition definition;
  OpenGroups groups(reader);
  for (const ElementEntry& entry : kElements) {
    if (!entry.kinds.Contains(kind) || entry.IsWithin(EntryOf(Element::kSeed))) {
      continue;
    }
    groups.EndTo(entry.Depth());
    if (entry.element == Element::kSeed) {
      Vell::RandomGenerator::ReadXml(reader);
    } else if (ValueKindOf(entry.type) == ValueKind::kElements) {
      groups.Begin(entry);
    } else {
      ReadValue(reader, entry, FieldOf(definition, entry.element));
    }
  }
  groups.EndTo(0);
  return definition;
}

}  // namespace

AnalysisDefinition ReadAnalysisDefinition(Vell::XmlReader& reader) {
  return ReadElements<AnalysisDefinition>(reader, RunKind::kAnalysis);
}

PredictionDefinition ReadPredictionDefinition(Vell::XmlReader& reader) {
  return ReadElements<PredictionDefinition>(reader, RunKind::kPrediction);
}

ValidationDefinition ReadValidationDefinition(Vell::XmlReader& reader) {
  return ReadElements<ValidationDefinition>(reader, RunKind::kValidation);
}

BatchDefinition ReadBatchDefinition(Vell::XmlReader& reader) {
  constexpr std::string_view kList = EntryOf(Element::kSimulations).Name();
  constexpr std::string_view kEntry = EntryOf(Element::kSimulation).Name();
  BatchDefinition definition;
  reader.ReadStartTag(kList);
  for (Vell::XmlTag tag = reader.ReadTag(); !tag.IsEnd(kList); tag = reader.ReadTag()) {
    if (!tag.IsStart(kEntry) || tag.isEmpty) {
      throw Exception(Messages::kErrors.invalidBatch);
    }
    definition.Append(reader.ReadText());
    reader.ReadEndTag(kEntry);
  }
  return definition;
}

}  // namespace Hovar
