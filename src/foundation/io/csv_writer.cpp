#include "foundation/io/csv_writer.h"

namespace Vell::IO {

void WriteField(TextWriter& writer, std::string_view text) {
  if (text.find_first_of(",\n\"") == std::string_view::npos) {
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
