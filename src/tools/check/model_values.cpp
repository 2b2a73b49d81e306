#include "tools/check/model_values.h"

#include <string_view>
#include <vector>

#include "foundation/io/csv_rules.h"
#include "foundation/io/number_text.h"
#include "tools/check/model_messages.h"
#include "tools/check/odd_cells.h"
#include "tools/support/message.h"

namespace Hovar {
namespace {

/// The first two fields of a record as written, with the comma after them: key and hospital.
std::string_view KeyAndHospital(std::string_view record) noexcept {
  return record.substr(0, FieldsEnd(record, 0, 2));
}

std::string KeyIn(std::string_view keyAndHospital) {
  return DecodedField(FieldOf(keyAndHospital, 0, QuoteUse::kHonour));
}

std::string HospitalIn(std::string_view keyAndHospital) {
  return DecodedField(FieldOf(keyAndHospital, 1, QuoteUse::kHonour));
}

bool AreSameFields(std::string_view one, std::string_view other) {
  return KeyIn(one) == KeyIn(other) && HospitalIn(one) == HospitalIn(other);
}

/// Lines with a wrong number of fields: the first one, and how many there are.
struct WrongLines {
  std::int64_t first = 0;  // offset of its end
  std::size_t fields = 0;
  std::int64_t count = 0;
};

void WarnOfWrongLines(Findings& findings, const std::string& path, const WrongLines& wrong,
                      const ModelForm& form) {
  if (wrong.count == 0) {
    return;
  }
  const std::string fields = Counted(wrong.fields, "field");
  findings.AddWarning(path, PlaceOf(path, wrong.first),
                      wrong.count == 1
                          ? Filled(kModelMessages.wrongLine, fields, form.fields)
                          : Filled(kModelMessages.wrongLines, fields, form.fields, wrong.count));
}

}  // namespace

bool HasQuotedLineFeed(std::string_view record) {
  return record.find('\n') != std::string_view::npos;  // none ends a record here
}

bool HasQuotedComma(std::string_view record) {
  return record.find(Vell::IO::kQuote) != std::string_view::npos &&
         FieldStarts(record, QuoteUse::kIgnore).size() !=
             FieldStarts(record, QuoteUse::kHonour).size();
}

Place PlaceOfQuotedComma(const std::string& path, const RecordWalker& walker) {
  const std::string& record = walker.Record();
  std::vector<std::size_t> starts = FieldStarts(record, QuoteUse::kHonour);
  starts.push_back(record.size() + 1);
  std::size_t field = 0;
  while (field + 2 < starts.size() && record.find(',', starts[field]) + 1 == starts[field + 1]) {
    ++field;
  }
  return PlaceOf(path, walker.Offset() + static_cast<std::int64_t>(starts[field]));
}

void WarnOfValues(Findings& findings, const std::string& path, const ModelForm& form) {
  OddCells odd;
  WrongLines wrong;
  RecordWalker walker(path);
  walker.Next();
  const std::string header = walker.Record();
  for (bool isFirst = true; walker.Next() && walker.HasLineFeed(); isFirst = false) {
    const std::string& record = walker.Record();
    std::vector<std::size_t> starts = FieldStarts(record, QuoteUse::kHonour);
    if (starts.size() != form.fields) {
      if (wrong.count++ == 0) {
        wrong.first = walker.Offset() + static_cast<std::int64_t>(record.size());
        wrong.fields = starts.size();
      }
      continue;
    }
    starts.push_back(record.size() + 1);
    for (std::size_t field = 0; field < form.fields; ++field) {
      const bool isSkipped = isFirst && (form.skippedOfFirst >> field & 1U) != 0;
      const std::string_view cell =
          std::string_view(record).substr(starts[field], starts[field + 1] - starts[field] - 1);
      if (form.table.IsReal(field) && !isSkipped && !IsWholeReal(cell)) {
        odd.Add(field, walker.Offset() + static_cast<std::int64_t>(starts[field]), cell);
      }
    }
  }
  WarnOfWrongLines(findings, path, wrong, form);
  odd.Warn(
      findings, path,
      [&header](std::size_t field, std::string_view cell) {
        const std::string_view name = FieldOf(header, field, QuoteUse::kHonour);
        return OddCell{FieldText(field, name.empty() ? std::string() : QuotedField(name)),
                       Holds(cell),
                       std::string(Vell::IO::NumberText::OfReal(Vell::IO::ParseReal(cell)).View())};
      },
      {kModelMessages.numberReadAs, kModelMessages.numbersReadAs, kModelMessages.otherNumbers});
}

void WarnOfQuotedCommas(Findings& findings, const std::string& path) {
  RecordWalker walker(path);
  walker.Next();
  while (walker.Next()) {
    if (HasQuotedComma(walker.Record())) {
      findings.AddWarning(path, PlaceOfQuotedComma(path, walker),
                          Filled(kModelMessages.quotedComma));
      return;
    }
    if (HasQuotedLineFeed(walker.Record())) {
      findings.AddWarning(path, PlaceOf(path, walker.Offset()),
                          Filled(kModelMessages.quotedLineFeed));
      return;
    }
  }
}

void WarnOfOtherRecords(Findings& findings, const DefinitionFile& definition) {
  const std::string& path = definition.individualPredictions;
  RecordWalker predictions(path);
  RecordWalker data(definition.data);
  predictions.Next();
  data.Next();
  while (predictions.Next() && data.Next()) {
    if (HasQuotedComma(predictions.Record()) || HasQuotedLineFeed(predictions.Record())) {
      return;
    }
    const std::string_view predicted = KeyAndHospital(predictions.Record());
    const std::string_view actual = KeyAndHospital(data.Record());
    if (predicted != actual && !AreSameFields(predicted, actual)) {
      findings.AddWarning(
          path, PlaceOf(path, predictions.Offset()),
          Filled(kModelMessages.otherRecord, Quoted(KeyIn(predicted)),
                 Quoted(HospitalIn(predicted)), Quoted(KeyIn(actual)), Quoted(HospitalIn(actual))));
      return;
    }
  }
}

}  // namespace Hovar
