#include "data/data_set.h"

#include "foundation/io/log.h"
#include "messages/output_lines.h"

namespace Hovar {

void CountNonMissing(DataSet& dataSet) {
  Vell::IO::Log().WriteMessage(Messages::kLines.countingComplete);
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
  Vell::IO::Log().WriteMessage(Messages::kLines.completeCount, dataSet.completeCount);
  Vell::IO::Log().WriteMessage(Messages::kLines.completeP0Count, dataSet.completeP0Count);
}

}  // namespace Hovar
