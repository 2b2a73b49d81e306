#include "tools/check/columns.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "linalg/kernels/set_columns.h"
#include "messages/error_texts.h"
#include "tools/check/data_messages.h"
#include "tools/support/error_capture.h"
#include "tools/support/message.h"

namespace Hovar {
namespace {

std::string Text(const Vell::String& text) { return std::string(text.View()); }

/// Counts the columns of a data set, record by record.
class VariableCounter {
 public:
  explicit VariableCounter(const DataSet& dataSet)
      : data_(dataSet),
        counts_(static_cast<std::size_t>(dataSet.variableCount)),
        isMissing_(counts_.size()),
        scratch_(dataSet.variableCount) {}

  void Count(std::int32_t record) {
    const Vell::TernaryRow x = data_.x.Row(record);
    const auto missing = Vell::MissingColumns(x, scratch_.Span());
    for (const std::int32_t j : missing) {
      ++counts_[Index(j)].xMissing;
      isMissing_[Index(j)] = 1;
    }
    Vell::VisitColumns<Vell::kValuePlane>(
        x, [&](std::int32_t j) { counts_[Index(j)].xOnes += 1 - isMissing_[Index(j)]; });
    Vell::VisitColumns<Vell::kOnlyPlane>(data_.z.Row(record), [&](std::int32_t j) {
      ++counts_[Index(j)].zOnes;
      counts_[Index(j)].zOnesWithKnownX += 1 - isMissing_[Index(j)];
    });
    for (const std::int32_t j : missing) {
      isMissing_[Index(j)] = 0;
    }
    for (std::int32_t word = 0; word < Vell::ColumnWordCount(data_.variableCount); ++word) {
      const Vell::TernaryWords cells = Vell::TernaryColumnWords(x, word);
      const std::uint64_t ones = cells.values & ~cells.missing;
      Vell::VisitBits(ones & Vell::SetColumnWord(data_.z.Row(record), word), [&](int bit) {
        ++counts_[Index(word * Vell::kColumnsPerWord + bit)].xOnesWithZ;
      });
    }
  }

  bool HasNoEmptyClass(std::int32_t records) {
    return std::none_of(counts_.begin() + 1, counts_.end(), [records](VariableCounts& counts) {
      counts.records = records;
      return counts.IsEmptyWithZ() || counts.IsEmptyWithoutZ();
    });
  }

  /// The counts of `records` records, without the intercept's.
  std::vector<VariableCounts> Take(std::int32_t records) {
    for (std::int32_t j = 0; j < data_.variableCount; ++j) {
      counts_[Index(j)].zName = Text(data_.zNames[j]);
      counts_[Index(j)].xName = Text(data_.xNames[j]);
      counts_[Index(j)].records = records;
    }
    counts_.erase(counts_.begin());
    return std::move(counts_);
  }

 private:
  static std::size_t Index(std::int32_t column) noexcept {
    return static_cast<std::size_t>(column);
  }

  const DataSet& data_;
  std::vector<VariableCounts> counts_;
  std::vector<std::int32_t> isMissing_;  // 1 where the record's X is
  Vell::IndexVector scratch_;
};

/// Notes what was removed. `variables` may be empty.
void NoteEliminated(std::vector<VariableCounts>& variables,
                    const Vell::GrowableArray<EliminatedVariable>& eliminated) {
  for (const EliminatedVariable& removed : eliminated) {
    const std::size_t variable = static_cast<std::size_t>(removed.column) - 1;
    if (removed.column > 0 && variable < variables.size()) {
      variables[variable].eliminated = removed;
    }
  }
}

void AddEliminationError(Findings& findings, const DefinitionFile& definition,
                         std::int32_t completeP0Count, const std::string& error) {
  const double tolerance = definition.analysis.linearDependenceTolerance;
  constexpr Element element = Element::kLinearDependenceTolerance;
  if (completeP0Count == 0) {
    findings.AddError(definition.data, {}, Filled(kColumnMessages.noCompleteRecord));
  } else if (!(tolerance < 1)) {
    findings.AddError(definition.path, definition.PlaceOfValue(element),
                      Filled(kColumnMessages.tolerance));
  } else if (error == Messages::kErrors.invalidArgument ||
             error == Messages::kErrors.integerOverflow) {
    findings.AddError(definition.data, {}, Filled(kColumnMessages.tooManyVariables));
  } else {
    findings.AddError(definition.path, definition.PlaceOfValue(element),
                      Filled(kColumnMessages.elimination, Quoted(error), Quoted(definition.data)));
  }
}

/// The [X|Z] tables that the program could not make, of the variables that the data set has now.
void CheckXzTables(Findings& findings, const DefinitionFile& definition, const DataSet& dataSet) {
  for (const VariableCounts& variable :
       CountVariables(dataSet, CountExtent::kUntilNoClassIsEmpty)) {
    if (variable.IsEmptyWithZ() || variable.IsEmptyWithoutZ()) {
      const char* const z = variable.IsEmptyWithZ() ? "1" : "0";
      findings.AddError(definition.data, {},
                        Filled(kColumnMessages.xzTable, Quoted(variable.xName), z));
    }
  }
}

}  // namespace

std::vector<VariableCounts> CountVariables(const DataSet& dataSet, CountExtent extent) {
  VariableCounter counter(dataSet);
  std::int32_t record = 0;
  for (; record < dataSet.recordCount; ++record) {
    constexpr std::int32_t kRecordsBetweenChecks = 4096;
    if (extent == CountExtent::kUntilNoClassIsEmpty && record % kRecordsBetweenChecks == 0 &&
        counter.HasNoEmptyClass(record)) {
      break;
    }
    counter.Count(record);
  }
  return counter.Take(record);
}

bool CheckColumns(Findings& findings, const DefinitionFile& definition, DataSet& dataSet,
                  std::vector<VariableCounts>& variables) {
  const std::int32_t completeP0Count = dataSet.completeP0Count;  // before cells are removed
  Vell::GrowableArray<EliminatedVariable> eliminated;
  const std::optional<std::string> error = ErrorOf([&] {
    EliminateColumns(eliminated, dataSet, definition.analysis.linearDependenceTolerance);
  });
  NoteEliminated(variables, eliminated);
  if (error.has_value() || dataSet.variableCount == 0) {
    AddEliminationError(findings, definition, completeP0Count,
                        error.value_or(std::string(Messages::kErrors.invalidArgument.Text())));
    return false;
  }
  CheckXzTables(findings, definition, dataSet);
  return true;
}

}  // namespace Hovar
