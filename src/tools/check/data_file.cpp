#include "tools/check/data_file.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

#include "data/data_file_reader.h"
#include "messages/error_texts.h"
#include "tools/check/data_fields.h"
#include "tools/check/data_messages.h"
#include "tools/check/data_values.h"
#include "tools/check/pairs.h"
#include "tools/check/tables.h"
#include "tools/support/message.h"

namespace Hovar {
namespace {

/// Finds a field that the program skips regardless of its quotes, and in which a comma or a line
/// feed therefore separates: the key of a record, and the fields of the header before the
/// variables. Behind it cells are taken from wrong places.
bool AddPassedOverError(Findings& findings, const DefinitionFile& definition, const Stop& stop) {
  RecordWalker walker(definition.data);
  std::int64_t passedOver =
      std::int64_t{kFieldsBeforeIndicators} + definition.poaCount;  // of the header
  while (walker.Next() && walker.Offset() <= stop.offset) {
    std::vector<std::size_t> starts = FieldStarts(walker.Record(), QuoteUse::kHonour);
    starts.push_back(walker.Record().size() + 1);
    const auto count = std::min(passedOver, static_cast<std::int64_t>(starts.size() - 1));
    for (std::size_t field = 0; static_cast<std::int64_t>(field) < count; ++field) {
      const std::string_view text =
          std::string_view(walker.Record())
              .substr(starts[field], starts[field + 1] - starts[field] - 1);
      if (text.find_first_of(",\n") != std::string_view::npos) {
        findings.AddError(
            definition.data,
            PlaceOf(definition.data, walker.Offset() + static_cast<std::int64_t>(starts[field])),
            Filled(kDataMessages.separator, FieldText(field)));
        return true;
      }
    }
    passedOver = 1;  // the key
  }
  return false;
}

void AddCellError(Findings& findings, const DefinitionFile& definition, const Stop& stop) {
  const Cell cell =
      CellAt(definition.data, stop.offset, {QuoteUse::kHonour, kFieldsBeforeIndicators - 1});
  const std::string role = RoleOf(definition, HeaderOf(definition.data), cell.field);
  const std::string field = FieldText(cell.field, role);
  const std::string holds = Holds(cell.text);
  findings.AddError(definition.data, cell.place,
                    MayBeMissing(role) ? Filled(kDataMessages.cellMayBeMissing, field, holds)
                    : IsZ(role)        ? Filled(kDataMessages.cellOfZ, field, holds)
                                       : Filled(kDataMessages.cellMayNotBeMissing, field, holds));
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
                        walker.Record().empty() ? Filled(kDataMessages.emptyLine)
                                                : Filled(kDataMessages.fieldCount,
                                                         Counted(starts.size(), "field"), wanted));
      return;
    }
  }
}

/// What fields the definition's number of indicators leaves for X and Z.
void AddIndicatorError(Findings& findings, const DefinitionFile& definition) {
  const Place place = definition.PlaceOfValue(Element::kNumberOfPoaIndicators);
  if (definition.poaCount < 0) {
    findings.AddError(definition.path, place,
                      Filled(kDataMessages.negativeIndicators, definition.poaCount));
    return;
  }
  const auto fields =
      static_cast<std::int64_t>(FieldStarts(HeaderOf(definition.data), QuoteUse::kHonour).size());
  findings.AddError(definition.path, place,
                    Filled(kDataMessages.indicators, Quoted(definition.data),
                           Counted(fields, "field"), Counted(definition.poaCount, "POA indicator"),
                           fields - kFieldsBeforeIndicators - definition.poaCount));
}

/// A file without a size that suits; false when it has one.
bool AddSizeError(Findings& findings, const DefinitionFile& definition) {
  const std::string header = HeaderOf(definition.data);
  const auto fields = static_cast<std::int64_t>(FieldStarts(header, QuoteUse::kHonour).size());
  const std::int64_t length = TraitsOf(definition.data).length;
  if (length == 0) {
    findings.AddError(definition.data, {}, Filled(kDataMessages.emptyFile));
    return true;
  }
  if (definition.poaCount < 0 ||
      fields < std::int64_t{kFieldsBeforeIndicators} + definition.poaCount) {
    AddIndicatorError(findings, definition);
    return true;
  }
  const bool isHeaderOpen = header.size() == static_cast<std::size_t>(length);
  if (isHeaderOpen) {
    findings.AddError(definition.data, PlaceOf(definition.data, length),
                      Filled(kDataMessages.headerEnd));
  }
  return isHeaderOpen;
}

