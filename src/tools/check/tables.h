#pragma once

// What the checks of all comma-separated files share. The program's readers decide that something
// is wrong; here the place and the cell in which they stopped are found.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/io/file_stream.h"
#include "tools/check/csv.h"
#include "tools/check/findings.h"
#include "tools/support/error_capture.h"
#include "tools/support/inputs.h"
#include "tools/support/text_places.h"

namespace Hovar {

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
    Vell::IO::FileStream stream(Vell::String(std::string_view(path)), kReadInput);
    try {
      read(stream);
    } catch (const Vell::Exceptions::Exception&) {
      offset = stream.TellOr(0);
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
};

/// How a reader interprets the fields of a record.
struct TableForm {
  QuoteUse quotes = QuoteUse::kHonour;
  std::size_t firstNumber = 0;   // the first field in which it can stop
  std::uint32_t realFields = 0;  // a bit for each field of which it reads a real number

  bool IsReal(std::size_t field) const noexcept {
    return field < 32 && (realFields >> field & 1U) != 0;
  }
};

/// Finds the cell. Reading a number passes over line ends before it, so a reader that stopped in
/// the fields before the first number looked for the last field of the record before. Reading a
/// word such as "nan" can consume the comma after it, so then the field before may be meant.
Cell CellAt(const std::string& path, std::int64_t offset, const TableForm& form);

/// A field, counted from 0, for a sentence: "Field 5 (NAME)", or "Field 5" where the name is empty.
std::string FieldText(std::size_t field, std::string_view name = {});

/// A field as written between its commas, for a sentence: decoded, and quoted once.
std::string QuotedField(std::string_view field);

/// "is empty", "holds "x"", or "holds "x" in double quotes".
std::string Holds(std::string_view cell);

/// Adds an error that all tables share, or one that has no words of its own.
void AddCommonError(Findings& findings, const std::string& path, const Stop& stop);

void WarnOfByteOrderMark(Findings& findings, const std::string& path, const FileTraits& traits);
void WarnOfCarriageReturn(Findings& findings, const std::string& path, const FileTraits& traits);

}  // namespace Hovar
