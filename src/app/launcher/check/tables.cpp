#include "app/launcher/check/tables.h"

#include <algorithm>
#include <array>
#include <unordered_set>

#include "app/launcher/check/csv.h"
#include "app/launcher/silent_reading.h"
#include "app/launcher/text_places.h"
#include "data/data_file_reader.h"
#include "foundation/io/file_stream.h"
#include "prediction/prediction_files.h"
#include "regression/coefficient_file.h"

namespace Hovar {
namespace {

using Vell::IO::FileStream;

constexpr std::int64_t kLeadingFields = 3;  // key, hospital and outcome

/// Where a reader stopped, and in which error.
struct Stop {
  std::int64_t offset = 0;
  std::string error;
};

/// Lets `read` read a file from a stream on it.
template <typename Read>
std::optional<Stop> StopOf(const std::string& path, Read read) {
  std::int64_t offset = 0;
  std::optional<std::string> error = ErrorOf([&] {
    FileStream stream(Vell::String(std::string_view(path)), Vell::IO::Mode::kReadText);
    try {
      read(stream);
    } catch (const Vell::Exceptions::Exception&) {
      offset = stream.Tell();
      throw;
    }
  });
  if (!error.has_value()) {
    return std::nullopt;
  }
  return Stop{offset, std::move(*error)};
}

/// The cell in which a reader of numbers stopped.
struct Cell {
  Place place;
  std::size_t field = 0;  // from 0
  std::string text;
  std::string record;
};

/// True for a text that begins like "nan" or "inf" and is neither. Reading such a word, as the C
/// library reads it, also takes the first byte that is wrong, the comma behind the cell perhaps.
bool IsBrokenWord(std::string_view cell) {
  std::string word(cell.substr(0, 4));
  word.erase(0, word.find_first_not_of(" \t+-"));
  for (char& c : word) {
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return (word.starts_with('n') && !word.starts_with("nan")) ||
         (word.starts_with('i') && !word.starts_with("inf"));
}

/// Finds the cell. Reading a number passes over line ends before it, so a reader that stopped in
/// the first fields of a line, which hold no numbers, looked for the last field of the line before.
Cell CellAt(const std::string& path, std::int64_t offset, QuoteUse quotes,
            std::size_t firstNumber) {
  LineAt line = LineOf(path, offset);
  const auto fieldAt = [&](std::int64_t place) {
    const auto within = static_cast<std::size_t>(std::max<std::int64_t>(place - line.offset, 0));
    return FieldStarts(std::string_view(line.text).substr(0, within), quotes).size() - 1;
  };
  std::size_t field = fieldAt(offset);
  if (field < firstNumber && line.offset > 0) {
    offset = line.offset - 1;
    line = LineOf(path, offset);
    field = fieldAt(offset);
  }
  if (field > 0 && IsBrokenWord(FieldOf(line.text, field - 1, quotes))) {
    --field;
  }
  Cell cell;
  const std::vector<std::size_t> starts = FieldStarts(line.text, quotes);
  cell.field = std::min(field, starts.size() - 1);
  cell.place = PlaceOf(path, line.offset + static_cast<std::int64_t>(starts[cell.field]));
  cell.text = std::string(FieldOf(line.text, cell.field, quotes));
  cell.record = std::move(line.text);
  return cell;
}

std::string FieldNumber(std::size_t field) { return "Field " + std::to_string(field + 1); }

std::string Holds(std::string_view cell) {
  return cell.empty() ? " is empty" : " holds " + Quoted(cell);
}

/// An error that all tables share, or one that has no words of its own.
void AddCommonError(Findings& findings, const std::string& path, const Stop& stop) {
  if (stop.error == "Invalid CSV format") {
    const std::optional<std::int64_t> open = OpenQuoteIn(path);
    if (open.has_value()) {
      findings.AddError(path, PlaceOf(path, *open),
                        "A double quote is opened here and never closed. Close it, or remove it.");
      return;
    }
    const std::int64_t wrong = std::max<std::int64_t>(stop.offset - 1, 0);
    findings.AddError(
        path, PlaceOf(path, wrong),
        "A double quote breaks the rules of CSV near here. Put quotes round the whole "
        "field and write each one inside twice; a key must not hold a comma.");
    return;
  }
  if (stop.error == "Invalid input string") {
    findings.AddError(path, PlaceOf(path, std::max<std::int64_t>(stop.offset - 1, 0)),
                      "The file holds a NUL byte. Save it as text without NUL bytes.");
    return;
  }
  findings.AddError(path, PlaceOf(path, stop.offset),
                    "The program would end here in " + Quoted(stop.error) + '.');
}

void WarnOfByteOrderMark(Findings& findings, const std::string& path, const FileTraits& traits) {
  if (traits.hasByteOrderMark) {
    findings.AddWarning(path, {},
                        "The file begins with a byte order mark, which becomes part of its first "
                        "field. Save it as UTF-8 without one.");
  }
}

// The data file.

/// What the field at an index is, with its name from the header.
std::string RoleOf(const DefinitionFile& definition, const std::string& header, std::size_t field) {
  const auto index = static_cast<std::int64_t>(field);
  const auto fields = static_cast<std::int64_t>(FieldStarts(header, QuoteUse::kHonour).size());
  const std::int64_t variables = (fields - kLeadingFields - definition.poaCount) / 2;
  std::string role = "X";
  if (index < kLeadingFields) {
    role = index == 0 ? "key" : index == 1 ? "hospital ID" : "Y";
  } else if (index < kLeadingFields + definition.poaCount) {
    role = "POA indicator";
  } else if (index < kLeadingFields + definition.poaCount + variables) {
    role = "Z";
  }
  const std::string_view name = FieldOf(header, field, QuoteUse::kHonour);
  return " (" + role + (name.empty() ? "" : ", " + Quoted(name)) + ')';
}

void AddCellError(Findings& findings, const DefinitionFile& definition, const Stop& stop) {
  const Cell cell = CellAt(definition.data, stop.offset, QuoteUse::kHonour, 2);
  const std::string role = RoleOf(definition, HeaderOf(definition.data), cell.field);
  const bool mayBeMissing = role.starts_with(" (X") || role.starts_with(" (POA");
  findings.AddError(definition.data, cell.place,
                    FieldNumber(cell.field) + role + Holds(cell.text) +
                        (mayBeMissing ? ". Write 0 or 1, or leave it empty where it is missing."
                                      : ". Write 0 or 1; it may not be missing."));
}

void AddShapeError(Findings& findings, const std::string& path) {
  RecordWalker walker(path);
  std::size_t wanted = 0;
  while (walker.Next()) {
    const std::vector<std::size_t> starts = FieldStarts(walker.Record(), QuoteUse::kHonour);
    if (wanted == 0) {
      wanted = starts.size();
    } else if (starts.size() != wanted) {
      const std::size_t within = starts.size() > wanted ? starts[wanted] : walker.Record().size();
      findings.AddError(path, PlaceOf(path, walker.Offset() + static_cast<std::int64_t>(within)),
                        walker.Record().empty()
                            ? "The line is empty. Remove it."
                            : "The line has " +
                                  Counted(static_cast<std::int64_t>(starts.size()), "field") +
                                  ", the header has " + std::to_string(wanted) +
                                  ". Give every line the same number of fields.");
      return;
    }
  }
}

/// What fields the definition's number of indicators leaves for X and Z.
void AddIndicatorError(Findings& findings, const DefinitionFile& definition) {
  const auto fields =
      static_cast<std::int64_t>(FieldStarts(HeaderOf(definition.data), QuoteUse::kHonour).size());
  findings.AddError(definition.path, definition.PlaceOfValue("Input/NumberOfPoaIndicators"),
                    "The lines of " + Quoted(definition.data) + " have " +
                        Counted(fields, "field") + "; behind key, hospital, Y and " +
                        Counted(definition.poaCount, "POA indicator") + " that leaves " +
                        std::to_string(fields - kLeadingFields - definition.poaCount) +
                        " for Z and X, which come in pairs. Correct the number of indicators.");
}

void AddSizeError(Findings& findings, const DefinitionFile& definition, const Stop& stop) {
  const std::string header = HeaderOf(definition.data);
  const auto fields = static_cast<std::int64_t>(FieldStarts(header, QuoteUse::kHonour).size());
  if (TraitsOf(definition.data).length == 0) {
    findings.AddError(definition.data, {}, "The data file is empty. Give it a header and records.");
  } else if (definition.poaCount < 0 || fields < kLeadingFields + definition.poaCount) {
    AddIndicatorError(findings, definition);
  } else if (!LineOf(definition.data, 0).text.empty() &&
             header.size() == static_cast<std::size_t>(TraitsOf(definition.data).length)) {
    findings.AddError(definition.data, PlaceOf(definition.data, TraitsOf(definition.data).length),
                      "The header does not end with a line feed. End every line with one.");
  } else {
    AddCommonError(findings, definition.data, stop);
  }
}

void AddLastLineError(Findings& findings, const std::string& path) {
  const FileTraits traits = TraitsOf(path);
  findings.AddError(path, PlaceOf(path, traits.length),
                    traits.endsWithLineFeed
                        ? "The records do not end where the lines do. Look for a key that holds a "
                          "comma or a line feed."
                        : "The last line does not end with a line feed. Add one.");
}

/// Finds the record at which a hospital's ID comes again after another hospital.
void AddGroupingError(Findings& findings, const std::string& path) {
  std::unordered_set<std::string> earlier;
  std::string last;
  RecordWalker walker(path);
  walker.Next();  // the header
  while (walker.Next()) {
    const std::vector<std::size_t> starts = FieldStarts(walker.Record(), QuoteUse::kHonour);
    std::string id(FieldOf(walker.Record(), 1, QuoteUse::kHonour));
    if (id.size() >= 2 && id.front() == '"') {
      id = id.substr(1, id.size() - 2);  // quoted or not, it is the same hospital
    }
    if (!earlier.empty() && id == last) {
      continue;
    }
    if (!earlier.insert(id).second && starts.size() > 1) {
      findings.AddError(path, PlaceOf(path, walker.Offset() + static_cast<std::int64_t>(starts[1])),
                        "The hospital " + Quoted(id) +
                            " comes again after another one. Sort the records by hospital.");
      return;
    }
    last = std::move(id);
  }
}

void AddDataError(Findings& findings, const DefinitionFile& definition, const Stop& stop) {
  if (stop.error == "Variable number of fields") {
    AddShapeError(findings, definition.data);
  } else if (stop.error == "Wrong number of POA indicators in definition file") {
    AddIndicatorError(findings, definition);
  } else if (stop.error == "Data wrong format") {
    AddLastLineError(findings, definition.data);
  } else if (stop.error == "Data must be grouped by hospital ID") {
    AddGroupingError(findings, definition.data);
  } else if (stop.error == "Invalid input" || stop.error == "IO Exception" ||
             stop.error == "Unexpected end of stream") {
    AddCellError(findings, definition, stop);
  } else if (stop.error == "Invalid argument" || stop.error == "Index out of range") {
    AddSizeError(findings, definition, stop);
  } else {
    AddCommonError(findings, definition.data, stop);
  }
}

void WarnOfCarriageReturn(Findings& findings, const std::string& path, const FileTraits& traits) {
  if (traits.firstCarriageReturnLineFeed >= 0) {
    findings.AddWarning(path, PlaceOf(path, traits.firstCarriageReturnLineFeed),
                        "The line ends with a carriage return and a line feed. End lines with line "
                        "feeds alone: on Linux the last name of the header keeps the carriage "
                        "return.");
  }
}

// The files of coefficients and predictions.

/// One of these files: how its reader passes over fields, and what its lines hold.
struct TableForm {
  QuoteUse quotes;
  std::size_t firstNumber;
  std::size_t fields;
};
constexpr TableForm kCoefficientForm = {QuoteUse::kHonour, 2, 21};
constexpr TableForm kPredictionForm = {QuoteUse::kIgnore, 3, 11};

/// The first line before the stop that has too few fields, which lets a reader go astray.
bool AddShortLineError(Findings& findings, const std::string& path, std::int64_t stop,
                       const TableForm& form) {
  RecordWalker walker(path);
  walker.Next();  // the header, which is passed over
  while (walker.Next() && walker.Offset() <= stop) {
    const std::size_t fields = FieldStarts(walker.Record(), QuoteUse::kHonour).size();
    if (fields < form.fields) {
      const auto length = static_cast<std::int64_t>(walker.Record().size());
      findings.AddError(path, PlaceOf(path, walker.Offset() + length),
                        "The line has " + Counted(static_cast<std::int64_t>(fields), "field") +
                            " of " + std::to_string(form.fields) +
                            ". Use the file as the program wrote it.");
      return true;
    }
  }
  return false;
}

void AddNumberError(Findings& findings, const std::string& path, const Stop& stop,
                    const TableForm& form) {
  if (AddShortLineError(findings, path, stop.offset, form)) {
    return;
  }
  const Cell cell = CellAt(path, stop.offset, form.quotes, form.firstNumber);
  const std::string header = HeaderOf(path);
  const std::string_view name = FieldOf(header, cell.field, QuoteUse::kHonour);
  findings.AddError(
      path, cell.place,
      FieldNumber(cell.field) + (name.empty() ? std::string() : " (" + std::string(name) + ')') +
          Holds(cell.text) + " where a number is due. Use the file as the program wrote it.");
}

template <typename Read>
bool CheckTable(Findings& findings, const std::string& path, const TableForm& form, Read read) {
  const std::optional<Stop> stop = StopOf(path, read);
  if (!stop.has_value()) {
    return true;
  }
  if (stop->error == "Unexpected end of stream") {
    AddNumberError(findings, path, *stop, form);
  } else if (stop->error == "Invalid argument") {
    findings.AddError(path, {}, "The file has no complete line. Use it as the program wrote it.");
  } else {
    AddCommonError(findings, path, *stop);
  }
  return false;
}

/// Warns of commas within quotes, which separate for the reader of this file.
void WarnOfQuotedCommas(Findings& findings, const std::string& path) {
  RecordWalker walker(path);
  walker.Next();
  while (walker.Next()) {
    const std::string& record = walker.Record();
    if (record.find('"') != std::string::npos &&
        FieldStarts(record, QuoteUse::kIgnore).size() !=
            FieldStarts(record, QuoteUse::kHonour).size()) {
      const auto quote = static_cast<std::int64_t>(record.find('"'));
      findings.AddWarning(path, PlaceOf(path, walker.Offset() + quote),
                          "A key or hospital ID holds a comma, which separates here in spite of "
                          "the quotes: values would be taken from wrong columns. Use IDs without "
                          "commas.");
      return;
    }
  }
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
  return count > kMost ? names + " and " + std::to_string(count - kMost) + " more" : names;
}

/// Warns when the variables, which are matched by position, do not stand in the same order.
void WarnOfOrder(Findings& findings, const DefinitionFile& definition, const DataSet& dataSet,
                 const RegressionResults& results) {
  for (std::int32_t j = 0; j < dataSet.variableCount; ++j) {
    const std::string_view ofData = dataSet.xNames[j].View();
    const std::string_view ofFile = results.xNames[j].View();
    if (ofData != ofFile || dataSet.zNames[j].View() != results.zNames[j].View()) {
      findings.AddWarning(
          definition.coefficients, {j + 2, 1},
          "The coefficients of " + Quoted(ofFile) + " would serve for " + Quoted(ofData) +
              " of the data: variables are matched by position. Bring the columns of the data "
              "into the order of the coefficient file.");
      return;
    }
  }
}

}  // namespace

bool CheckDataFile(Findings& findings, const DefinitionFile& definition, DataSet& dataSet) {
  const std::optional<Stop> stop = StopOf(definition.data, [&](Vell::IO::Stream& stream) {
    ReadDataFile(dataSet, stream, definition.poaCount);
  });
  if (stop.has_value()) {
    AddDataError(findings, definition, *stop);
  }
  const FileTraits traits = TraitsOf(definition.data);
  WarnOfByteOrderMark(findings, definition.data, traits);
  WarnOfCarriageReturn(findings, definition.data, traits);
  return !stop.has_value();
}

bool CheckCoefficientFile(Findings& findings, const DefinitionFile& definition,
                          RegressionResults& results) {
  const std::string& path = definition.coefficients;
  const FileTraits traits = TraitsOf(path);
  if (!traits.endsWithLineFeed) {
    findings.AddWarning(path, PlaceOf(path, traits.length),
                        "The last line does not end with a line feed, so its variable is lost. Add "
                        "a line feed.");
  }
  WarnOfByteOrderMark(findings, path, traits);
  WarnOfCarriageReturn(findings, path, traits);
  return CheckTable(findings, path, kCoefficientForm,
                    [&results](Vell::IO::Stream& stream) { ReadCoefficientFile(results, stream); });
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
  }
  return isRead;
}

bool CheckVariables(Findings& findings, const DefinitionFile& definition, DataSet& dataSet,
                    const RegressionResults& results) {
  if (ErrorOf([&] { ReconcileVariables(dataSet, results); }).has_value()) {
    const std::string missing = MissingVariables(dataSet, results);
    findings.AddError(definition.coefficients, {},
                      "The data have " + Counted(dataSet.variableCount - 1, "variable") +
                          " of the " + std::to_string(results.VariableCount() - 1) +
                          " in the coefficient file" +
                          (missing.empty() ? std::string() : "; missing: " + missing) +
                          ". Use the coefficient file of an Analysis of the same variables.");
    return false;
  }
  if (results.VariableCount() == 0) {
    findings.AddWarning(definition.coefficients, {},
                        "No complete line stands behind the header, so all predictions would be "
                        "one half. Use the file as the program wrote it.");
  }
  WarnOfOrder(findings, definition, dataSet, results);
  return true;
}

}  // namespace Hovar
