#include "tools/check/description.h"

#include "tools/check/data_values.h"
#include "tools/check/description_messages.h"
#include "tools/check/findings.h"
#include "tools/check/proxies.h"
#include "tools/support/message.h"

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

/// A line below the file's.
template <typename... Parts>
std::string Line(const Messages::PatternWithParts<sizeof...(Parts)>& line, const Parts&... parts) {
  return "  " + Filled(line, parts...) + '\n';
}

/// A line of a list.
template <typename... Parts>
std::string Row(const Messages::PatternWithParts<sizeof...(Parts)>& line, const Parts&... parts) {
  return "  " + Line(line, parts...);
}

/// The records of which the program corrects P, among those in which that can happen.
std::string Contradictions(const DataSet& dataSet) {
  if (dataSet.contradictionCount == 0) {
    return "";
  }
  return Line(kDescriptionLines.contradictions, dataSet.contradictionCount,
              Percent(dataSet.contradictionCount, CountWithoutOutcomeAndKnownP(dataSet)));
}

std::string HospitalsWithoutCompleteRecords(const DataSet& dataSet) {
  std::string lines;
  constexpr std::int32_t kMostLines = 20;
  std::int32_t count = 0;
  for (std::int32_t h = 0; h < dataSet.hospitalCount; ++h) {
    if (dataSet.hospitalComplete[h] == 0 && ++count <= kMostLines) {
      lines += Row(kDescriptionLines.hospital, Quoted(dataSet.hospitalIds[h].View()),
                   Counted(dataSet.hospitalSize[h], "record"));
    }
  }
  if (count > kMostLines) {
    lines += Row(kDescriptionLines.moreHospitals, Counted(count - kMostLines, "more hospital"));
  }
  return Line(kDescriptionLines.incompleteHospitals, count) + lines;
}

std::string Named(const VariableCounts& variable) {
  return Quoted(variable.zName) + ", " + Quoted(variable.xName);
}

/// The share of X = 1 in a row of the [X|Z] table.
std::string ShareOfOnes(const XzClass& xz) { return Percent(xz.ones, xz.known); }

/// The line of a variable that is removed, at the stage.
std::string RemovedRow(const VariableCounts& variable, EliminationStage stage) {
  switch (stage) {
    case EliminationStage::kZeroZ:
      return Row(kDescriptionLines.removedForZeroZ, Named(variable));
    case EliminationStage::kZeroX:
      return Row(kDescriptionLines.removedForZeroX, Named(variable));
    case EliminationStage::kDependentZ:
      return Row(kDescriptionLines.removedForDependentZ, Named(variable));
    case EliminationStage::kDependentX:
      return Row(kDescriptionLines.removedForDependentX, Named(variable));
  }
  return "";
}

std::string RemovedVariables(const std::vector<VariableCounts>& variables) {
  std::string lines;
  for (const VariableCounts& variable : variables) {
    if (variable.eliminated.has_value()) {
      lines += RemovedRow(variable, variable.eliminated->stage);
    }
  }
  return lines.empty() ? Line(kDescriptionLines.nothingRemoved)
                       : Line(kDescriptionLines.removed) + lines;
}

std::string EmptyClasses(const std::vector<VariableCounts>& variables) {
  std::string lines;
  for (const VariableCounts& variable : variables) {
    if (variable.IsEmptyWithZ()) {
      lines += Row(kDescriptionLines.emptyWithZ, Named(variable));
    }
    if (variable.IsEmptyWithoutZ()) {
      lines += Row(kDescriptionLines.emptyWithoutZ, Named(variable));
    }
  }
  return lines.empty() ? Line(kDescriptionLines.noEmptyClasses)
                       : Line(kDescriptionLines.emptyClasses) + lines;
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
  std::string text = Filled(kDescriptionLines.size, Quoted(definition.data),
                            Counted(records, "record"), Counted(dataSet.hospitalCount, "hospital"),
                            Counted(dataSet.variableCount - 1, "variable"),
                            Counted(definition.poaCount, "POA indicator")) +
                     '\n';
  text += Line(kDescriptionLines.outcomes, outcomes, Percent(outcomes, records));
  text += Line(kDescriptionLines.presentOnAdmission, present, Percent(present, records - missing),
               missing, Percent(missing, records));
  text += Contradictions(dataSet);
  if (hidden > 0) {
    text += Line(kDescriptionLines.hiddenP, hidden);
  }
  text += Line(kDescriptionLines.completeRecords, dataSet.completeCount,
               Percent(dataSet.completeCount, records), dataSet.completeP0Count);
  return text + HospitalsWithoutCompleteRecords(dataSet);
}

std::string DescribeVariables(const DefinitionFile& definition,
                              const std::vector<VariableCounts>& variables) {
  std::string text = Line(kDescriptionLines.variables);
  for (const VariableCounts& variable : variables) {
    text +=
        Row(kDescriptionLines.variable, Named(variable), Percent(variable.zOnes, variable.records),
            Percent(variable.xOnes, variable.records - variable.xMissing),
            ShareOfOnes(XzClassOf(variable, false)), ShareOfOnes(XzClassOf(variable, true)),
            Percent(variable.xMissing, variable.records));
  }
  if (definition.kind == RunKind::kAnalysis) {
    text += RemovedVariables(variables);
  }
  return text + EmptyClasses(variables);
}

}  // namespace Hovar
