#include "foundation/io/csv_writer.h"

#include "foundation/io/csv_rules.h"

namespace Vell::IO {

void WriteField(TextWriter& writer, std::string_view text) {
  if (!NeedsQuotes(text)) {
    writer.Write(text);
    return;
  }
  writer.Write(kQuote);
  for (const char c : text) {
    if (c == kQuote) {
      writer.Write(kQuote);
    }
    writer.Write(c);
  }
  writer.Write(kQuote);
}

}  // namespace Vell::IO
