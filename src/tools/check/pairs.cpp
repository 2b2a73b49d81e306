#include "tools/check/pairs.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/data_file_reader.h"
#include "tools/check/data_fields.h"
#include "tools/check/data_messages.h"
#include "tools/check/tables.h"
#include "tools/support/message.h"
#include "tools/support/text.h"

namespace Hovar {
namespace {

using Names = std::vector<std::string>;

/// How the names of a pair differ: what is in them between their common beginning and their common
/// end.
struct Difference {
  std::string_view z;
  std::string_view x;
  bool operator<(const Difference& other) const {
    return std::pair(z, x) < std::pair(other.z, other.x);
  }
};

/// Nothing for names that have nothing in common. Names are in small letters.
std::optional<Difference> DifferenceOf(std::string_view z, std::string_view x) {
  const auto start = static_cast<std::size_t>(
      std::mismatch(z.begin(), z.end(), x.begin(), x.end()).first - z.begin());
  Difference difference{z.substr(start), x.substr(start)};
  const auto end =
      static_cast<std::size_t>(std::mismatch(difference.z.rbegin(), difference.z.rend(),
                                             difference.x.rbegin(), difference.x.rend())
                                   .first -
                               difference.z.rbegin());
  if (start + end == 0) {
    return std::nullopt;
  }
  difference.z.remove_suffix(end);
  difference.x.remove_suffix(end);
  return difference;
}

bool HasDigit(std::string_view text) noexcept {
  return text.find_first_of("0123456789") != std::string_view::npos;
}

/// What a number of indicators would make of the fields.
struct Pairing {
  std::size_t firstZ = 0;
  std::size_t pairs = 0;
  std::size_t alike = 0;       // pairs of the commonest difference
  std::size_t firstAlike = 0;  // the first of these
};

enum class Digits {
  kCount,      // any difference may be a pattern
  kDoNotCount  // one in digits is none: columns that are numbered through have it by chance
};

/// Names are compared without regard to capital letters; see SmallNames.
Pairing PairingOf(const Names& names, std::int64_t indicators, Digits digits) {
  Pairing pairing;
  pairing.firstZ = static_cast<std::size_t>(kFieldsBeforeIndicators + indicators);
  pairing.pairs = (names.size() - pairing.firstZ) / 2;
  struct Group {
    std::size_t first = 0;
    std::size_t count = 0;
  };
  std::map<Difference, Group> groups;
  for (std::size_t j = 0; j < pairing.pairs; ++j) {
    const std::size_t z = pairing.firstZ + j;
    const std::optional<Difference> difference = DifferenceOf(names[z], names[z + pairing.pairs]);
    if (!difference.has_value() ||
        (digits == Digits::kDoNotCount && (HasDigit(difference->z) || HasDigit(difference->x)))) {
      continue;
    }
    Group& group = groups.emplace(*difference, Group{j, 0}).first->second;
    if (++group.count > pairing.alike) {
      pairing.alike = group.count;
      pairing.firstAlike = group.first;
    }
  }
  return pairing;
}

std::string PairText(const Names& names, const Pairing& pairing, std::size_t pair) {
  const std::size_t z = pairing.firstZ + pair;
  return Quoted(names[z]) + " and " + Quoted(names[z + pairing.pairs]);
}

Names NamesOf(const std::string& path) {
  const std::string header = HeaderOf(path);
  const std::vector<std::size_t> starts = FieldStarts(header, QuoteUse::kHonour);
  Names names;
  for (std::size_t i = 0; i < starts.size(); ++i) {
    const std::size_t end = i + 1 < starts.size() ? starts[i + 1] - 1 : header.size();
    names.push_back(DecodedField(std::string_view(header).substr(starts[i], end - starts[i])));
  }
  if (names.back().ends_with('\r')) {
    names.back().pop_back();
  }
  return names;
}

/// People write ZAge and xage, which go together.
Names SmallNames(Names names) {
  for (std::string& name : names) {
    name = LowerCase(name);
  }
  return names;
}

bool HasPattern(const Pairing& pairing) noexcept {
  constexpr std::size_t kLeastPairs = 2;
  return pairing.pairs >= kLeastPairs && 10 * pairing.alike >= 9 * pairing.pairs;
}

/// The nearest number of indicators that makes a pattern of the names.
std::optional<std::int64_t> FittingCount(const Names& names, std::int64_t given) {
  constexpr std::int64_t kFarthest = 10;
  for (std::int64_t distance = 2; distance <= kFarthest; distance += 2) {
    for (const std::int64_t count : {given - distance, given + distance}) {
      const bool isPossible =
          count >= 0 && kFieldsBeforeIndicators + count < static_cast<std::int64_t>(names.size());
      if (isPossible && HasPattern(PairingOf(names, count, Digits::kDoNotCount))) {
        return count;
      }
    }
  }
  return std::nullopt;
}

}  // namespace

void WarnOfPairs(Findings& findings, const DefinitionFile& definition) {
  const Names names = NamesOf(definition.data);
  const std::int64_t given = definition.poaCount;
  const auto fields = static_cast<std::int64_t>(names.size()) - kFieldsBeforeIndicators - given;
  if (given < 0 || fields < 2 || fields % 2 != 0) {
    return;  // an error, or no pairs
  }
  const Names small = SmallNames(names);
  const Pairing pairing = PairingOf(small, given, Digits::kCount);
  const bool isAlike = 2 * pairing.alike > pairing.pairs;
  const std::optional<std::int64_t> fitting = isAlike ? std::nullopt : FittingCount(small, given);
  if (!fitting.has_value()) {
    return;
  }
  const Pairing better = PairingOf(small, *fitting, Digits::kDoNotCount);
  findings.AddWarning(
      definition.path, definition.PlaceOfValue(Element::kNumberOfPoaIndicators),
      Filled(kDataMessages.pairs, Counted(given, "POA indicator"), PairText(names, pairing, 0),
             *fitting, PairText(names, better, better.firstAlike)));
}

}  // namespace Hovar
