#include "regression/design_sums.h"

#include <algorithm>
#include <utility>

#include "foundation/integer_size.h"
#include "linalg/kernels/dispatch.h"
#include "regression/design_sums_avx512.h"

namespace Hovar {
namespace {

template <typename Visit>
void VisitSetColumns(const std::uint64_t* words, std::int32_t wordCount, Visit visit) {
  for (std::int32_t i = 0; i < wordCount; ++i) {
    Vell::VisitBits(words[i], [&](std::int32_t bit) { visit(i * Vell::kColumnsPerWord + bit); });
  }
}

/// A record's set columns, and what it adds to their sums.
struct RecordTerms {
  const std::uint16_t* setColumns;
  std::size_t count;
  double weight;
  double value;
};

/// Adds a record's weight for every pair of its set columns and, unless `columnSums` is null, its
/// value for every column. kCount is the number of columns, or 0 for any; with a fixed number the
/// loops are unrolled, and no branch depends on the record.
template <std::size_t kCount>
void AddPairs(TriangleSums& crossproducts, double* columnSums, const RecordTerms& terms) noexcept {
  const std::size_t count = kCount > 0 ? kCount : terms.count;
  for (std::size_t a = 0; a < count; ++a) {
    double* const row = crossproducts.Row(terms.setColumns[a]);
    for (std::size_t b = 0; b <= a; ++b) {
      row[terms.setColumns[b]] += terms.weight;
    }
  }
  if (columnSums != nullptr) {
    for (std::size_t a = 0; a < count; ++a) {
      columnSums[terms.setColumns[a]] += terms.value;
    }
  }
}

constexpr std::size_t kMostUnrolled = 12;

template <std::size_t... kCounts>
constexpr auto MakeAddPairs(std::index_sequence<kCounts...> /*counts*/) {
  return std::array{&AddPairs<kCounts>...};
}
constexpr auto kAddPairs = MakeAddPairs(std::make_index_sequence<kMostUnrolled + 1>());

void AddCrossproductsPlainly(TriangleSums& crossproducts, std::span<double> columnSums,
                             const FitRows& rows, std::int32_t block, const BlockValues& weights,
                             const BlockValues& values) noexcept {
  std::array<std::uint16_t, FitRows::kMostColumns> setColumns;
  const std::uint64_t* words = rows.Words(block, 0);
  for (std::size_t i = 0; i < static_cast<std::size_t>(rows.BlockSize(block)); ++i) {
    std::size_t count = 0;
    VisitSetColumns(words, rows.WordCount(), [&](std::int32_t column) {
      setColumns[count++] = static_cast<std::uint16_t>(column);
    });
    const auto addPairs = kAddPairs[count <= kMostUnrolled ? count : 0];
    addPairs(crossproducts, columnSums.data(), {setColumns.data(), count, weights[i], values[i]});
    words += rows.WordCount();
  }
}

void AddCrossproductsOfQuartersPlainly(TriangleSums& crossproducts, std::span<double> columnSums,
                                       const FitRows& rows, std::int32_t block,
                                       const BlockValues& values) noexcept {
  BlockValues quarters;
  quarters.fill(0.25);
  AddCrossproductsPlainly(crossproducts, columnSums, rows, block, quarters, values);
}

void AddColumnSumsPlainly(const ColumnSums& first, const ColumnSums& second, const FitRows& rows,
                          const BlockPart& part) noexcept {
  const std::uint64_t* words = rows.Words(part.block, part.begin);
  for (auto i = static_cast<std::size_t>(part.begin); i < static_cast<std::size_t>(part.end); ++i) {
    VisitSetColumns(words, rows.WordCount(), [&](std::int32_t j) {
      first.sums[static_cast<std::size_t>(j)] += first.values[i];
      second.sums[static_cast<std::size_t>(j)] += second.values[i];
    });
    words += rows.WordCount();
  }
}

}  // namespace

TriangleSums::TriangleSums(std::int32_t order)
    : order_(order), stride_((order + kGroup - 1) / kGroup * kGroup) {
  sums_.Resize(
      Vell::CheckedSize(static_cast<std::uint64_t>(order) * static_cast<std::uint64_t>(stride_)));
}

void TriangleSums::SetToZero() noexcept { std::fill(sums_.begin(), sums_.end(), 0.0); }

void TriangleSums::CopyTo(Vell::SymmetricMatrix& matrix) const noexcept {
  for (std::int32_t j = 0; j < order_; ++j) {
    std::copy_n(sums_.begin() + std::int64_t{j} * stride_, j + 1, matrix.Row(j));
  }
}

void ComputeLinearPredictors(BlockValues& values, const FitRows& rows, std::int32_t block,
                             const Vell::Vector& beta) noexcept {
  values.fill(0);
  for (std::int32_t j = 0; j < rows.ColumnCount(); ++j) {
    const double coefficient = beta[j];
    if (coefficient == 0) {
      continue;  // all of them in a fit's first pass
    }
    const std::span<const FitRows::Place> places = rows.Places(block, j);
    if (places.size() == static_cast<std::size_t>(rows.BlockSize(block))) {
      for (std::size_t i = 0; i < places.size(); ++i) {  // all of them, so no list is needed
        values[i] += coefficient;
      }
      continue;
    }
    for (const FitRows::Place i : places) {
      values[i] += coefficient;
    }
  }
}

void AddCrossproducts(TriangleSums& crossproducts, std::span<double> columnSums,
                      const FitRows& rows, std::int32_t block, const BlockValues& weights,
                      const BlockValues& values) noexcept {
  Vell::RunForm<AddCrossproductsPlainly, AddCrossproductsAvx512>(crossproducts, columnSums, rows,
                                                                 block, weights, values);
}

void AddCrossproductsOfQuarters(TriangleSums& crossproducts, std::span<double> columnSums,
                                const FitRows& rows, std::int32_t block,
                                const BlockValues& values) noexcept {
  Vell::RunForm<AddCrossproductsOfQuartersPlainly, AddCrossproductsOfQuartersAvx512>(
      crossproducts, columnSums, rows, block, values);
}

void AddColumnSums(const ColumnSums& first, const ColumnSums& second, const FitRows& rows,
                   const BlockPart& part) noexcept {
  Vell::RunForm<AddColumnSumsPlainly, AddColumnSumsAvx512>(first, second, rows, part);
}

}  // namespace Hovar
