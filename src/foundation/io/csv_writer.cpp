#include "foundation/io/csv_writer.h"

#include <algorithm>

namespace Vell::IO {

void WriteField(TextWriter& writer, std::string_view text) {
  const auto needsQuotes = [](char c) { return c == ',' || c == '\n' || c == '"'; };
  if (std::none_of(text.begin(), text.end(), needsQuotes)) {
    writer.Write(text);
    return;
  }
  writer.Write('"');
  for (const char c : text) {
    if (c == '"') {
      writer.Write('"');
    }
    writer.Write(c);
  }
  writer.Write('"');
}

}  // namespace Vell::IO
