#pragma once

// Why the program's reader stopped in a definition file, in words for the user. The reader decides
// that something is wrong; here only the place and the sentence are found.

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/support/text_places.h"

namespace Hovar {

struct GrammarError {
  std::int64_t offset = 0;  // of the first byte that is wrong
  std::string text;
};

/// Explains the error line `error` of a reader that stopped with the byte at `stop` next.
GrammarError ExplainGrammarError(const TextSource& text, std::int64_t stop, std::string_view error);

}  // namespace Hovar
