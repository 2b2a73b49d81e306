#include "tools/check/tables.h"

#include <algorithm>
#include <vector>

#include "foundation/string.h"
#include "tools/support/text.h"

namespace Hovar {
namespace {

/// True for a text that begins like "nan", "inf" or "infinity" and is none of them. Reading such a
/// word, as the C library reads it, also consumes the first byte that is wrong, the comma after the
/// cell perhaps.
bool IsBrokenWord(std::string_view cell) {
  cell.remove_prefix(std::min(cell.find_first_not_of(Vell::kWhitespace), cell.size()));
  if (cell.starts_with('-') || cell.starts_with('+')) {
    cell.remove_prefix(1);
  }
  const std::string word = LowerCase(cell);
  if (word.starts_with('n')) {
    return !word.starts_with("nan");
  }
  return word.starts_with('i') && !word.starts_with(word.starts_with("infi") ? "infinity" : "inf");
}

struct RecordAt {
  std::int64_t offset = 0;
  std::string text;
};

/// The record that holds the byte at an offset, or the last one: a line, where quotes mean nothing.
RecordAt RecordOf(const std::string& path, std::int64_t offset, QuoteUse quotes) {
  if (quotes == QuoteUse::kIgnore) {
    const LineAt line = LineOf(path, offset);
    return {line.offset, line.text};
  }
  RecordAt record;
  for (RecordWalker walker(path); walker.Next() && walker.Offset() <= offset;) {
    record = {walker.Offset(), walker.Record()};
  }
  return record;
}

void AddQuoteError(Findings& findings, const std::string& path, const Stop& stop) {
  using Kind = WrongQuote::Kind;
  std::optional<WrongQuote> wrong = WrongQuoteIn(path);
  if (!wrong.has_value() || wrong->stop != stop.offset) {
    // Fields that are passed over keep no rules, and behind them others can be broken.
    wrong = {Kind::kOther, std::max<std::int64_t>(stop.offset - 1, 0), stop.offset};
  }
  const char* text =
      "A double quote breaks the rules of CSV near here. Put quotes round the whole field and "
      "write each one inside twice; a key must not hold a comma.";
  if (wrong->kind == Kind::kOpen) {
    text = "A double quote is opened here and never closed. Close it, or remove it.";
  } else if (wrong->kind == Kind::kWithin) {
    text =
        "A double quote stands within a field that does not begin with one. Remove it, or put "
        "quotes round the whole field and write each one inside twice.";
  }
  findings.AddError(path, PlaceOf(path, wrong->offset), text);
}

}  // namespace

Cell CellAt(const std::string& path, std::int64_t offset, const TableForm& form) {
  RecordAt record = RecordOf(path, offset, form.quotes);
  const auto fieldAt = [&](std::int64_t place) {
    const auto within = static_cast<std::size_t>(std::max<std::int64_t>(place - record.offset, 0));
    return FieldStarts(std::string_view(record.text).substr(0, within), form.quotes).size() - 1;
  };
  std::size_t field = fieldAt(offset);
  if (field < form.firstNumber) {
    offset = record.offset - 1;
    record = RecordOf(path, offset, form.quotes);
    field = fieldAt(offset);
  }
  if (field > 0 && form.IsReal(field - 1) &&
      IsBrokenWord(FieldOf(record.text, field - 1, form.quotes))) {
    --field;
  }
  Cell cell;
  const std::vector<std::size_t> starts = FieldStarts(record.text, form.quotes);
  cell.field = std::min(field, starts.size() - 1);
  cell.place = PlaceOf(path, record.offset + static_cast<std::int64_t>(starts[cell.field]));
  cell.text = std::string(FieldOf(record.text, cell.field, form.quotes));
  return cell;
}

std::string FieldNumber(std::size_t field) { return "Field " + std::to_string(field + 1); }

std::string QuotedField(std::string_view field) { return Quoted(DecodedField(field)); }

std::string Holds(std::string_view cell) {
  if (cell.empty()) {
    return " is empty";
  }
  return " holds " + QuotedField(cell) + (cell.starts_with('"') ? " in double quotes" : "");
}

void AddCommonError(Findings& findings, const std::string& path, const Stop& stop) {
  if (stop.error == "Invalid CSV format") {
    AddQuoteError(findings, path, stop);
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
                        "field. Save it as UTF-8 without one.",
                        Weight::kHarmless);
  }
}

void WarnOfCarriageReturn(Findings& findings, const std::string& path, const FileTraits& traits) {
  if (traits.firstCarriageReturnLineFeed >= 0 && KeepsCarriageReturns()) {
    const bool isHeader = HeaderOf(path).ends_with('\r');
    findings.AddWarning(path, PlaceOf(path, traits.firstCarriageReturnLineFeed),
                        std::string("The line ends with a carriage return and a line feed. End "
                                    "lines with line feeds alone: on Linux ") +
                            (isHeader ? "the last name of the header keeps the carriage return."
                                      : "the last field of the line keeps the carriage return."),
                        Weight::kHarmless);
  }
}

}  // namespace Hovar
