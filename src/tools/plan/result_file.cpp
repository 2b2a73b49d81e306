#include "tools/plan/result_file.h"

#include "foundation/io/file_stream.h"
#include "regression/coefficient_file.h"
#include "tools/support/error_capture.h"
#include "tools/support/inputs.h"

namespace Hovar {

std::optional<RegressionResults> ReadResultFile(const std::string& path) {
  RegressionResults results;
  const std::optional<std::string> error = ErrorOf([&] {
    Vell::IO::FileStream stream(Vell::String(path), kReadInput);
    ReadCoefficientFile(results, stream);
  });
  return error.has_value() ? std::nullopt : std::optional(std::move(results));
}

}  // namespace Hovar
