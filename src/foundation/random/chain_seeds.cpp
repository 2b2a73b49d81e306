#include "foundation/random/chain_seeds.h"

#include <algorithm>

#include "foundation/random/random_generator.h"

namespace Vell {

std::uint32_t WordAfterSteps(std::uint32_t word, std::uint32_t multiplier,
                             std::uint64_t steps) noexcept {
  const std::uint64_t modulus = (std::uint64_t{multiplier} << 16) - 1;
  std::uint64_t result = word % modulus;
  std::uint64_t power = multiplier;
  for (; steps > 0; steps >>= 1) {
    if ((steps & 1) != 0) {
      result = result * power % modulus;
    }
    power = power * power % modulus;
  }
  // The modulus itself stays what it is at every step.
  return static_cast<std::uint32_t>(result == 0 ? modulus : result);
}

bool StandsStill(std::uint32_t word, std::uint32_t multiplier) noexcept {
  const std::uint32_t modulus = (multiplier << 16) - 1;
  return word != 0 && word % modulus == 0;
}

SeedWords SeedOfChain(const SeedWords& definition, std::uint32_t chain) noexcept {
  if (chain <= 1) {
    return definition;
  }
  // The generator takes 0 for 1.
  return {WordAfterSteps(std::max(definition.z, 1U), RandomGenerator::kMultiplierZ,
                         kStrideZ * (chain - 1)),
          WordAfterSteps(std::max(definition.w, 1U), RandomGenerator::kMultiplierW,
                         kStrideW * (chain - 1))};
}

}  // namespace Vell
