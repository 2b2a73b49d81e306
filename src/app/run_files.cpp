#include "app/run_files.h"

#include "data/data_file_reader.h"
#include "foundation/io/file_stream.h"
#include "foundation/io/log.h"
#include "foundation/io/platform/platform.h"
#include "regression/coefficient_file.h"

namespace Hovar {

void OpenRun(const Vell::String& folder, const Vell::String& logFile) {
  Vell::IO::Platform::CreateFolder(folder.CStr());
  Vell::IO::Log().AttachFile(Vell::JoinPath(folder, logFile));
}

void ReadDataFileAt(DataSet& dataSet, const Vell::String& path, std::int32_t poaCount,
                    KeyUse keyUse) {
  Vell::IO::FileStream stream(path, Vell::IO::Mode::kReadText);
  ReadDataFile(dataSet, stream, poaCount, keyUse);
}

void ReadCoefficientsFor(DataSet& dataSet, RegressionResults& results, const Vell::String& path) {
  Vell::IO::FileStream stream(path, Vell::IO::Mode::kReadText);
  ReadCoefficientFile(results, stream);
  ReconcileVariables(dataSet, results);
}

}  // namespace Hovar
