#include "tools/plan/seed_values.h"

#include <string_view>
#include <vector>

#include "foundation/io/number_text.h"
#include "tools/support/text.h"

namespace Hovar {

std::optional<std::array<const DefinedValue*, 2>> SeedValuesOf(const DefinitionFile& definition) {
  std::vector<const DefinedValue*> found;
  for (const DefinedValue& value : definition.values) {
    if (value.element == Element::kSeedWord) {
      found.push_back(&value);
    }
  }
  if (found.size() != 2) {
    return std::nullopt;
  }
  return std::array{found[0], found[1]};
}

std::uint32_t SeedWordOf(const DefinedValue& value) {
  const std::size_t start = value.text.find_first_not_of(kBlanksBeforeNumbers);
  const std::size_t end = value.text.find_first_not_of("0123456789", start + 1);
  return Vell::IO::ParseUnsigned(std::string_view(value.text).substr(start, end - start));
}

}  // namespace Hovar
