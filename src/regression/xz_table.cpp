#include "regression/xz_table.h"

#include "foundation/exceptions/exceptions.h"
#include "messages/error_texts.h"

namespace Hovar {

XzTable ComputeXzTable(const DataSet& dataSet, std::int32_t variable) {
  std::array<std::array<std::int32_t, 2>, 2> counts{};  // by Z, then by X
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    if (!dataSet.x.IsMissing(i, variable)) {
      ++counts[dataSet.z.Get(i, variable) ? 1 : 0][dataSet.x.Value(i, variable) ? 1 : 0];
    }
  }
  XzTable table;
  for (std::size_t z = 0; z < counts.size(); ++z) {
    const std::int32_t records = counts[z][0] + counts[z][1];
    if (records == 0) {
      throw Vell::Exceptions::Exception(Messages::kErrors.xzTable);
    }
    table.probability[z] = static_cast<double>(counts[z][1]) / records;
  }
  return table;
}

}  // namespace Hovar
