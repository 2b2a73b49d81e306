#pragma once

// The list of the chains that belong together: a batch of their definitions, chains.xml, in the
// output folder of the definition that they were made from. Without it nobody could tell the chains
// of the last run from those that an earlier run with more of them left behind.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Hovar {

inline constexpr std::string_view kChainListName = "chains.xml";

/// The list of chains with these definition files, in the order of their numbers from 1.
std::string ChainListText(const std::vector<std::string>& definitionFiles);

/// How many chains a list has; nothing for a text that is none.
std::optional<int> ChainCountOf(std::string_view text);

/// The number K of a chain's folder, "chain-K"; nothing for another name.
std::optional<int> ChainNumberOf(std::string_view folderName);

}  // namespace Hovar
