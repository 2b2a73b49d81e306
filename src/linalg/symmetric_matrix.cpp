#include "linalg/symmetric_matrix.h"

#include "foundation/integer_size.h"
#include "foundation/memory.h"

namespace Vell {

std::int32_t PackedTriangleSize(std::int32_t order) {
  RequireNotNegative(order);
  const std::uint32_t n = static_cast<std::uint32_t>(order);
  const std::uint32_t wrapped = n % 2 == 0 ? (n + 1) * (n / 2) : (n + 1) / 2 * n;
  return CheckedSize(wrapped);
}

SymmetricMatrix::SymmetricMatrix(std::int32_t order)
    : elements_(PackedTriangleSize(order)), order_(order) {}

Matrix ToFullMatrix(const SymmetricMatrix& packed) {
  Matrix full(packed.Order(), packed.Order());
  for (std::int32_t i = 0; i < packed.Order(); ++i) {
    for (std::int32_t j = 0; j <= i; ++j) {
      full(i, j) = full(j, i) = packed(i, j);
    }
  }
  return full;
}

}  // namespace Vell
