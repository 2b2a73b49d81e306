#pragma once

// Writing comma-separated text by the rules of csv_rules.h. Commas and line feeds between fields
// are the caller's.

#include <string_view>

#include "foundation/io/text_writer.h"

namespace Vell::IO {

/// Writes one text as a CSV field: in double quotes, with those inside doubled, when it holds a
/// comma, a line feed or a double quote; otherwise as it stands. The empty text writes nothing. A
/// NUL byte is written as it stands, and no reader of ours accepts it.
/// Errors: "IO Exception".
void WriteField(TextWriter& writer, std::string_view text);

}  // namespace Vell::IO
