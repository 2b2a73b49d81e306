#pragma once

// Cells that the program accepts and reads otherwise than they are written: "0.7" as 0, "1.5abc" as
// 1.5. The program decides how a cell is read; here such cells are found and reported.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "messages/pattern.h"
#include "tools/check/findings.h"

namespace Hovar {

/// What the program reads of a cell that holds a whole number: the digits after blanks and a sign,
/// and nothing after them.
std::int32_t IntegerOf(std::string_view cell) noexcept;

/// True when a cell of 0 and 1 that the program accepts is the number that is read of it: nothing
/// but blanks, which means missing, or as a whole a number (blanks around it do not count) of the
/// value that the program takes from its first digits. So "1", " 1", "01", "+1" and "1.0" are, and
/// "1x", "1.9", "0.7" and "4294967297", of which the low 32 bits are taken, are not.
bool IsReadAsWritten(std::string_view cell) noexcept;

/// True when all of a cell, but for blanks around it, is one real number.
bool IsWholeReal(std::string_view cell) noexcept;

/// An odd cell, for a sentence: its field, what that holds, and the number that is read of it.
struct OddCell {
  std::string field;
  std::string holds;
  std::string readAs;
};

/// The warnings of odd cells: of the only one of a column, of the first of several, and of those of
/// the columns that are not listed.
struct OddCellMessages {
  Messages::PatternWithParts<3> one;
  Messages::PatternWithParts<4> several;
  Messages::PatternWithParts<1> otherColumns;
};

/// The cells of a table that are read otherwise than they are written, the first of each column and
/// the number of the others.
class OddCells {
 public:
  void Add(std::size_t field, std::int64_t offset, std::string_view cell);

  /// Warns of the first ones of up to ten columns, and of those of the other columns together.
  /// `describe` gives the parts of the sentence about a cell.
  void Warn(Findings& findings, const std::string& path,
            const std::function<OddCell(std::size_t field, std::string_view cell)>& describe,
            const OddCellMessages& messages) const;

 private:
  struct Column {
    std::int64_t offset = 0;  // of the first cell
    std::string cell;
    std::int64_t count = 0;
  };
  std::map<std::size_t, Column> columns_;
};

}  // namespace Hovar
