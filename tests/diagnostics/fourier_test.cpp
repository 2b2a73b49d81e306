#include "diagnostics/fourier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>

namespace Hovar {
namespace {

using Value = std::complex<double>;

TEST(TransformFourierTest, ByHand) {
  Spectrum values{1, 2, 3, 4};
  TransformFourier(values);
  const Spectrum expected{10, {-2, 2}, -2, {-2, -2}};
  for (std::size_t k = 0; k < expected.size(); ++k) {
    EXPECT_NEAR(std::abs(values[k] - expected[k]), 0, 1e-14) << k;
  }
}

TEST(TransformFourierTest, OneValueStays) {
  Spectrum values{{3, -1}};
  TransformFourier(values);
  EXPECT_EQ(values[0], Value(3, -1));
}

TEST(TransformFourierTest, IsTheSumOfTheDefinition) {
  constexpr std::size_t kSize = 64;
  Spectrum values;
  for (std::size_t j = 0; j < kSize; ++j) {
    const auto x = static_cast<double>(j * j % 29);
    values.emplace_back(x, static_cast<double>(j % 7) - 3);
  }
  Spectrum transformed = values;
  TransformFourier(transformed);
  for (std::size_t k = 0; k < kSize; ++k) {
    Value sum = 0;
    for (std::size_t j = 0; j < kSize; ++j) {
      sum +=
          values[j] * std::polar(1.0, -2 * std::numbers::pi * static_cast<double>(j * k % kSize) /
                                          static_cast<double>(kSize));
    }
    EXPECT_NEAR(std::abs(transformed[k] - sum), 0, 1e-11) << k;
  }
}

}  // namespace
}  // namespace Hovar
