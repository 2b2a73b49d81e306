#include "tools/plan/estimating_equations.h"

#include "foundation/io/file_stream.h"
#include "foundation/io/platform/folders.h"
#include "regression/coefficient_file.h"
#include "tools/plan/messages.h"
#include "tools/support/error_capture.h"
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
  namespace Platform = Vell::IO::Platform;
  if (Platform::KindOf(coefficientFile.c_str()) != Platform::PathKind::kFile) {
    return std::nullopt;  // reading a pipe would wait
  }
  RegressionResults results;
  const bool isRead =
      !ErrorOf([&] {
         Vell::IO::FileStream stream(Vell::String(coefficientFile), Vell::IO::Mode::kReadText);
         ReadCoefficientFile(results, stream);
       }).has_value();
  return isRead ? std::optional(HasClusteredDraws(results)) : std::nullopt;
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
