#include "linalg/matrix.h"

#include <algorithm>
#include <utility>

#include "foundation/integer_size.h"

namespace Vell {

Matrix::Matrix(std::int32_t rows, std::int32_t columns)
    : cells_(WrappingProduct(rows, columns)), rows_(rows), columns_(columns) {}

std::span<double> Matrix::Row(std::int32_t row) noexcept {
  const auto width = static_cast<std::size_t>(columns_);
  return cells_.Span().subspan(static_cast<std::size_t>(row) * width, width);
}

std::span<const double> Matrix::Row(std::int32_t row) const noexcept {
  const auto width = static_cast<std::size_t>(columns_);
  return cells_.Span().subspan(static_cast<std::size_t>(row) * width, width);
}

Vector Matrix::Column(std::int32_t column) const {
  Vector result(rows_);
  for (std::int32_t i = 0; i < rows_; ++i) {
    result[i] = (*this)(i, column);
  }
  return result;
}

void Matrix::Fill(double value) noexcept { std::ranges::fill(cells_, value); }

void Matrix::SwapRows(std::int32_t a, std::int32_t b) noexcept {
  if (a != b) {
    std::ranges::swap_ranges(Row(a), Row(b));
  }
}

void Matrix::SwapColumns(std::int32_t a, std::int32_t b) noexcept {
  for (std::int32_t i = 0; i < rows_; ++i) {
    std::swap((*this)(i, a), (*this)(i, b));
  }
}

}  // namespace Vell
