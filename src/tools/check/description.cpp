#include "tools/check/description.h"

#include "tools/check/data_values.h"
#include "tools/check/findings.h"
#include "tools/check/proxies.h"

namespace Hovar {
namespace {

std::string Percent(std::int64_t part, std::int64_t whole) {
  if (whole == 0) {
    return "-";
  }
  // Hundredths of a percent, rounded half up.
  const std::int64_t hundredths = (part * 20000 + whole) / (2 * whole);
  const std::string decimals = std::to_string(100 + hundredths % 100).substr(1);
  return std::to_string(hundredths / 100) + '.' + decimals + " %";
}

/// The records of which the program corrects P, among those in which that can happen.
std::string Contradictions(const DataSet& dataSet) {
  if (dataSet.contradictionCount == 0) {
    return "";
  }
  return "  Y = 0 and P = 1, P taken as 0: " + std::to_string(dataSet.contradictionCount) + " (" +
         Percent(dataSet.contradictionCount, CountWithoutOutcomeAndKnownP(dataSet)) +
         " of the records with Y = 0 and known P)\n";
}

std::string HospitalsWithoutCompleteRecords(const DataSet& dataSet) {
  std::string lines;
  constexpr std::int32_t kMostLines = 20;
  std::int32_t count = 0;
  for (std::int32_t h = 0; h < dataSet.hospitalCount; ++h) {
    if (dataSet.hospitalComplete[h] == 0 && ++count <= kMostLines) {
      lines += "    " + Quoted(dataSet.hospitalIds[h].View()) + ", " +
               Counted(dataSet.hospitalSize[h], "record") + '\n';
    }
  }
  if (count > kMostLines) {
    lines += "    and " + Counted(count - kMostLines, "more hospital") + '\n';
  }
  return "  hospitals without a complete record: " + std::to_string(count) + '\n' + lines;
}

std::string Named(const VariableCounts& variable) {
  return Quoted(variable.zName) + ", " + Quoted(variable.xName);
}

/// The share of X = 1 in a row of the [X|Z] table.
std::string ShareOfOnes(const XzClass& xz) { return Percent(xz.ones, xz.known); }

std::string_view ReasonOf(EliminationStage stage) noexcept {
  switch (stage) {
    case EliminationStage::kZeroZ:
      return "Z is 0 everywhere";
    case EliminationStage::kZeroX:
      return "X is 0 in all complete records";
    case EliminationStage::kDependentZ:
      return "Z depends on other variables";
    case EliminationStage::kDependentX:
      return "X is 0, or depends on other variables, in the complete records with P = 0";
  }
  return "";
}

std::string RemovedVariables(const std::vector<VariableCounts>& variables) {
  std::string lines;
  for (const VariableCounts& variable : variables) {
    if (variable.eliminated.has_value()) {
      lines += "    " + Named(variable) + ": " + std::string(ReasonOf(variable.eliminated->stage)) +
               '\n';
    }
  }
  return "  removed by column elimination:" + std::string(lines.empty() ? " none" : "") + '\n' +
         lines;
}

std::string EmptyClasses(const std::vector<VariableCounts>& variables) {
  std::string lines;
  for (const VariableCounts& variable : variables) {
    if (variable.IsEmptyWithZ()) {
      lines += "    " + Named(variable) + ": no record with Z = 1 and a known X\n";
    }
    if (variable.IsEmptyWithoutZ()) {
      lines += "    " + Named(variable) + ": no record with Z = 0 and a known X\n";
    }
  }
  return "  empty [X|Z] classes:" + std::string(lines.empty() ? " none" : "") + '\n' + lines;
}

}  // namespace

std::string DescribeDataSet(const DefinitionFile& definition, const DataSet& dataSet) {
  const std::int32_t records = dataSet.recordCount;
  std::int32_t outcomes = 0;
  std::int32_t present = 0;
  std::int32_t missing = 0;
  std::int32_t hidden = 0;  // an indicator is 1 and another one is missing
  for (std::int32_t i = 0; i < records; ++i) {
    outcomes += dataSet.y.Get(i) ? 1 : 0;
    missing += dataSet.p.IsMissing(i) ? 1 : 0;
    hidden += dataSet.p.IsMissing(i) && dataSet.p.Value(i) ? 1 : 0;
    present += !dataSet.p.IsMissing(i) && dataSet.p.Value(i) ? 1 : 0;
  }
  std::string text = Quoted(definition.data) + ": " + Counted(records, "record") + ", " +
                     Counted(dataSet.hospitalCount, "hospital") + ", " +
                     Counted(dataSet.variableCount - 1, "variable") + ", " +
                     Counted(definition.poaCount, "POA indicator") + '\n';
  text += "  Y = 1: " + std::to_string(outcomes) + " (" + Percent(outcomes, records) + ")\n";
  text += "  P = 1: " + std::to_string(present) + " (" + Percent(present, records - missing) +
          " of the known), missing: " + std::to_string(missing) + " (" + Percent(missing, records) +
          ")\n";
  text += Contradictions(dataSet);
  if (hidden > 0) {
    text += "  P missing although an indicator is 1: " + std::to_string(hidden) + '\n';
  }
  text += "  complete records: " + std::to_string(dataSet.completeCount) + " (" +
          Percent(dataSet.completeCount, records) +
          "), with P = 0: " + std::to_string(dataSet.completeP0Count) + '\n';
  return text + HospitalsWithoutCompleteRecords(dataSet);
}

std::string DescribeVariables(const DefinitionFile& definition,
                              const std::vector<VariableCounts>& variables) {
  std::string text =
      "  variables (Z, X): Z = 1; X = 1 of the known, where Z = 0, where Z = 1; X missing\n";
  for (const VariableCounts& variable : variables) {
    text += "    " + Named(variable) + ": " + Percent(variable.zOnes, variable.records) + "; " +
            Percent(variable.xOnes, variable.records - variable.xMissing) + ", " +
            ShareOfOnes(XzClassOf(variable, false)) + ", " +
            ShareOfOnes(XzClassOf(variable, true)) + "; " +
            Percent(variable.xMissing, variable.records) + '\n';
  }
  if (definition.kind == RunKind::kAnalysis) {
    text += RemovedVariables(variables);
  }
  return text + EmptyClasses(variables);
}

}  // namespace Hovar