void AddLastLineError(Findings& findings, const std::string& path) {
  findings.AddError(path, PlaceOf(path, TraitsOf(path).length), Filled(kDataMessages.lastLineEnd));
}

/// Finds the record at which a hospital's ID comes again after another hospital.
void AddGroupingError(Findings& findings, const std::string& path) {
  std::unordered_set<std::string> earlier;
  std::string last;
  RecordWalker walker(path);
  walker.Next();  // the header
  while (walker.Next()) {
    const std::vector<std::size_t> starts = FieldStarts(walker.Record(), QuoteUse::kHonour);
    // Quoted or not, it is the same hospital.
    std::string id = DecodedField(FieldOf(walker.Record(), 1, QuoteUse::kHonour));
    if (!earlier.empty() && id == last) {
      continue;
    }
    if (!earlier.insert(id).second && starts.size() > 1) {
      findings.AddError(path, PlaceOf(path, walker.Offset() + static_cast<std::int64_t>(starts[1])),
                        Filled(kDataMessages.hospitalAgain, Quoted(id)));
      return;
    }
    last = std::move(id);
  }
}

bool IsSizeError(std::string_view error) noexcept {
  return error == Messages::kErrors.invalidArgument || error == Messages::kErrors.indexOutOfRange ||
         error == Messages::kErrors.integerOverflow;
}

bool IsCellError(std::string_view error) noexcept {
  return error == Messages::kErrors.invalidInput || error == Messages::kErrors.ioException ||
         error == Messages::kErrors.unexpectedEnd;
}

/// What the records hold, of a file of which the shape is right.
bool AddRecordError(Findings& findings, const DefinitionFile& definition, const Stop& stop) {
  const bool isWrongEnd = stop.error == Messages::kErrors.dataWrongFormat;
  const bool isWrongOrder = stop.error == Messages::kErrors.dataNotGrouped;
  if (!isWrongEnd && !isWrongOrder && !IsCellError(stop.error)) {
    return false;
  }
  if (AddPassedOverError(findings, definition, stop)) {
    return true;
  }
  if (isWrongEnd) {
    AddLastLineError(findings, definition.data);
  } else if (isWrongOrder) {
    AddGroupingError(findings, definition.data);
  } else {
    AddCellError(findings, definition, stop);
  }
  return true;
}

void AddDataError(Findings& findings, const DefinitionFile& definition, const Stop& stop) {
  if (stop.error == Messages::kErrors.variableFieldCount) {
    AddShapeError(findings, definition.data);
  } else if (stop.error == Messages::kErrors.wrongIndicatorCount) {
    AddIndicatorError(findings, definition);
  } else if (!AddRecordError(findings, definition, stop) &&
             !(IsSizeError(stop.error) && AddSizeError(findings, definition))) {
    AddCommonError(findings, definition.data, stop);
  }
}

}  // namespace

bool CheckDataFile(Findings& findings, const DefinitionFile& definition, DataSet& dataSet) {
  const std::optional<Stop> stop = StopOf(definition.data, [&](Vell::IO::Stream& stream) {
    ReadDataFile(dataSet, stream, definition.poaCount);
  });
  if (stop.has_value()) {
    AddDataError(findings, definition, *stop);
  } else {
    WarnOfCells(findings, definition);
    WarnOfHospitals(findings, definition, dataSet);
  }
  WarnOfPairs(findings, definition);  // wrong pairs have wrong indicators, so they come first
  if (!stop.has_value()) {
    WarnOfContradictions(findings, definition, dataSet);
  }
  const FileTraits traits = TraitsOf(definition.data);
  WarnOfByteOrderMark(findings, definition.data, traits);
  WarnOfCarriageReturn(findings, definition.data, traits);
  return !stop.has_value();
}

}  // namespace Hovar
