#include "app/launcher/check/columns.h"

#include <algorithm>

#include "app/launcher/silent_reading.h"
#include "data/column_elimination.h"
#include "linalg/kernels/set_columns.h"
#include "regression/xz_table.h"

namespace Hovar {
namespace {

std::string Text(const Vell::String& text) { return std::string(text.View()); }

/// Notes a list of columns of the data set as removed. `kept` maps its columns to variables.
void NoteRemoved(std::vector<VariableCounts>& variables, const std::vector<std::size_t>& kept,
                 const Vell::IndexVector& columns, Removal removal) {
  for (const std::int32_t column : columns) {
    if (column > 0) {
      variables[kept[static_cast<std::size_t>(column)]].removal = removal;
    }
  }
}

/// Notes as dependent what is no longer in the data set and has no other reason. Elimination keeps
/// the order of the columns that stay.
void NoteDependent(std::vector<VariableCounts>& variables, const DataSet& dataSet) {
  std::int32_t next = 1;
  for (VariableCounts& variable : variables) {
    if (variable.removal != Removal::kNone) {
      continue;
    }
    if (next < dataSet.variableCount && dataSet.xNames[next].View() == variable.xName &&
        dataSet.zNames[next].View() == variable.zName) {
      ++next;
    } else {
      variable.removal = Removal::kDependent;
    }
  }
}

void NoteZeroColumns(std::vector<VariableCounts>& variables, const DataSet& dataSet) {
  std::vector<std::size_t> all(static_cast<std::size_t>(dataSet.variableCount));
  for (std::size_t j = 1; j < all.size(); ++j) {
    all[j] = j - 1;
  }
  NoteRemoved(variables, all, FindZeroColumns(dataSet.x, dataSet.recordHasMissing),
              Removal::kZeroX);
  NoteRemoved(variables, all, FindZeroColumns(dataSet.z), Removal::kZeroZ);
}

void AddEliminationError(Findings& findings, const DefinitionFile& definition,
                         std::int32_t completeP0Count, const std::string& error) {
  const double tolerance = definition.analysis.linearDependenceTolerance;
  const std::string element = "Regression/LinearDependence/Tolerance";
  if (completeP0Count == 0) {
    findings.AddError(definition.data, {},
                      "No record without missing values has P = 0, and an Analysis fits such "
                      "records. Fill in missing values, or check the POA indicators.");
  } else if (!(tolerance < 1)) {
    findings.AddError(definition.path, definition.PlaceOfValue(element),
                      "With this tolerance all columns count as dependent. Write a small number, "
                      "such as 1e-9.");
  } else {
    findings.AddError(definition.path, definition.PlaceOfValue(element),
                      "Column elimination would end in " + Quoted(error) +
                          ". Choose another tolerance, or remove dependent variables from " +
                          Quoted(definition.data) + '.');
  }
}

/// The first [X|Z] table that the program could not make.
void CheckXzTables(Findings& findings, const DefinitionFile& definition, const DataSet& dataSet,
                   const std::vector<VariableCounts>& variables) {
  std::int32_t column = 0;
  for (const VariableCounts& variable : variables) {
    if (variable.removal != Removal::kNone) {
      continue;
    }
    ++column;
    const bool isSuspect = variable.IsEmptyWithZ() || variable.IsEmptyWithoutZ(dataSet.recordCount);
    if (isSuspect && ErrorOf([&] { ComputeXzTable(dataSet, column); }).has_value()) {
      const char* const z = variable.IsEmptyWithZ() ? "1" : "0";
      findings.AddError(definition.data, {},
                        "No record with a known X of " + Quoted(variable.xName) + " has Z = " + z +
                            ", so its [X|Z] table cannot be made. Remove the variable, or merge "
                            "it with another one.");
    }
  }
}

std::string Percent(std::int64_t part, std::int64_t whole) {
  if (whole == 0) {
    return "-";
  }
  // Hundredths of a percent, rounded half up.
  const std::int64_t hundredths = (part * 20000 + whole) / (2 * whole);
  const std::string decimals = std::to_string(100 + hundredths % 100).substr(1);
  return std::to_string(hundredths / 100) + '.' + decimals + " %";
}

std::string HospitalsWithoutCompleteRecords(const DataSet& dataSet) {
  std::string lines;
  std::int32_t count = 0;
  for (std::int32_t h = 0; h < dataSet.hospitalCount; ++h) {
    if (dataSet.hospitalComplete[h] == 0) {
      ++count;
      lines += "    " + Quoted(dataSet.hospitalIds[h].View()) + ", " +
               Counted(dataSet.hospitalSize[h], "record") + '\n';
    }
  }
  return "  hospitals without a complete record: " + std::to_string(count) + '\n' + lines;
}

std::string Named(const VariableCounts& variable) {
  return Quoted(variable.zName) + ", " + Quoted(variable.xName);
}

std::string_view ReasonOf(Removal removal) noexcept {
  switch (removal) {
    case Removal::kZeroZ:
      return "Z is 0 everywhere";
    case Removal::kZeroX:
      return "X is 0 in all complete records";
    case Removal::kDependent:
      return "depends on other variables";
    case Removal::kNone:
      break;
  }
  return "";
}

std::string RemovedVariables(const std::vector<VariableCounts>& variables) {
  std::string lines;
  for (const VariableCounts& variable : variables) {
    if (variable.removal != Removal::kNone) {
      lines += "    " + Named(variable) + ": " + std::string(ReasonOf(variable.removal)) + '\n';
    }
  }
  return "  removed by column elimination:" + std::string(lines.empty() ? " none" : "") + '\n' +
         lines;
}

std::string EmptyClasses(std::int32_t records, const std::vector<VariableCounts>& variables) {
  std::string lines;
  for (const VariableCounts& variable : variables) {
    if (variable.IsEmptyWithZ()) {
      lines += "    " + Named(variable) + ": no record with Z = 1 and a known X\n";
    }
    if (variable.IsEmptyWithoutZ(records)) {
      lines += "    " + Named(variable) + ": no record with Z = 0 and a known X\n";
    }
  }
  return "  empty [X|Z] classes:" + std::string(lines.empty() ? " none" : "") + '\n' + lines;
}

}  // namespace

std::vector<VariableCounts> CountVariables(const DataSet& dataSet) {
  std::vector<VariableCounts> counts(static_cast<std::size_t>(dataSet.variableCount));
  std::vector<bool> hasMissingX(counts.size());
  Vell::IndexVector missingScratch(dataSet.variableCount);
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    const Vell::TernaryRow x = dataSet.x.Row(i);
    const auto missing = Vell::MissingColumns(x, missingScratch.Span());
    for (const std::int32_t j : missing) {
      ++counts[static_cast<std::size_t>(j)].xMissing;
      hasMissingX[static_cast<std::size_t>(j)] = true;
    }
    Vell::VisitColumns<Vell::kValuePlane>(x, [&](std::int32_t j) {
      const auto column = static_cast<std::size_t>(j);
      counts[column].xOnes += hasMissingX[column] ? 0 : 1;
    });
    Vell::VisitColumns<Vell::kOnlyPlane>(dataSet.z.Row(i), [&](std::int32_t j) {
      const auto column = static_cast<std::size_t>(j);
      ++counts[column].zOnes;
      counts[column].zOnesWithKnownX += hasMissingX[column] ? 0 : 1;
    });
    for (const std::int32_t j : missing) {
      hasMissingX[static_cast<std::size_t>(j)] = false;
    }
  }
  for (std::int32_t j = 1; j < dataSet.variableCount; ++j) {
    counts[static_cast<std::size_t>(j)].zName = Text(dataSet.zNames[j]);
    counts[static_cast<std::size_t>(j)].xName = Text(dataSet.xNames[j]);
  }
  counts.erase(counts.begin());  // the intercept
  return counts;
}

