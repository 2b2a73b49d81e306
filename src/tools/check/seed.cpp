#include "tools/check/seed.h"

#include "foundation/random/chain_seeds.h"
#include "foundation/random/random_generator.h"
#include "linalg/ternary_matrix.h"
#include "tools/check/definition_messages.h"
#include "tools/plan/seed_values.h"
#include "tools/support/message.h"

namespace Hovar {
namespace {

/// Whether values are imputed with random numbers: an X, or a P of a record with the outcome.
bool HasValuesToDraw(const DataSet& dataSet) {
  Vell::IndexVector scratch(dataSet.variableCount);
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    if (dataSet.recordHasMissing.Get(i) &&
        ((dataSet.y.Get(i) && dataSet.p.IsMissing(i)) ||
         !Vell::MissingColumns(dataSet.x.Row(i), scratch.Span()).empty())) {
      return true;
    }
  }
  return false;
}

/// Whether the run has iterations and comes to them.
bool HasIterations(const DefinitionFile& definition) {
  const McmcSettings& mcmc = definition.mcmc;
  const bool stopsBefore = definition.kind == RunKind::kAnalysis && mcmc.thinning == 0;
  return !stopsBefore && (mcmc.burnin > 0 || mcmc.steps > 0);
}

}  // namespace

void CheckSeed(Findings& findings, const DefinitionFile& definition, const DataSet* dataSet) {
  const auto values = SeedValuesOf(definition);
  if (!values.has_value() || !HasIterations(definition)) {
    return;
  }
  const auto& [first, second] = *values;
  const bool isFirstStill =
      Vell::StandsStill(SeedWordOf(*first), Vell::RandomGenerator::kMultiplierZ);
  const bool isSecondStill =
      Vell::StandsStill(SeedWordOf(*second), Vell::RandomGenerator::kMultiplierW);
  const bool isAnalysis = definition.kind == RunKind::kAnalysis;
  if (!isAnalysis && dataSet != nullptr && !HasValuesToDraw(*dataSet)) {
    return;
  }
  if (isFirstStill && isAnalysis) {
    findings.AddError(definition.path, PlaceOf(definition.path, first->offset),
                      Filled(kValueMessages.seedWithoutEnd));
  } else if (isFirstStill) {
    findings.AddWarning(definition.path, PlaceOf(definition.path, first->offset),
                        Filled(kValueMessages.seedStill));
  } else if (isSecondStill) {
    findings.AddWarning(definition.path, PlaceOf(definition.path, second->offset),
                        Filled(kValueMessages.seedHalfStill));
  }
}

}  // namespace Hovar
