#pragma once

#include "regression/design_sums.h"

namespace Hovar {

// The forms of AddCrossproducts, AddCrossproductsOfQuarters and AddColumnSums for
// VectorWidth::kAvx512. They exist where kHasAvx512Forms; see linalg/kernels/dispatch.h.
void AddCrossproductsAvx512(TriangleSums& crossproducts, std::span<double> columnSums,
                            const FitRows& rows, std::int32_t block, const BlockValues& weights,
                            const BlockValues& values) noexcept;
void AddCrossproductsOfQuartersAvx512(TriangleSums& crossproducts, std::span<double> columnSums,
                                      const FitRows& rows, std::int32_t block,
                                      const BlockValues& values) noexcept;
void AddColumnSumsAvx512(const ColumnSums& first, const ColumnSums& second, const FitRows& rows,
                         const BlockPart& part) noexcept;

}  // namespace Hovar
