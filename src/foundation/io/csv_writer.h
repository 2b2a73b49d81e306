#pragma once

#include <string_view>

#include "foundation/io/text_writer.h"

namespace Vell::IO {

/// Writes one text as a CSV field: in double quotes, with those inside doubled, when it holds a
/// comma, a line feed or a double quote; otherwise as it stands. The empty text writes nothing.
/// Errors: "IO Exception".
void WriteField(TextWriter& writer, std::string_view text);

}  // namespace Vell::IO
