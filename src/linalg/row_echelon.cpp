#include "linalg/row_echelon.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace Vell {
namespace {

struct Pivot {
  double magnitude = 0;
  std::int32_t row = 0;
  std::int32_t column = 0;
};

Pivot FindPivot(const Matrix& a, std::int32_t first) {
  Pivot pivot{.row = first, .column = first};
  for (std::int32_t i = first; i < a.Rows(); ++i) {
    for (std::int32_t j = first; j < a.Columns(); ++j) {
      const double magnitude = std::fabs(a(i, j));
      if (magnitude > pivot.magnitude) {
        pivot = {magnitude, i, j};
      }
    }
  }
  return pivot;
}

}  // namespace

RowEchelon ReduceToRowEchelon(Matrix matrix) {
  RowEchelon result{std::move(matrix), IndexVector()};
  Matrix& a = result.matrix;
  result.permutation.Resize(a.Columns());
  std::iota(result.permutation.begin(), result.permutation.end(), 0);
  for (std::int32_t s = 0; s < std::min(a.Rows(), a.Columns()); ++s) {
    const Pivot pivot = FindPivot(a, s);
    if (!(pivot.magnitude > 0)) {
      break;
    }
    a.SwapRows(s, pivot.row);
    a.SwapColumns(s, pivot.column);
    std::swap(result.permutation[s], result.permutation[pivot.column]);
    const double d = 1 / a(s, s);
    a(s, s) = 1.0;
    for (std::int32_t j = s + 1; j < a.Columns(); ++j) {
      a(s, j) *= d;
    }
    for (std::int32_t i = s + 1; i < a.Rows(); ++i) {
      const double factor = a(i, s);
      a(i, s) = 0.0;
      for (std::int32_t j = s + 1; j < a.Columns(); ++j) {
        a(i, j) -= factor * a(s, j);
      }
    }
  }
  return result;
}

}  // namespace Vell
