#include "tools/support/chain_list.h"

#include <charconv>

namespace Hovar {
namespace {

constexpr std::string_view kBegin = "{\"chains\": ";
constexpr std::string_view kEnd = "}\n";

/// A number above 0, without leading zeros, and what follows it.
std::optional<int> NumberIn(std::string_view text, std::string_view end) {
  int number = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const std::string_view after = text.substr(static_cast<std::size_t>(rest - text.data()));
  const bool isNumber = error == std::errc() && number > 0 && text.front() != '0';
  return isNumber && after == end ? std::optional(number) : std::nullopt;
}

}  // namespace

std::string ChainListText(int count) {
  return std::string(kBegin).append(std::to_string(count)).append(kEnd);
}

std::optional<int> ChainCountOf(std::string_view text) {
  return text.starts_with(kBegin) ? NumberIn(text.substr(kBegin.size()), kEnd) : std::nullopt;
}

std::optional<int> ChainNumberOf(std::string_view folderName) {
  constexpr std::string_view kPrefix = "chain-";
  return folderName.starts_with(kPrefix) ? NumberIn(folderName.substr(kPrefix.size()), "")
                                         : std::nullopt;
}

}  // namespace Hovar
