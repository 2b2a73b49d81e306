#include "tools/check/values.h"

#include <cmath>
#include <cstdlib>

#include "app/definition/element_table.h"
#include "foundation/io/number_text.h"
#include "mcmc/mcmc_model.h"
#include "tools/check/definition_messages.h"
#include "tools/check/odd_cells.h"
#include "tools/support/message.h"
#include "tools/support/text_places.h"

namespace Hovar {
namespace {

/// The elements of a group of fit settings.
struct FitElements {
  Element tolerance;
  Element maxIterations;
  Element priorPrecision;
};

constexpr FitElements kFit = {Element::kParametersTolerance, Element::kParametersMaxIterations,
                              Element::kParametersPriorPrecision};
constexpr FitElements kFitMcmc = {Element::kParametersMcmcTolerance,
                                  Element::kParametersMcmcMaxIterations,
                                  Element::kParametersMcmcPriorPrecision};

class ValueCheck {
 public:
  ValueCheck(Findings& findings, const DefinitionFile& definition)
      : findings_(findings), definition_(definition) {}

  void Error(Element element, std::string text) {
    findings_.AddError(definition_.path, definition_.PlaceOfValue(element), std::move(text));
  }
  void Warning(Element element, std::string text, Weight weight = Weight::kResults) {
    findings_.AddWarning(definition_.path, definition_.PlaceOfValue(element), std::move(text),
                         weight);
  }

  void Count(Element element, std::int32_t value) {
    if (value < 0) {
      Warning(element, Filled(kValueMessages.negativeCount, value));
    }
  }

  void Tolerance(Element element, double value) {
    if (!(value > 0) || std::isinf(value)) {
      Warning(element, Filled(kValueMessages.tolerance));
    }
  }

  void Fit(const FitElements& elements, const RegressionParameters& parameters) {
    Tolerance(elements.tolerance, parameters.tolerance);
    if (parameters.maxIterations < 1) {
      Warning(elements.maxIterations, Filled(kValueMessages.firstStep));
    }
    if (!(parameters.priorPrecision >= 0) || std::isinf(parameters.priorPrecision)) {
      Warning(elements.priorPrecision, Filled(kValueMessages.precision));
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
  for (const DefinedValue& value : definition.values) {
    const ElementEntry& entry = EntryOf(value.element);
    if (ValueKindOf(entry.type) != ValueKind::kText) {
      continue;
    }
    if (entry.IsOutput() && IsSpaced(value.text)) {  // an input of this name is missing
      check.Warning(value.element, Filled(kValueMessages.whiteSpace), Weight::kFiles);
    }
    if (HasEntity(value.text)) {
      check.Warning(value.element, Filled(kValueMessages.entity), Weight::kFiles);
    }
  }
}

/// Whole numbers of which only the low 32 bits are kept, without a message.
void CheckWholeNumbers(Findings& findings, const DefinitionFile& definition) {
  for (const DefinedValue& value : definition.values) {
    const ElementType type = EntryOf(value.element).type;
    const bool isWord = type == ElementType::kSeedWord;
    const bool isWhole = ValueKindOf(type) == ValueKind::kWholeNumber;
    // Of a number that is too long for any type the nearest one, which is outside as well.
    const long long number = isWhole ? std::strtoll(value.text.c_str(), nullptr, 10) : 0;
    const bool isOutside =
        isWord ? number < 0 || number > UINT32_MAX : number < INT32_MIN || number > INT32_MAX;
    if (isOutside) {
      findings.AddWarning(
          definition.path, definition.PlaceOfValue(value),
          isWord ? Filled(kValueMessages.seedOutside) : Filled(kValueMessages.integerOutside));
    }
  }
}

/// Real numbers that do not go to the end of their text: an exponent letter without digits behind
/// it is passed over.
void CheckRealNumbers(Findings& findings, const DefinitionFile& definition) {
  for (const DefinedValue& value : definition.values) {
    const bool isReal = ValueKindOf(EntryOf(value.element).type) == ValueKind::kReal;
    if (isReal && !IsWholeReal(value.text)) {
      const double read = Vell::IO::ParseReal(value.text);
      findings.AddWarning(definition.path, definition.PlaceOfValue(value),
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
    check.Error(Element::kThinning, Filled(kValueMessages.everyNoStep));
  } else if (Vell::Mcmc::LongestChain(parameters) < 0) {
    check.Error(mcmc.thinning < 0 ? Element::kThinning : Element::kSteps,
                Filled(kValueMessages.negativeChain));
  } else if (needsDraws && mcmc.thinning > 0 && mcmc.steps >= 0 && mcmc.steps / mcmc.thinning < 2) {
    check.Warning(Element::kSteps,
                  Filled(kValueMessages.tooFewDraws, Counted(mcmc.steps / mcmc.thinning, "draw")));
  }
}

}  // namespace

void CheckValues(Findings& findings, const DefinitionFile& definition) {
  ValueCheck check(findings, definition);
  CheckTexts(check, definition);
  CheckWholeNumbers(findings, definition);
  CheckRealNumbers(findings, definition);
  check.Count(Element::kBurnin, definition.mcmc.burnin);
  check.Count(Element::kSteps, definition.mcmc.steps);
  if (definition.mcmc.thinning < 0) {
    check.Warning(Element::kThinning,
                  Filled(kValueMessages.negativeThinning, definition.mcmc.thinning));
  }
  if (definition.Find(Element::kSeedVector) == nullptr) {
    findings.AddWarning(definition.path, definition.PlaceOfTag(Element::kSeed),
                        Filled(kValueMessages.clockSeed), Weight::kHarmless);
  }
  if (definition.kind == RunKind::kAnalysis) {
    check.Tolerance(Element::kLinearDependenceTolerance,
                    definition.analysis.linearDependenceTolerance);
    check.Fit(kFit, definition.analysis.parameters);
    check.Fit(kFitMcmc, definition.analysis.parametersMcmc);
    CheckChain(check, definition.analysis);
  }
}

void CheckDefinitionText(Findings& findings, const DefinitionFile& definition) {
  const FileTraits traits = TraitsOf(definition.text);
  if (traits.firstCarriageReturnLineFeed >= 0 && KeepsCarriageReturns()) {
    findings.AddWarning(definition.path,
                        PlaceOf(definition.text, traits.firstCarriageReturnLineFeed),
                        Filled(kValueMessages.carriageReturns), Weight::kHarmless);
  }
}

}  // namespace Hovar
