#include "hospital_sizes.h"

#include <cassert>
#include <cmath>
#include <cstddef>

namespace Hovar::Simulate {
namespace {

// Standard deviation of the logarithm of the weights. The middle two thirds of the hospitals then
// span a factor of five.
constexpr double kLogSpread = 0.8;

// Weights are kept in units of 2^-16. As normals stay below 13, a weight stays below 2^32, a total
// below 2^63, and a number of records times a weight below 2^63 as well.
constexpr double kWeightUnits = 65536.0;

}  // namespace

std::vector<std::int32_t> DrawHospitalSizes(std::int32_t records, std::int32_t hospitals,
                                            RandomSource& random) {
  assert(hospitals >= 1 && hospitals <= records);
  std::vector<std::uint64_t> weights(static_cast<std::size_t>(hospitals));
  std::uint64_t total = 0;
  for (std::uint64_t& weight : weights) {
    weight = static_cast<std::uint64_t>(std::exp(kLogSpread * random.Normal()) * kWeightUnits) + 1;
    total += weight;
  }

  // Every hospital has one record beforehand; the others go by weight. What the division leaves
  // over is carried to the next hospital, and nothing is left over after the last one, because the
  // weights add up to the total.
  const std::uint64_t shared = static_cast<std::uint64_t>(records - hospitals);
  std::vector<std::int32_t> sizes;
  sizes.reserve(weights.size());
  std::uint64_t carried = 0;
  for (const std::uint64_t weight : weights) {
    const std::uint64_t due = shared * weight + carried;
    sizes.push_back(1 + static_cast<std::int32_t>(due / total));
    carried = due % total;
  }
  return sizes;
}

}  // namespace Hovar::Simulate