void CheckColumns(Findings& findings, const DefinitionFile& definition, DataSet& dataSet,
                  std::vector<VariableCounts>& variables) {
  NoteZeroColumns(variables, dataSet);
  const std::int32_t completeP0Count = dataSet.completeP0Count;  // before cells are removed
  const std::optional<std::string> error =
      ErrorOf([&] { EliminateColumns(dataSet, definition.analysis.linearDependenceTolerance); });
  NoteDependent(variables, dataSet);
  if (error.has_value() || dataSet.variableCount == 0) {
    AddEliminationError(findings, definition, completeP0Count, error.value_or("Invalid argument"));
    return;
  }
  CheckXzTables(findings, definition, dataSet, variables);
}

std::string DescribeDataSet(const DefinitionFile& definition, const DataSet& dataSet) {
  const std::int32_t records = dataSet.recordCount;
  std::int32_t outcomes = 0;
  std::int32_t present = 0;
  std::int32_t missing = 0;
  for (std::int32_t i = 0; i < records; ++i) {
    outcomes += dataSet.y.Get(i) ? 1 : 0;
    missing += dataSet.p.IsMissing(i) ? 1 : 0;
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
  text += "  complete records: " + std::to_string(dataSet.completeCount) + " (" +
          Percent(dataSet.completeCount, records) +
          "), with P = 0: " + std::to_string(dataSet.completeP0Count) + '\n';
  return text + HospitalsWithoutCompleteRecords(dataSet);
}

std::string DescribeVariables(const DefinitionFile& definition, std::int32_t records,
                              const std::vector<VariableCounts>& variables) {
  std::string text = "  variables (Z, X): Z = 1; X = 1 of the known; X missing\n";
  for (const VariableCounts& variable : variables) {
    text += "    " + Named(variable) + ": " + Percent(variable.zOnes, records) + "; " +
            Percent(variable.xOnes, records - variable.xMissing) + "; " +
            Percent(variable.xMissing, records) + '\n';
  }
  if (definition.kind == RunKind::kAnalysis) {
    text += RemovedVariables(variables);
  }
  return text + EmptyClasses(records, variables);
}

}  // namespace Hovar
