#include "tools/support/chain_list.h"

#include <charconv>

namespace Hovar {
namespace {

// The readers for R and Python look for this comment too.
constexpr std::string_view kMarkBegin = "<!-- Chains 1 to ";
constexpr std::string_view kMarkEnd = " -->\n";

/// A number above 0, without leading zeros, and what follows it.
std::optional<int> NumberIn(std::string_view text, std::string_view end) {
  int number = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const std::string_view behind = text.substr(static_cast<std::size_t>(rest - text.data()));
  const bool isNumber = error == std::errc() && number > 0 && text.front() != '0';
  return isNumber && behind == end ? std::optional(number) : std::nullopt;
}

}  // namespace

std::string ChainListText(const std::vector<std::string>& definitionFiles) {
  std::string text(kMarkBegin);
  text.append(std::to_string(definitionFiles.size())).append(kMarkEnd);
  text.append("<Batch>\n  <Simulations>\n");
  for (const std::string& file : definitionFiles) {
    text.append("    <Simulation>").append(file).append("</Simulation>\n");
  }
  return text.append("  </Simulations>\n</Batch>\n");
}

std::optional<int> ChainCountOf(std::string_view text) {
  if (!text.starts_with(kMarkBegin)) {
    return std::nullopt;
  }
  text.remove_prefix(kMarkBegin.size());
  const std::size_t lineEnd = text.find('\n');
  return lineEnd == std::string_view::npos ? std::nullopt
                                           : NumberIn(text.substr(0, lineEnd + 1), kMarkEnd);
}

std::optional<int> ChainNumberOf(std::string_view folderName) {
  constexpr std::string_view kPrefix = "chain-";
  return folderName.starts_with(kPrefix) ? NumberIn(folderName.substr(kPrefix.size()), "")
                                         : std::nullopt;
}

}  // namespace Hovar
