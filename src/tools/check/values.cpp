#include "tools/check/values.h"

#include <array>
#include <cmath>
#include <cstdlib>

#include "foundation/io/number_text.h"
#include "mcmc/mcmc_model.h"
#include "tools/check/definition_messages.h"
#include "tools/check/odd_cells.h"
#include "tools/support/message.h"
#include "tools/support/text_places.h"

namespace Hovar {
namespace {

class ValueCheck {
 public:
  ValueCheck(Findings& findings, const DefinitionFile& definition)
      : findings_(findings), definition_(definition) {}

  void Error(std::string_view element, std::string text) {
    findings_.AddError(definition_.path, definition_.PlaceOfValue(element), std::move(text));
  }
  void Warning(std::string_view element, std::string text, Weight weight = Weight::kResults) {
    findings_.AddWarning(definition_.path, definition_.PlaceOfValue(element), std::move(text),
                         weight);
  }

  void Count(std::string_view element, std::int32_t value) {
    if (value < 0) {
      Warning(element, Filled(kValueMessages.negativeCount, value));
    }
  }

  void Tolerance(std::string_view element, double value) {
    if (!(value > 0) || std::isinf(value)) {
      Warning(element, Filled(kValueMessages.tolerance));
    }
  }

  void Fit(const std::string& element, const RegressionParameters& parameters) {
    Tolerance(element + "/Tolerance", parameters.tolerance);
    if (parameters.maxIterations < 1) {
      Warning(element + "/MaxIterations", Filled(kValueMessages.firstStep));
    }
    if (!(parameters.priorPrecision >= 0) || std::isinf(parameters.priorPrecision)) {
      Warning(element + "/PriorPrecision", Filled(kValueMessages.precision));
    }
  }

