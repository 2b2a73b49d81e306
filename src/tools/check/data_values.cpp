#include "tools/check/data_values.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "data/data_file_reader.h"
#include "tools/check/data_fields.h"
#include "tools/check/data_messages.h"
#include "tools/check/odd_cells.h"
#include "tools/check/tables.h"
#include "tools/support/message.h"
#include "tools/support/text.h"

namespace Hovar {
namespace {

/// Where the fields after the hospital ID begin, as the program skips the first two: the key up to
/// the next comma, the ID by the rules of quotes.
std::size_t HospitalEnd(std::string_view record) noexcept {
  const std::size_t id = std::min(record.find(','), record.size() - 1) + 1;
  return FieldsEnd(record, id, 1);
}

/// Finds the odd cells of a record. Nearly all cells are a digit and a comma, or a comma alone.
void FindOddCells(OddCells& odd, std::string_view record, std::int64_t offset) {
  std::size_t field = kFieldsBeforeIndicators - 1;
  for (std::size_t start = HospitalEnd(record); start < record.size(); ++field) {
    const char c = record[start];
    if ((c == '0' || c == '1') && start + 1 < record.size() && record[start + 1] == ',') {
      start += 2;
    } else if (c == ',') {
      ++start;
    } else {
      const std::size_t end = std::min(record.find(',', start), record.size());
      const std::string_view cell = record.substr(start, end - start);
      if (!IsReadAsWritten(cell)) {
        odd.Add(field, offset + static_cast<std::int64_t>(start), cell);
      }
      start = end + 1;
    }
  }
}

/// Warns at the ID of the record with an index.
void WarnAtRecord(Findings& findings, const std::string& path, std::int64_t record,
                  const std::string& text) {
  RecordWalker walker(path);
  walker.Next();  // the header
  for (std::int64_t i = 0; i <= record; ++i) {
    walker.Next();
  }
  const std::vector<std::size_t> starts = FieldStarts(walker.Record(), QuoteUse::kHonour);
  const std::size_t id = starts.size() > 1 ? starts[1] : 0;
  findings.AddWarning(path, PlaceOf(path, walker.Offset() + static_cast<std::int64_t>(id)), text);
}

/// A hospital ID without what people write in more than one way.
std::string BareId(std::string_view id) {
  id = Trimmed(id);
  id.remove_prefix(std::min(id.find_first_not_of('0'), std::max<std::size_t>(id.size(), 1) - 1));
  return LowerCase(id);
}

void WarnOfSimilarHospitals(Findings& findings, const std::string& path, const DataSet& dataSet) {
  std::map<std::string, std::int32_t> bareIds;
  std::int32_t similar = -1;
  std::int64_t count = 0;
  for (std::int32_t h = 0; h < dataSet.hospitalCount; ++h) {
    const std::string bare = BareId(dataSet.hospitalIds[h].View());
    if (!bareIds.emplace(bare, h).second && count++ == 0) {
      similar = h;
    }
  }
  if (count == 0) {
    return;
  }
  const std::string_view id = dataSet.hospitalIds[similar].View();
  const std::string_view other = dataSet.hospitalIds[bareIds.at(BareId(id))].View();
  WarnAtRecord(findings, path, dataSet.hospitalStart[similar],
               count == 1
                   ? Filled(kDataMessages.hospitalSimilar, Quoted(id), Quoted(other))
                   : Filled(kDataMessages.hospitalsSimilar, Quoted(id), Quoted(other), count));
}

}  // namespace

void WarnOfCells(Findings& findings, const DefinitionFile& definition) {
  OddCells odd;
  RecordWalker walker(definition.data);
  walker.Next();
  const std::string header = walker.Record();
  while (walker.Next()) {
    FindOddCells(odd, walker.Record(), walker.Offset());
  }
  odd.Warn(findings, definition.data,
           [&](std::size_t field, std::string_view cell) {
             return OddCell{FieldText(field, RoleOf(definition, header, field)), Holds(cell),
                            std::to_string(IntegerOf(cell))};
           },
           {kDataMessages.cellReadAs, kDataMessages.cellsReadAs, kDataMessages.otherCells});
}

void WarnOfHospitals(Findings& findings, const DefinitionFile& definition, const DataSet& dataSet) {
  WarnOfSimilarHospitals(findings, definition.data, dataSet);
  std::int32_t empty = -1;
  std::int32_t emptyIds = 0;
  std::int64_t emptyRecords = 0;
  std::int32_t separated = -1;
  for (std::int32_t h = dataSet.hospitalCount - 1; h >= 0; --h) {
    const std::string_view id = dataSet.hospitalIds[h].View();
    if (id.find_first_not_of(" \t\r") == std::string_view::npos) {
      empty = h;
      ++emptyIds;
      emptyRecords += dataSet.hospitalSize[h];
    }
    separated = id.find_first_of(",\n") != std::string_view::npos ? h : separated;
  }
  if (empty >= 0) {
    const std::string records = Counted(emptyRecords, "record");
    WarnAtRecord(findings, definition.data, dataSet.hospitalStart[empty],
                 emptyIds == 1 ? Filled(kDataMessages.hospitalEmpty, records)
                               : Filled(kDataMessages.hospitalsEmpty, records, emptyIds));
  }
  if (separated >= 0 && definition.kind == RunKind::kPrediction) {
    WarnAtRecord(
        findings, definition.data, dataSet.hospitalStart[separated],
        Filled(kDataMessages.hospitalComma, Quoted(dataSet.hospitalIds[separated].View())));
  }
}

std::int32_t CountWithoutOutcomeAndKnownP(const DataSet& dataSet) {
  std::int32_t count = 0;
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    count += !dataSet.y.Get(i) && !dataSet.p.IsMissing(i) ? 1 : 0;
  }
  return count;
}

void WarnOfContradictions(Findings& findings, const DefinitionFile& definition,
                          const DataSet& dataSet) {
  constexpr std::int64_t kPart = 100;  // 1 %: slips are rarer, see docs/checking.md
  const std::int64_t count = dataSet.contradictionCount;
  if (count == 0 || kPart * count < CountWithoutOutcomeAndKnownP(dataSet)) {
    return;
  }
  const std::vector<std::size_t> fields = FieldStarts(HeaderOf(definition.data), QuoteUse::kHonour);
  const auto firstIndicator = static_cast<std::size_t>(kFieldsBeforeIndicators);
  const Place place =
      firstIndicator < fields.size()
          ? PlaceOf(definition.data, static_cast<std::int64_t>(fields[firstIndicator]))
          : Place{};
  findings.AddWarning(definition.data, place,
                      count == 1 ? Filled(kDataMessages.contradiction, Counted(count, "record"))
                                 : Filled(kDataMessages.contradictions, Counted(count, "record")));
}

}  // namespace Hovar
