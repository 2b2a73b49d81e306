#pragma once

// What the program silently reads of coefficient files and individual predictions otherwise than a
// user may have meant it.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/check/findings.h"
#include "tools/check/tables.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

/// One of these files: how its reader interprets it, and how many fields its lines have.
struct ModelForm {
  TableForm table;
  std::size_t fields;
  std::uint32_t skippedOfFirst;  // a bit for each field that is skipped in the first record
};

/// Whether a line feed stands within quotes of a record.
bool HasQuotedLineFeed(std::string_view record);

/// Whether a comma stands within quotes of a record.
bool HasQuotedComma(std::string_view record);

/// The first field with such a comma, in the record where the walker stands.
Place PlaceOfQuotedComma(const std::string& path, const RecordWalker& walker);

// Each examines a file that the program's reader has accepted.

/// Warns of numbers that are read otherwise than they are written, and of lines with another number
/// of fields, after which values are taken from wrong columns.
void WarnOfValues(Findings& findings, const std::string& path, const ModelForm& form);

/// Warns of commas and line feeds within quotes, which separate for the reader of individual predictions.
void WarnOfQuotedCommas(Findings& findings, const std::string& path);

/// Warns of the first line of the individual predictions whose key or hospital is not that of the
/// record at the same place of the data file. Says nothing after a comma or a line feed within
/// quotes.
void WarnOfOtherRecords(Findings& findings, const DefinitionFile& definition);

}  // namespace Hovar
