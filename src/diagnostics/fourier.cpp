#include "diagnostics/fourier.h"

#include <cstddef>
#include <numbers>
#include <utility>

namespace Hovar {

void TransformFourier(Spectrum& values) {
  const std::size_t size = values.size();
  for (std::size_t i = 1, reversed = 0; i < size; ++i) {
    std::size_t bit = size >> 1;
    for (; (reversed & bit) != 0; bit >>= 1) {
      reversed ^= bit;
    }
    reversed ^= bit;
    if (i < reversed) {
      std::swap(values[i], values[reversed]);
    }
  }
  for (std::size_t length = 2; length <= size; length *= 2) {
    const std::size_t half = length / 2;
    for (std::size_t k = 0; k < half; ++k) {
      const auto turn = std::polar(
          1.0, -2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(length));
      for (std::size_t begin = k; begin < size; begin += length) {
        const std::complex<double> odd = turn * values[begin + half];
        values[begin + half] = values[begin] - odd;
        values[begin] += odd;
      }
    }
  }
}

}  // namespace Hovar
