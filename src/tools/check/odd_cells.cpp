#include "tools/check/odd_cells.h"

#include <algorithm>

#include "foundation/io/number_text.h"
#include "tools/support/message.h"
#include "tools/support/text.h"
#include "tools/support/text_places.h"

namespace Hovar {
namespace {

/// What reading a number passes over: more than the white space round a text of a definition.
std::string_view WithoutBlanks(std::string_view cell) noexcept {
  return Trimmed(cell, kBlanksBeforeNumbers);
}

/// "1 more cell of this column is", "2 more cells of this column are".
std::string OthersAre(std::int64_t count, std::string_view where) {
  return Counted(count, "more cell") + ' ' + std::string(where) + (count == 1 ? " is" : " are");
}

}  // namespace

std::int32_t IntegerOf(std::string_view cell) noexcept {
  cell = WithoutBlanks(cell);
  const std::size_t sign = cell.starts_with('-') || cell.starts_with('+') ? 1 : 0;
  return Vell::IO::ParseInteger(cell.substr(0, cell.find_first_not_of("0123456789", sign)));
}

bool IsReadAsWritten(std::string_view cell) noexcept {
  cell = WithoutBlanks(cell);
  if (cell.empty() || cell == "0" || cell == "1") {
    return true;
  }
  std::size_t used = 0;
  const double written = Vell::IO::ParseReal(cell, &used);
  return used == cell.size() && written == IntegerOf(cell);
}

bool IsWholeReal(std::string_view cell) noexcept {
  cell = WithoutBlanks(cell);
  std::size_t used = 0;
  Vell::IO::ParseReal(cell, &used);
  return used == cell.size();
}

void OddCells::Add(std::size_t field, std::int64_t offset, std::string_view cell) {
  Column& column = columns_[field];
  if (column.count++ == 0) {
    column.offset = offset;
    column.cell = cell;
  }
}

void OddCells::Warn(
    Findings& findings, const std::string& path,
    const std::function<OddCell(std::size_t field, std::string_view cell)>& describe,
    const OddCellMessages& messages) const {
  constexpr std::size_t kMostColumns = 10;
  std::size_t reported = 0;
  Column rest;
  for (const auto& [field, column] : columns_) {
    if (reported == kMostColumns) {
      if (rest.count == 0 || column.offset < rest.offset) {
        rest.offset = column.offset;
      }
      rest.count += column.count;
      continue;
    }
    ++reported;
    const std::int64_t others = column.count - 1;
    const OddCell odd = describe(field, column.cell);
    findings.AddWarning(path, PlaceOf(path, column.offset),
                        others == 0 ? Filled(messages.one, odd.field, odd.holds, odd.readAs)
                                    : Filled(messages.several, odd.field, odd.holds, odd.readAs,
                                             OthersAre(others, "of this column")));
  }
  if (rest.count > 0) {
    findings.AddWarning(
        path, PlaceOf(path, rest.offset),
        Filled(messages.otherColumns,
               OthersAre(rest.count, "of " + Counted(columns_.size() - reported, "other column"))));
  }
}

}  // namespace Hovar
