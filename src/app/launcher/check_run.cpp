#include "app/launcher/check_run.h"

#include <algorithm>

#include "app/launcher/check_columns.h"
#include "app/launcher/check_places.h"
#include "app/launcher/check_tables.h"
#include "app/launcher/check_values.h"

namespace Hovar {

void RunCheckup::Check(const std::string& definition) {
  CheckDefinition(definition, definition, {});
}

/// Checks a definition that is named at a place of a file (its own first one for the user's).
void RunCheckup::CheckDefinition(const std::string& path, std::string_view namedIn, Place place) {
  // A second time shows what its outputs overwrite; further ones show nothing new, and nested
  // batches would make them many.
  constexpr int kMostChecks = 2;
  if (checks_[NormalPath(path)]++ >= kMostChecks) {
    return;
  }
  if (const WrittenFile* const written = outputs_.Written(path)) {
    findings_.AddError(namedIn, place,
                       "The definition file " + Quoted(path) + " would be overwritten before by " +
                           Quoted(written->definition) + ", whose " + written->what +
                           " it is. Give that another name.");
    return;
  }
  if (!CheckInputFile(findings_, path, "definition file", namedIn, place)) {
    return;
  }
  const std::optional<RunPlan> plan = ReadRunPlan(findings_, path);
  if (!plan.has_value()) {
    return;
  }
  CheckDefinitionText(findings_, *plan);
  if (plan->kind == RunKind::kBatch) {
    CheckBatch(*plan);
  } else {
    CheckSingleRun(*plan);
  }
}

bool RunCheckup::IsBeingChecked(const std::string& path) const {
  return std::any_of(batches_.begin(), batches_.end(), [&path](const std::string& batch) {
    return NormalPath(batch) == NormalPath(path) ||
           Vell::IO::Platform::SameFile(batch.c_str(), path.c_str());
  });
}

void RunCheckup::CheckBatch(const RunPlan& plan) {
  batches_.push_back(plan.definition);
  for (const DefinedValue& value : plan.values) {
    if (value.element != "Simulations/Simulation") {
      continue;
    }
    const Place place = PlaceOf(plan.definition, value.offset);
    if (IsBeingChecked(value.text)) {
      findings_.AddWarning(plan.definition, place,
                           "The batch would start " + Quoted(value.text) +
                               " again within itself, without end. Remove it from the list.");
    } else {
      CheckDefinition(value.text, plan.definition, place);
    }
  }
  batches_.pop_back();
}

void RunCheckup::CheckSingleRun(const RunPlan& plan) {
  CheckValues(findings_, plan);
  CheckInputs(plan);
  outputs_.Check(findings_, plan);
}

/// True when an input is there and its contents are what the run will read. What an earlier run of
/// a batch writes is neither missing nor can it be looked at.
bool RunCheckup::IsReadable(const RunPlan& plan, const std::string& path, std::string_view what,
                            std::string_view element) {
  const Place place = plan.PlaceOfValue(element);
  if (const WrittenFile* const written = outputs_.Written(path)) {
    const std::string subject = "The " + std::string(what) + ' ' + Quoted(path);
    if (written->what == "log file") {
      findings_.AddError(plan.definition, place,
                         subject + " is the log file of " + Quoted(written->definition) +
                             ", which runs before. Give one of the two another name.");
    } else if (written->what != what) {
      findings_.AddWarning(plan.definition, place,
                           subject + " is written before by " + Quoted(written->definition) +
                               " as its " + written->what + ". Check that this is meant.");
    }
    return false;
  }
  return CheckInputFile(findings_, path, what, plan.definition, place) &&
         !OutputCheck::LogEmpties(plan, path);
}

void RunCheckup::CheckInputs(const RunPlan& plan) {
  DataSet dataSet;
  const bool isRead = IsReadable(plan, plan.data, "data file", "Input/Data") &&
                      CheckDataFile(findings_, plan, dataSet);
  if (isRead) {
    CheckAnalysisData(plan, dataSet);
  }
  if (plan.kind != RunKind::kAnalysis) {
    CheckModelInputs(plan, isRead ? &dataSet : nullptr);
  }
}

/// What concerns the data alone: the columns of an Analysis, and the description.
void RunCheckup::CheckAnalysisData(const RunPlan& plan, DataSet& dataSet) {
  const bool isDescribed =
      describe_ == Describe::kData &&
      described_.insert(NormalPath(plan.data) + '\n' + std::to_string(plan.poaCount)).second;
  if (plan.kind != RunKind::kAnalysis && !isDescribed) {
    return;
  }
  std::vector<VariableCounts> variables = CountVariables(dataSet);
  std::string description = DescribeDataSet(plan, dataSet);
  const std::int32_t records = dataSet.recordCount;
  if (plan.kind == RunKind::kAnalysis) {
    CheckColumns(findings_, plan, dataSet, variables);
  }
  if (isDescribed) {
    description_ += description + DescribeVariables(plan, records, variables);
  }
}

/// The files that an Analysis or a Prediction wrote. `dataSet` is null where it could not be read.
void RunCheckup::CheckModelInputs(const RunPlan& plan, DataSet* dataSet) {
  RegressionResults results;
  if (IsReadable(plan, plan.coefficients, "coefficient file", "Input/RegressionCoefficients") &&
      CheckCoefficientFile(findings_, plan, results) && dataSet != nullptr) {
    CheckVariables(findings_, plan, *dataSet, results);
  }
  IndividualPredictions predictions;
  if (plan.kind != RunKind::kValidation ||
      !IsReadable(plan, plan.individualPredictions, "file of individual predictions",
                  "Input/IndividualPredictions") ||
      !CheckIndividualPredictions(findings_, plan, predictions) || dataSet == nullptr) {
    return;
  }
  const std::int32_t rows = predictions.yGivenZ.Size();
  const std::string text = "The file has " + Counted(rows, "complete line") + " for the " +
                           Counted(dataSet->recordCount, "record") + " of " + Quoted(plan.data);
  const Place end =
      PlaceOf(plan.individualPredictions, TraitsOf(plan.individualPredictions).length);
  if (rows < dataSet->recordCount) {
    findings_.AddError(plan.individualPredictions, end,
                       text +
                           ". Use the predictions of the same data; each line ends with a line "
                           "feed.");
  } else if (rows > dataSet->recordCount) {
    findings_.AddWarning(plan.individualPredictions, end,
                         text + "; the others are not used. Use the predictions of the same data.");
  }
}

}  // namespace Hovar
