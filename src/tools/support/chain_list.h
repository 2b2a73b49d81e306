#pragma once

// How many chains belong together: chains.json in the output folder of the definition that they were
// made from. Without it nobody could tell the chains of the last run from those that an earlier run
// with more of them left behind. The readers for R and Python read it too.

#include <optional>
#include <string>
#include <string_view>

namespace Hovar {

inline constexpr std::string_view kChainListName = "chains.json";

/// What the file holds for chains 1 to `count`.
std::string ChainListText(int count);

/// How many chains a file of such a text lists; nothing for another text.
std::optional<int> ChainCountOf(std::string_view text);

/// The number K of a chain's folder, "chain-K"; nothing for another name.
std::optional<int> ChainNumberOf(std::string_view folderName);

}  // namespace Hovar
