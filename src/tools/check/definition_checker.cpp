#include "tools/check/definition_checker.h"

#include <algorithm>

#include "foundation/io/file_stream.h"
#include "foundation/io/platform/folders.h"
#include "tools/check/columns.h"
#include "tools/check/data_file.h"
#include "tools/check/definition_messages.h"
#include "tools/check/description.h"
#include "tools/check/grammar.h"
#include "tools/check/model_files.h"
#include "tools/check/paths.h"
#include "tools/check/proxy_warnings.h"
#include "tools/check/values.h"
#include "tools/plan/estimating_equations.h"
#include "tools/plan/messages.h"
#include "tools/support/error_capture.h"
#include "tools/support/files.h"
#include "tools/support/message.h"
#include "tools/support/text_places.h"

namespace Hovar {
namespace {

constexpr std::string_view kDefinitionFile = "definition file";

/// Adds an error for an input file that is missing, a folder, or not readable, and answers whether
/// there was none. `what` is the noun for the file.
bool CheckInputFile(Findings& findings, const std::string& path, std::string_view what,
                    std::string_view file, Place place) {
  using Vell::IO::Platform::PathKind;
  const std::string subject = std::string(what) + ' ' + Quoted(path);
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
                        what == kDefinitionFile ? Filled(kInputMessages.definitionIsNoFile, subject)
                                                : Filled(kInputMessages.isNoFile, subject));
      return false;
    case PathKind::kFile:
      break;
  }
  if (ErrorOf([&path] {
        Vell::IO::FileStream(Vell::String(path), Vell::IO::Mode::kReadText).Peek();
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
  if (DrawsWithEstimatingEquations(definition)) {
    const std::optional<MissingRecords> missing =
        dataSet != nullptr ? std::optional(CountMissing(*dataSet)) : std::nullopt;
    findings.AddWarning(
        definition.path, definition.PlaceOfValue("Regression/UseGeneralizedEstimatingEquations"),
        Filled(kInputMessages.unfitDraws, WhatIsUnfit(missing), kEquations.remedy.Text()));
  }
}

/// The same of a Prediction or Validation that takes the means of such draws.
void WarnOfUnfitCoefficients(Findings& findings, const DefinitionFile& definition,
                             const DataSet* dataSet) {
  const std::optional<MissingRecords> missing =
      dataSet != nullptr ? std::optional(CountMissing(*dataSet)) : std::nullopt;
  findings.AddWarning(definition.path, definition.PlaceOfValue("Input/RegressionCoefficients"),
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
                              Quoted(written->definition), written->what));
    return;
  }
  if (!CheckInputFile(findings_, path, kDefinitionFile, namedIn, place)) {
    return;
  }
  const DefinitionReading reading = ReadDefinitionFile(path);
  if (!reading.definition.has_value()) {
    const GrammarError explained = ExplainGrammarError(path, reading.stop, reading.error);
    findings_.AddError(path, PlaceOf(path, explained.offset), explained.text);
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
  return std::any_of(batches_.begin(), batches_.end(), [&path](const std::string& batch) {
    return NormalPath(batch) == NormalPath(path) ||
           Vell::IO::Platform::SameFile(batch.c_str(), path.c_str());
  });
}

void DefinitionChecker::CheckBatch(const DefinitionFile& definition) {
  batches_.push_back(definition.path);
  for (const DefinedValue& value : definition.values) {
    if (value.element != "Simulations/Simulation") {
      continue;
    }
    const Place place = PlaceOf(definition.path, value.offset);
    if (IsBeingChecked(value.text)) {
      findings_.AddWarning(definition.path, place,
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
        JoinPath(definition.folder, definition.Value("Output/RegressionCoefficients").text);
    hasClusteredDraws_[NormalPath(coefficients)] = UsesEstimatingEquations(definition.analysis);
  }
}

/// True when an input is there and its contents are what the run will read. What an earlier run of
/// a batch writes is neither missing nor can it be looked at.
bool DefinitionChecker::IsReadable(const DefinitionFile& definition, const std::string& path,
                                   std::string_view what, std::string_view element) {
  const Place place = definition.PlaceOfValue(element);
  if (const WrittenFile* const written = outputs_.Written(path)) {
    const std::string subject = std::string(what) + ' ' + Quoted(path);
    if (written->what == "log file") {
      findings_.AddError(definition.path, place,
                         Filled(kInputMessages.isLogOfRun, subject, Quoted(written->definition)));
    } else if (written->what != what) {
      findings_.AddWarning(definition.path, place,
                           Filled(kInputMessages.writtenBefore, subject,
                                  Quoted(written->definition), written->what));
    }
    return false;
  }
  return CheckInputFile(findings_, path, what, definition.path, place) &&
         !OutputCheck::LogEmpties(definition, path);
}

void DefinitionChecker::CheckInputs(const DefinitionFile& definition) {
  DataSet dataSet;
  const bool isRead = IsReadable(definition, definition.data, "data file", "Input/Data") &&
                      CheckDataFile(findings_, definition, dataSet);
  WarnOfUnfitDraws(findings_, definition, isRead ? &dataSet : nullptr);
  if (isRead) {
    CheckAnalysisData(definition, dataSet);
  }
  if (definition.kind != RunKind::kAnalysis) {
    CheckModelInputs(definition, isRead ? &dataSet : nullptr);
  }
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
  // Elimination takes columns away, and the warnings tell on which of them the others depend.
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
  const bool isRead = IsReadable(definition, definition.coefficients, "coefficient file",
                                 "Input/RegressionCoefficients") &&
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
      !IsReadable(definition, definition.individualPredictions, "file of individual predictions",
                  "Input/IndividualPredictions") ||
      !CheckIndividualPredictions(findings_, definition, predictions) || dataSet == nullptr) {
    return;
  }
  CheckPredictionCount(findings_, definition, dataSet->recordCount, predictions);
}

}  // namespace Hovar
