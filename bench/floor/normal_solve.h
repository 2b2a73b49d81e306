#pragma once

// The small dense systems of a Newton step: Cholesky factors of the lower triangle of a matrix of
// which the first p rows and columns are used.

#include <array>

#include "column_fit.h"

namespace Hovar::Floor {

using SquareMatrix = std::array<Coefficients, kMaxColumns>;

/// Replaces the lower triangle by its Cholesky factor L.
void Factor(SquareMatrix& a, std::size_t p) noexcept;

/// Solves L L^T x = b in place.
void Solve(Coefficients& b, const SquareMatrix& factor, std::size_t p) noexcept;

}  // namespace Hovar::Floor
