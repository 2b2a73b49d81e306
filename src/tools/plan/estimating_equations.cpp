#include "tools/plan/estimating_equations.h"

#include "tools/plan/messages.h"
#include "tools/plan/result_file.h"
#include "tools/support/message.h"
#include "tools/support/sentence_parts.h"

namespace Hovar {

MissingRecords CountMissing(const DataSet& dataSet) {
  MissingRecords missing;
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    missing.withoutP += dataSet.p.IsMissing(i) ? 1 : 0;
    missing.withoutX += Vell::HasMissingCell(dataSet.x.Row(i)) ? 1 : 0;
  }
  return missing;
}

bool DrawsWithEstimatingEquations(const DefinitionFile& definition) {
  return definition.kind == RunKind::kAnalysis && UsesEstimatingEquations(definition.analysis) &&
         (definition.mcmc.steps > 0 || definition.mcmc.burnin > 0);
}

bool DrawsInBurninAlone(const DefinitionFile& definition) {
  return DrawsWithEstimatingEquations(definition) && definition.mcmc.steps <= 0;
}

bool HasClusteredDraws(const RegressionResults& results) {
  const CoefficientEstimates& fifth = results.Block(Model::kYGivenXWithoutPMcmc);
  bool hasEmpirical = false;
  for (std::int32_t i = 0; i < fifth.Size(); ++i) {
    if (!(fifth[i].modelStandardError < 0)) {
      return false;
    }
    hasEmpirical = hasEmpirical || !(fifth[i].empiricalStandardError < 0);
  }
  return hasEmpirical;
}

std::optional<bool> HasClusteredDraws(const std::string& coefficientFile) {
  const std::optional<RegressionResults> results = ReadResultFile(coefficientFile);
  return results ? std::optional(HasClusteredDraws(*results)) : std::nullopt;
}

std::string WhatIsUnfit(const std::optional<MissingRecords>& missing) {
  if (!missing.has_value()) {
    return Filled(kUnfitColumns.unknown);
  }
  const std::string withoutP = Counted(missing->withoutP, "record");
  const std::string withoutX = Counted(missing->withoutX, "record");
  if (missing->withoutP > 0 && missing->withoutX > 0) {
    return Filled(kUnfitColumns.missingBoth, withoutP, withoutX);
  }
  if (missing->withoutP > 0) {
    return Filled(kUnfitColumns.missingP, withoutP);
  }
  return missing->withoutX > 0 ? Filled(kUnfitColumns.missingX, withoutX)
                               : Filled(kUnfitColumns.nothingMissing);
}

}  // namespace Hovar
