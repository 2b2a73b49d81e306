#include "tools/check/tables.h"

#include <algorithm>
#include <vector>

#include "foundation/string.h"
#include "messages/error_texts.h"
#include "tools/check/data_messages.h"
#include "tools/support/message.h"
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
  const Place place = PlaceOf(path, wrong->offset);
  switch (wrong->kind) {
    case Kind::kOpen:
      findings.AddError(path, place, Filled(kTableMessages.openQuote));
      break;
    case Kind::kWithin:
      findings.AddError(path, place, Filled(kTableMessages.quoteWithinField));
      break;
    case Kind::kOther:
      findings.AddError(path, place, Filled(kTableMessages.quotes));
      break;
  }
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

std::string FieldText(std::size_t field, std::string_view name) {
  return name.empty() ? Filled(kFieldParts.field, field + 1)
                      : Filled(kFieldParts.namedField, field + 1, name);
}

std::string QuotedField(std::string_view field) { return Quoted(DecodedField(field)); }

std::string Holds(std::string_view cell) {
  if (cell.empty()) {
    return Filled(kFieldParts.isEmpty);
  }
  return cell.starts_with('"') ? Filled(kFieldParts.holdsInQuotes, QuotedField(cell))
                               : Filled(kFieldParts.holds, QuotedField(cell));
}

void AddCommonError(Findings& findings, const std::string& path, const Stop& stop) {
  if (stop.error == Messages::kErrors.invalidCsvFormat) {
    AddQuoteError(findings, path, stop);
    return;
  }
  if (stop.error == Messages::kErrors.invalidInputString) {
    findings.AddError(path, PlaceOf(path, std::max<std::int64_t>(stop.offset - 1, 0)),
                      Filled(kTableMessages.nulByte));
    return;
  }
  findings.AddError(path, PlaceOf(path, stop.offset),
                    Filled(kTableMessages.otherError, Quoted(stop.error)));
}

void WarnOfByteOrderMark(Findings& findings, const std::string& path, const FileTraits& traits) {
  if (traits.hasByteOrderMark) {
    findings.AddWarning(path, {}, Filled(kTableMessages.byteOrderMark), Weight::kHarmless);
  }
}

void WarnOfCarriageReturn(Findings& findings, const std::string& path, const FileTraits& traits) {
  if (traits.firstCarriageReturnLineFeed >= 0 && KeepsCarriageReturns()) {
    const bool isHeader = HeaderOf(path).ends_with('\r');
    findings.AddWarning(path, PlaceOf(path, traits.firstCarriageReturnLineFeed),
                        isHeader ? Filled(kTableMessages.carriageReturnInName)
                                 : Filled(kTableMessages.carriageReturnInField),
                        Weight::kHarmless);
  }
}

}  // namespace Hovar
