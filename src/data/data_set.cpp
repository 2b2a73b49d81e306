#include "data/data_set.h"

#include "foundation/io/log.h"

namespace Hovar {

void CountNonMissing(DataSet& dataSet) {
  Vell::IO::Log().WriteLine("Counting non missing records:");
  dataSet.completeCount = 0;
  dataSet.completeP0Count = 0;
  dataSet.hospitalComplete.Resize(dataSet.hospitalCount);
  dataSet.hospitalCompleteP0.Resize(dataSet.hospitalCount);
  dataSet.hospitalHasMissing.Resize(dataSet.hospitalCount);
  dataSet.recordHasMissing.Resize(dataSet.recordCount);
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    const std::int32_t hospital = dataSet.recordHospital[i];
    if (dataSet.p.IsMissing(i) || Vell::HasMissingCell(dataSet.x.Row(i))) {
      dataSet.recordHasMissing.Set(i, true);
      dataSet.hospitalHasMissing.Set(hospital, true);
      continue;
    }
    ++dataSet.completeCount;
    ++dataSet.hospitalComplete[hospital];
    if (!dataSet.p.Value(i)) {
      ++dataSet.completeP0Count;
      ++dataSet.hospitalCompleteP0[hospital];
    }
  }
  Vell::IO::Log().WriteLine("Number of non-missing records: ", dataSet.completeCount);
  Vell::IO::Log().WriteLine("Number of non-missing records with P = 0: ", dataSet.completeP0Count);
}

}  // namespace Hovar
