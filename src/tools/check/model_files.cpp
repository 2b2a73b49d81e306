#include "tools/check/model_files.h"

#include <initializer_list>

#include "foundation/string.h"
#include "messages/error_texts.h"
#include "prediction/prediction_files.h"
#include "regression/coefficient_file.h"
#include "tools/check/finding_messages.h"
#include "tools/check/model_messages.h"
#include "tools/check/model_values.h"
#include "tools/check/tables.h"
#include "tools/support/message.h"

namespace Hovar {
namespace {

constexpr std::uint32_t Bits(std::initializer_list<int> fields) {
  std::uint32_t bits = 0;
  for (const int field : fields) {
    bits |= std::uint32_t{1} << field;
  }
  return bits;
}

// Names and standard errors are texts, and the unused columns of predictions are passed over.
constexpr ModelForm kCoefficientForm = {
    {QuoteUse::kHonour, 2, Bits({3, 5, 6, 9, 12, 15, 18})}, 21, Bits({3, 5})};
constexpr ModelForm kPredictionForm = {{QuoteUse::kIgnore, 3, Bits({3, 4, 6, 7, 9, 10})}, 11, 0};

std::string NumberError(std::size_t field, std::string_view name, std::string_view cell) {
  return Filled(kModelMessages.numberDue,
                FieldText(field, name.empty() ? std::string() : QuotedField(name)), Holds(cell));
}

/// The first line before the stop that lets a reader go astray: it has a comma within quotes that
/// mean nothing, or too few fields, or it has to end with a number and ends with nothing, so that
/// the next line is read as the number.
bool AddLineError(Findings& findings, const std::string& path, std::int64_t stop,
                  const ModelForm& form) {
  const std::size_t last = form.fields - 1;
  RecordWalker walker(path);
  walker.Next();  // the header, which is passed over
  while (walker.Next() && walker.Offset() <= stop) {
    if (form.table.quotes == QuoteUse::kIgnore && HasQuotedComma(walker.Record())) {
      findings.AddError(path, PlaceOfQuotedComma(path, walker), Filled(kModelMessages.quotedComma));
      return true;
    }
    if (form.table.quotes == QuoteUse::kIgnore && HasQuotedLineFeed(walker.Record())) {
      findings.AddError(path, PlaceOf(path, walker.Offset()),
                        Filled(kModelMessages.quotedLineFeed));
      return true;
    }
    const std::size_t fields = FieldStarts(walker.Record(), QuoteUse::kHonour).size();
    if (fields < form.fields) {
      const auto length = static_cast<std::int64_t>(walker.Record().size());
      findings.AddError(path, PlaceOf(path, walker.Offset() + length),
                        Filled(kModelMessages.fieldCount, Counted(fields, "field"), form.fields));
      return true;
    }
    const std::string_view cell = FieldOf(walker.Record(), last, form.table.quotes);
    const std::int64_t place = walker.Offset() + static_cast<std::int64_t>(FieldStarts(
                                                     walker.Record(), form.table.quotes)[last]);
    if (form.table.IsReal(last) && place <= stop &&
        cell.find_first_not_of(Vell::kWhitespace) == std::string_view::npos) {
      const std::string header = HeaderOf(path);
      findings.AddError(path, PlaceOf(path, place),
                        NumberError(last, FieldOf(header, last, QuoteUse::kHonour), cell));
      return true;
    }
  }
  return false;
}

void AddNumberError(Findings& findings, const std::string& path, const Stop& stop,
                    const ModelForm& form) {
  if (AddLineError(findings, path, stop.offset, form)) {
    return;
  }
  const Cell cell = CellAt(path, stop.offset, form.table);
  const std::string header = HeaderOf(path);
  const std::string_view name = FieldOf(header, cell.field, QuoteUse::kHonour);
  findings.AddError(path, cell.place, NumberError(cell.field, name, cell.text));
}

template <typename Read>
bool CheckTable(Findings& findings, const std::string& path, const ModelForm& form, Read read) {
  const std::optional<Stop> stop = StopOf(path, read);
  if (!stop.has_value()) {
    return true;
  }
  if (stop->error == Messages::kErrors.unexpectedEnd) {
    AddNumberError(findings, path, *stop, form);
  } else if (stop->error == Messages::kErrors.invalidArgument) {
    findings.AddError(path, {}, Filled(kModelMessages.complete));
  } else {
    AddCommonError(findings, path, *stop);
  }
  return false;
}

/// The names of the coefficient file that the data set lacks, for a sentence.
std::string MissingVariables(const DataSet& dataSet, const RegressionResults& results) {
  constexpr int kMost = 5;
  std::string names;
  int count = 0;
  for (std::int32_t r = 0; r < results.VariableCount(); ++r) {
    bool isFound = false;
    for (std::int32_t j = 0; j < dataSet.variableCount && !isFound; ++j) {
      isFound = dataSet.xNames[j].View() == results.xNames[r].View() &&
                dataSet.zNames[j].View() == results.zNames[r].View();
    }
    if (!isFound && ++count <= kMost) {
      names += (names.empty() ? "" : ", ") + Quoted(results.xNames[r].View());
    }
  }
  return count > kMost ? Filled(kFindingParts.andMore, names, count - kMost) : names;
}

/// True where the first variable is the intercept, which no one counts.
template <typename Variables>
bool BeginsWithIntercept(const Variables& variables, std::int32_t count) {
  return count > 0 && variables.xNames[0].View() == "XIntercept" &&
         variables.zNames[0].View() == "ZIntercept";
}

/// How many variables there are, the intercept apart.
template <typename Variables>
std::int32_t CountOf(const Variables& variables, std::int32_t count) {
  return BeginsWithIntercept(variables, count) ? count - 1 : count;
}

/// Warns when the variables, which are matched by position, are not in the same order.
void WarnOfOrder(Findings& findings, const DefinitionFile& definition, const DataSet& dataSet,
                 const RegressionResults& results) {
  for (std::int32_t j = 0; j < dataSet.variableCount; ++j) {
    const bool isOtherX = dataSet.xNames[j].View() != results.xNames[j].View();
    const std::string_view ofData = (isOtherX ? dataSet.xNames : dataSet.zNames)[j].View();
    const std::string_view ofFile = (isOtherX ? results.xNames : results.zNames)[j].View();
    if (ofData != ofFile) {
      // The data always begin with it, so their columns cannot be brought into that order.
      const bool isIntercept = j == 0 && BeginsWithIntercept(dataSet, dataSet.variableCount);
      findings.AddWarning(
          definition.coefficients, {j + 2, 1},
          isIntercept ? Filled(kModelMessages.otherIntercept, Quoted(ofFile), Quoted(ofData))
                      : Filled(kModelMessages.otherOrder, Quoted(ofFile), Quoted(ofData)));
      return;
    }
  }
}

/// Warns when the data lost their intercept, because the coefficient file does not have its row.
void WarnOfMissingIntercept(Findings& findings, const DefinitionFile& definition,
                            const DataSet& dataSet) {
  if (dataSet.variableCount > 0 && !BeginsWithIntercept(dataSet, dataSet.variableCount)) {
    findings.AddWarning(definition.coefficients, {2, 1},
                        Filled(kModelMessages.interceptMissing, Quoted(dataSet.xNames[0].View())));
  }
}

}  // namespace

bool CheckCoefficientFile(Findings& findings, const DefinitionFile& definition,
                          RegressionResults& results) {
  const std::string& path = definition.coefficients;
  const FileTraits traits = TraitsOf(path);
  if (!traits.endsWithLineFeed) {
    findings.AddWarning(path, PlaceOf(path, traits.length), Filled(kModelMessages.lastLineEnd));
  }
  WarnOfByteOrderMark(findings, path, traits);
  WarnOfCarriageReturn(findings, path, traits);
  const bool isRead =
      CheckTable(findings, path, kCoefficientForm,
                 [&results](Vell::IO::Stream& stream) { ReadCoefficientFile(results, stream); });
  if (isRead) {
    WarnOfValues(findings, path, kCoefficientForm);
  }
  return isRead;
}

bool CheckIndividualPredictions(Findings& findings, const DefinitionFile& definition,
                                IndividualPredictions& predictions) {
  const std::string& path = definition.individualPredictions;
  const FileTraits traits = TraitsOf(path);
  WarnOfByteOrderMark(findings, path, traits);
  const bool isRead = CheckTable(
      findings, path, kPredictionForm,
      [&predictions](Vell::IO::Stream& stream) { ReadIndividualPredictions(predictions, stream); });
  if (isRead) {
    WarnOfQuotedCommas(findings, path);
    WarnOfValues(findings, path, kPredictionForm);
  }
  return isRead;
}

bool CheckVariables(Findings& findings, const DefinitionFile& definition, DataSet& dataSet,
                    const RegressionResults& results) {
  if (ErrorOf([&] { ReconcileVariables(dataSet, results); }).has_value()) {
    const std::string missing = MissingVariables(dataSet, results);
    const std::string variables = Counted(CountOf(dataSet, dataSet.variableCount), "variable");
    const std::int32_t all = CountOf(results, results.VariableCount());
    findings.AddError(definition.coefficients, {},
                      missing.empty()
                          ? Filled(kModelMessages.variables, variables, all)
                          : Filled(kModelMessages.variablesMissing, variables, all, missing));
    return false;
  }
  if (results.VariableCount() == 0) {
    findings.AddWarning(definition.coefficients, {}, Filled(kModelMessages.noLine));
  }
  WarnOfMissingIntercept(findings, definition, dataSet);
  WarnOfOrder(findings, definition, dataSet, results);
  return true;
}

void CheckPredictionCount(Findings& findings, const DefinitionFile& definition,
                          std::int32_t records, const IndividualPredictions& predictions) {
  const std::int32_t rows = predictions.yGivenZ.Size();
  const std::string lines = Counted(rows, "complete line");
  const std::string ofData = Counted(records, "record");
  const Place end =
      PlaceOf(definition.individualPredictions, TraitsOf(definition.individualPredictions).length);
  if (rows < records) {
    findings.AddError(definition.individualPredictions, end,
                      Filled(kModelMessages.fewerLines, lines, ofData, Quoted(definition.data)));
  } else if (rows > records) {
    findings.AddWarning(definition.individualPredictions, end,
                        Filled(kModelMessages.moreLines, lines, ofData, Quoted(definition.data)));
  }
  WarnOfOtherRecords(findings, definition);
}

}  // namespace Hovar
