#include "app/launcher/check/tables.h"

#include <algorithm>
#include <vector>

namespace Hovar {
namespace {

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

}  // namespace

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
  return cell;
}

std::string FieldNumber(std::size_t field) { return "Field " + std::to_string(field + 1); }

std::string Holds(std::string_view cell) {
  return cell.empty() ? " is empty" : " holds " + Quoted(cell);
}

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

void WarnOfCarriageReturn(Findings& findings, const std::string& path, const FileTraits& traits) {
  if (traits.firstCarriageReturnLineFeed >= 0 && KeepsCarriageReturns()) {
    findings.AddWarning(path, PlaceOf(path, traits.firstCarriageReturnLineFeed),
                        "The line ends with a carriage return and a line feed. End lines with line "
                        "feeds alone: on Linux the last name of the header keeps the carriage "
                        "return.");
  }
}

}  // namespace Hovar