 private:
  Findings& findings_;
  const DefinitionFile& definition_;
};

bool IsSpaced(std::string_view text) noexcept {
  return !text.empty() && (text.front() == ' ' || text.back() == ' ' || text.front() == '\t' ||
                           text.back() == '\t' || text.find('\n') != std::string_view::npos);
}

bool HasEntity(std::string_view text) noexcept {
  const std::size_t start = text.find('&');
  return start != std::string_view::npos && text.find(';', start) != std::string_view::npos;
}

/// Paths and names, which are taken as they stand.
void CheckTexts(ValueCheck& check, const DefinitionFile& definition) {
  constexpr std::array<std::string_view, 10> kTexts = {
      "Input/Data",        "Input/RegressionCoefficients",  "Input/IndividualPredictions",
      "Output/Folder",     "Output/RegressionCoefficients", "Output/McmcSubFolder",
      "Output/LogFile",    "Output/IndividualPredictions",  "Output/HospitalPredictions",
      "Output/CStatistics"};
  for (const std::string_view element : kTexts) {
    const std::string& text = definition.Value(element).text;
    const bool isOutput = element.starts_with("Output/");  // an input of this name is missing
    if (isOutput && IsSpaced(text)) {
      check.Warning(element, Filled(kValueMessages.whiteSpace), Weight::kFiles);
    }
    if (HasEntity(text)) {
      check.Warning(element, Filled(kValueMessages.entity), Weight::kFiles);
    }
  }
}

/// Whole numbers of which only the low 32 bits are kept, without a message.
void CheckWholeNumbers(Findings& findings, const DefinitionFile& definition) {
  constexpr std::array<std::string_view, 6> kNames = {
      "NumberOfPoaIndicators", "MaxIterations", "Thinning", "Burnin", "Steps", "Element"};
  for (const DefinedValue& value : definition.values) {
    const std::string_view name =
        std::string_view(value.element).substr(value.element.find_last_of('/') + 1);
    const bool isWord = name == "Element";
    bool isWhole = false;
    for (const std::string_view whole : kNames) {
      isWhole = isWhole || name == whole;
    }
    // Of a number that is too long for any type the nearest one, which is outside as well.
    const long long number = isWhole ? std::strtoll(value.text.c_str(), nullptr, 10) : 0;
    const bool isOutside =
        isWord ? number < 0 || number > UINT32_MAX : number < INT32_MIN || number > INT32_MAX;
    if (isOutside) {
      findings.AddWarning(
          definition.path, PlaceOf(definition.path, value.offset),
          isWord ? Filled(kValueMessages.seedOutside) : Filled(kValueMessages.integerOutside));
    }
  }
}

/// Real numbers that do not go to the end of their text: an exponent letter without digits behind
/// it is passed over.
void CheckRealNumbers(Findings& findings, const DefinitionFile& definition) {
  for (const DefinedValue& value : definition.values) {
    const std::string_view element = value.element;
    const bool isReal = element.ends_with("/Tolerance") || element.ends_with("/PriorPrecision");
    if (isReal && !IsWholeReal(value.text)) {
      const double read = Vell::IO::ParseReal(value.text);
      findings.AddWarning(definition.path, PlaceOf(definition.path, value.offset),
                          Filled(kValueMessages.readAs, Quoted(value.text),
                                 Vell::IO::NumberText::OfReal(read).View()));
    }
  }
}

void CheckChain(ValueCheck& check, const AnalysisDefinition& analysis) {
  const McmcSettings& mcmc = analysis.mcmc;
  // With estimating equations no draws are better than some.
  const bool needsDraws = mcmc.steps != 0 || !UsesEstimatingEquations(analysis);
  Vell::Mcmc::McmcRunParameters parameters;
  parameters.thinning = mcmc.thinning;
  parameters.burnin = mcmc.burnin;
  parameters.steps = mcmc.steps;
  if (mcmc.thinning == 0) {
    check.Error("Mcmc/Thinning", Filled(kValueMessages.everyNoStep));
  } else if (Vell::Mcmc::LongestChain(parameters) < 0) {
    check.Error(mcmc.thinning < 0 ? "Mcmc/Thinning" : "Mcmc/Steps",
                Filled(kValueMessages.negativeChain));
  } else if (needsDraws && mcmc.thinning > 0 && mcmc.steps >= 0 && mcmc.steps / mcmc.thinning < 2) {
    check.Warning("Mcmc/Steps",
                  Filled(kValueMessages.tooFewDraws, Counted(mcmc.steps / mcmc.thinning, "draw")));
  }
}

}  // namespace

void CheckValues(Findings& findings, const DefinitionFile& definition) {
  ValueCheck check(findings, definition);
  CheckTexts(check, definition);
  CheckWholeNumbers(findings, definition);
  CheckRealNumbers(findings, definition);
  check.Count("Mcmc/Burnin", definition.mcmc.burnin);
  check.Count("Mcmc/Steps", definition.mcmc.steps);
  if (definition.mcmc.thinning < 0) {
    check.Warning("Mcmc/Thinning",
                  Filled(kValueMessages.negativeThinning, definition.mcmc.thinning));
  }
  if (definition.Value("Mcmc/Seed/Seed").element.empty()) {
    findings.AddWarning(definition.path, definition.PlaceOfTag("Mcmc/Seed"),
                        Filled(kValueMessages.clockSeed), Weight::kHarmless);
  }
  if (definition.kind == RunKind::kAnalysis) {
    check.Tolerance("Regression/LinearDependence/Tolerance",
                    definition.analysis.linearDependenceTolerance);
    check.Fit("Regression/Parameters", definition.analysis.parameters);
    check.Fit("Regression/ParametersMcmc", definition.analysis.parametersMcmc);
    CheckChain(check, definition.analysis);
  }
}

void CheckDefinitionText(Findings& findings, const DefinitionFile& definition) {
  const FileTraits traits = TraitsOf(definition.path);
  if (traits.firstCarriageReturnLineFeed >= 0 && KeepsCarriageReturns()) {
    findings.AddWarning(definition.path,
                        PlaceOf(definition.path, traits.firstCarriageReturnLineFeed),
                        Filled(kValueMessages.carriageReturns), Weight::kHarmless);
  }
}

}  // namespace Hovar
