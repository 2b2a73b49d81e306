#include "faults/sample.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace Testing {
Sample::Sample(std::size_t count, std::size_t total)
    : random_(Random()),
      share_(IsAll() ? 1.0
                     : static_cast<double>(count) /
                           static_cast<double>(std::max(total, std::size_t{1}))),
      total_(total) {}

bool Sample::Takes() {
  const bool takes = share_ >= 1 || random_.Chance(share_);
  taken_ += takes ? 1 : 0;
  return takes;
}

std::string Sample::Text() const {
  return random_.Text() + ", " + std::to_string(taken_) + " of " + std::to_string(total_) +
         " cases";
}

bool Sample::IsAll() {
  const char* const text = std::getenv("HOVAR_FAULTS");
  return text != nullptr && std::string_view(text) == "all";
}

SeededRandom Sample::Random() {
  const char* const seed = std::getenv("HOVAR_FAULT_SEED");
  return SeededRandom(seed != nullptr ? std::strtoull(seed, nullptr, 10) : 1);
}

}  // namespace Testing
