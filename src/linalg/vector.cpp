#include "linalg/vector.h"

#include <cassert>
#include <cmath>

namespace Vell {

void AddInPlace(Vector& a, const Vector& b) {
  assert(a.Size() == b.Size());
  for (std::int32_t i = 0; i < a.Size(); ++i) {
    a[i] += b[i];
  }
}

double Minimum(const Vector& vector) {
  double minimum = vector.IsEmpty() ? 0.0 : vector[0];
  for (const double value : vector) {
    minimum = value < minimum ? value : minimum;
  }
  return minimum;
}

double Maximum(const Vector& vector) {
  double maximum = vector.IsEmpty() ? 0.0 : vector[0];
  for (const double value : vector) {
    maximum = value > maximum ? value : maximum;
  }
  return maximum;
}

double MaximumNorm(const Vector& vector) {
  double norm = 0.0;
  for (const double value : vector) {
    const double magnitude = std::fabs(value);
    norm = magnitude > norm ? magnitude : norm;
  }
  return norm;
}

}  // namespace Vell
