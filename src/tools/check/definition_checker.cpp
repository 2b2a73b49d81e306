#include "tools/check/definition_checker.h"

#include <algorithm>

#include "app/definition/element_table.h"
#include "foundation/io/file_stream.h"
#include "foundation/io/platform/folders.h"
#include "tools/check/columns.h"
#include "tools/check/data_file.h"
#include "tools/check/definition_messages.h"
#include "tools/check/description.h"
#include "tools/check/grammar.h"
#include "tools/check/model_files.h"
#include "tools/check/proxy_warnings.h"
#include "tools/check/seed.h"
#include "tools/check/values.h"
#include "tools/plan/estimating_equations.h"
#include "tools/plan/file_nouns.h"
#include "tools/plan/messages.h"
#include "tools/support/error_capture.h"
#include "tools/support/file_identity.h"
#include "tools/support/files.h"
#include "tools/support/inputs.h"
#include "tools/support/message.h"
#include "tools/support/paths.h"
#include "tools/support/text_places.h"

namespace Hovar {
namespace {

/// Adds an error for an input file that is missing, a folder, or not readable, and answers whether
/// there was none.
bool CheckInputFile(Findings& findings, const std::string& path, FileRole role,
                    std::string_view file, Place place) {
  using Vell::IO::Platform::PathKind;
  const std::string subject = std::string(NounOf(role)) + ' ' + Quoted(path);
  switch (Vell::IO::Platform::KindOf(path.c_str())) {
    case PathKind::kMissing: {
      const bool hasBlanks = !path.empty() && (path.front() <= ' ' || path.back() <= ' ');
      findings.AddError(file, place,
                        hasBlanks ? Filled(kInputMessages.missingWithBlanks, subject)
                                  : Filled(kInputMessages.missing, subject));
      return false;
    }
    case PathKind::kFolder:
      findings.AddError(file, place, Filled(kInputMessages.isFolder, subject));
      return false;
    case PathKind::kOther:
      findings.AddError(file, place,
                        role == FileRole::kDefinition
                            ? Filled(kInputMessages.definitionIsNoFile, subject)
                            : Filled(kInputMessages.isNoFile, subject));
      return false;
    case PathKind::kFile:
      break;
  }
  if (ErrorOf([&path] {
        Vell::IO::FileStream(Vell::String(path), kReadInput).Peek();
      }).has_value()) {
    findings.AddError(file, place, Filled(kInputMessages.cannotRead, subject));
    return false;
  }
  return true;
}

/// Warns of an Analysis whose draws are not fit for inference. `dataSet` is null where the data
/// could not be read.
void WarnOfUnfitDraws(Findings& findings, const DefinitionFile& definition,
                      const DataSet* dataSet) {
  if (DrawsInBurninAlone(definition)) {
    findings.AddWarning(definition.path, definition.PlaceOfValue(Element::kBurnin),
                        Filled(kInputMessages.unfitBurnin));
  } else if (DrawsWithEstimatingEquations(definition)) {
    const std::optional<MissingRecords> missing =
        dataSet != nullptr ? std::optional(CountMissing(*dataSet)) : std::nullopt;
    findings.AddWarning(
        definition.path, definition.PlaceOfValue(Element::kUseGeneralizedEstimatingEquations),
        Filled(kInputMessages.unfitDraws, WhatIsUnfit(missing), kEquations.remedy.Text()));
  }
}

/// The same of a Prediction or Validation that takes the means of such draws.
void WarnOfUnfitCoefficients(Findings& findings, const DefinitionFile& definition,
                             const DataSet* dataSet) {
  const std::optional<MissingRecords> missing =
      dataSet != nullptr ? std::optional(CountMissing(*dataSet)) : std::nullopt;
  findings.AddWarning(definition.path,
                      definition.PlaceOfValue(Element::kInputRegressionCoefficients),
                      Filled(kInputMessages.unfitCoefficients, WhatIsUnfit(missing)));
}

}  // namespace

void DefinitionChecker::Check(const std::string& definition) {
  CheckDefinition(definition, definition, {});
  outputs_.WarnOfOverwriting(findings_);
}

/// Checks a definition that is named at a place of a file (its own first one for the user's).
void DefinitionChecker::CheckDefinition(const std::string& path, std::string_view namedIn,
                                        Place place) {
  // A second time shows what its outputs overwrite; further ones show nothing new, and nested
  // batches would make them many.
  constexpr int kMostChecks = 2;
  if (checks_[NormalPath(path)]++ >= kMostChecks) {
    return;
  }
  if (const WrittenFile* const written = outputs_.Written(path)) {
    findings_.AddError(namedIn, place,
                       Filled(kInputMessages.definitionOverwritten, Quoted(path),
                              Quoted(written->definition), NounOf(written->role)));
    return;
  }
  if (!CheckInputFile(findings_, path, FileRole::kDefinition, namedIn, place)) {
    return;
  }
  const DefinitionReading reading = ReadDefinitionFile(path);
  if (!reading.definition.has_value()) {
    const GrammarError explained = ExplainGrammarError(reading.text, reading.stop, reading.error);
    findings_.AddError(path, PlaceOf(reading.text, explained.offset), explained.text);
    return;
  }
  CheckDefinitionText(findings_, *reading.definition);
  if (reading.definition->kind == RunKind::kBatch) {
    CheckBatch(*reading.definition);
  } else {
    CheckSingleRun(*reading.definition);
  }
}

bool DefinitionChecker::IsBeingChecked(const std::string& path) const {
  return std::any_of(batches_.begin(), batches_.end(),
                     [&path](const std::string& batch) { return IsSameFile(batch, path); });
}

void DefinitionChecker::CheckBatch(const DefinitionFile& definition) {
  batches_.push_back(definition.path);
  for (const DefinedValue& value : definition.values) {
    if (value.element != Element::kSimulation) {
      continue;
    }
    const Place place = definition.PlaceOfValue(value);
    if (IsBeingChecked(value.text)) {
      findings_.AddError(definition.path, place,
                         Filled(kInputMessages.batchInItself, Quoted(value.text)));
    } else {
      CheckDefinition(value.text, definition.path, place);
    }
  }
  batches_.pop_back();
}

void DefinitionChecker::CheckSingleRun(const DefinitionFile& definition) {
  CheckValues(findings_, definition);
  CheckInputs(definition);
  outputs_.Check(findings_, definition);
  if (definition.kind == RunKind::kAnalysis) {
    const std::string& coefficients =
        JoinPath(definition.folder, definition.TextOf(Element::kRegressionCoefficients));
    hasClusteredDraws_[NormalPath(coefficients)] = UsesEstimatingEquations(definition.analysis);
  }
}

/// True when an input is there and its contents are what the run will read. What an earlier run of
/// a batch writes is neither missing nor can it be looked at.
bool DefinitionChecker::IsReadable(const DefinitionFile& definition, Element element) {
  const FileRole role = EntryOf(element).role;
  const std::string path = definition.TextOf(element);
  const Place place = definition.PlaceOfValue(element);
  if (const WrittenFile* const written = outputs_.Written(path)) {
    const std::string subject = std::string(NounOf(role)) + ' ' + Quoted(path);
    if (written->role == FileRole::kLog) {
      findings_.AddError(definition.path, place,
                         Filled(kInputMessages.isLogOfRun, subject, Quoted(written->definition)));
    } else if (written->role != role) {
      findings_.AddWarning(definition.path, place,
                           Filled(kInputMessages.writtenBefore, subject,
                                  Quoted(written->definition), NounOf(written->role)));
    }
    return false;
  }
  return CheckInputFile(findings_, path, role, definition.path, place) &&
         !OutputCheck::LogEmpties(definition, path);
}

void DefinitionChecker::CheckInputs(const DefinitionFile& definition) {
  DataSet dataSet;
  const bool isRead =
      IsReadable(definition, Element::kData) && CheckDataFile(findings_, definition, dataSet);
  WarnOfUnfitDraws(findings_, definition, isRead ? &dataSet : nullptr);
  if (isRead) {
    CheckAnalysisData(definition, dataSet);
  }
  if (definition.kind != RunKind::kAnalysis) {
    CheckModelInputs(definition, isRead ? &dataSet : nullptr);
  }
  CheckSeed(findings_, definition, isRead ? &dataSet : nullptr);
}

/// What concerns the data alone: the columns of an Analysis, and the description.
void DefinitionChecker::CheckAnalysisData(const DefinitionFile& definition, DataSet& dataSet) {
  const bool isDescribed =
      describe_ == Describe::kData &&
      described_.insert(NormalPath(definition.data) + '\n' + std::to_string(definition.poaCount))
          .second;
  const bool isAnalysis = definition.kind == RunKind::kAnalysis;
  const bool areProxiesJudged = isAnalysis && describe_ == Describe::kData;
  std::vector<VariableCounts> variables;
  if (isDescribed || areProxiesJudged) {
    variables = CountVariables(dataSet, CountExtent::kAllRecords);
  }
  if (isDescribed) {
    description_ += DescribeDataSet(definition, dataSet);
  }
  // Elimination removes columns, and the warnings name those on which others depend.
  const Vell::BitMatrix z = areProxiesJudged ? dataSet.z : Vell::BitMatrix();
  if (isAnalysis && CheckColumns(findings_, definition, dataSet, variables) && areProxiesJudged) {
    WarnOfProxies(findings_, definition, z, variables);
  }
  if (isDescribed) {
    description_ += DescribeVariables(definition, variables);
  }
}

/// The files that an Analysis or a Prediction wrote. `dataSet` is null where it could not be read.
void DefinitionChecker::CheckModelInputs(const DefinitionFile& definition, DataSet* dataSet) {
  RegressionResults results;
  const auto planned = hasClusteredDraws_.find(NormalPath(definition.coefficients));
  const bool isRead = IsReadable(definition, Element::kInputRegressionCoefficients) &&
                      CheckCoefficientFile(findings_, definition, results);
  const bool isPlanned = planned != hasClusteredDraws_.end();
  if (isPlanned ? planned->second : isRead && HasClusteredDraws(results)) {
    WarnOfUnfitCoefficients(findings_, definition, dataSet);
  }
  if (isRead && dataSet != nullptr) {
    CheckVariables(findings_, definition, *dataSet, results);
  }
  IndividualPredictions predictions;
  if (definition.kind != RunKind::kValidation ||
      !IsReadable(definition, Element::kInputIndividualPredictions) ||
      !CheckIndividualPredictions(findings_, definition, predictions) || dataSet == nullptr) {
    return;
  }
  CheckPredictionCount(findings_, definition, dataSet->recordCount, predictions);
}

}  // namespace Hovar
