#pragma once

// Kernels that are written for AVX-512. design_sums.h has their contracts.

#include "regression/design_sums.h"

namespace Hovar {

// The forms of AddCrossproducts, AddCrossproductsOfQuarters and AddColumnSums for
// VectorWidth::kAvx512. They exist where kHasAvx512Forms; see linalg/kernels/dispatch.h. On a
// processor without these instructions a call ends the process, so only RunForm calls them. Every
// sum is formed in the order of the portable form and so has its bits.
void AddCrossproductsAvx512(TriangleSums& crossproducts, std::span<double> columnSums,
                            const FitRows& rows, std::int32_t block, const BlockValues& weights,
                            const BlockValues& values) noexcept;
void AddCrossproductsOfQuartersAvx512(TriangleSums& crossproducts, std::span<double> columnSums,
                                      const FitRows& rows, std::int32_t block,
                                      const BlockValues& values) noexcept;
void AddColumnSumsAvx512(const ColumnSums& first, const ColumnSums& second, const FitRows& rows,
                         const BlockPart& part) noexcept;

}  // namespace Hovar
