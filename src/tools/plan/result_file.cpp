#include "tools/plan/result_file.h"

#include <utility>

#include "foundation/io/file_stream.h"
#include "regression/coefficient_file.h"
#include "tools/support/error_capture.h"
#include "tools/support/files.h"
#include "tools/support/inputs.h"
#include "tools/support/memory_stream.h"

namespace Hovar {

std::optional<RegressionResults> ReadResultFile(const std::string& path) {
  RegressionResults results;
  std::optional<std::string> bytes = ReadSmallFile(path);
  const std::optional<std::string> error = ErrorOf([&] {
    if (bytes) {
      MemoryStream stream(std::move(*bytes), path);
      ReadCoefficientFile(results, stream);
    } else {
      Vell::IO::FileStream stream(Vell::String(path), kReadInput);
      ReadCoefficientFile(results, stream);
    }
  });
  return error.has_value() ? std::nullopt : std::optional(std::move(results));
}

}  // namespace Hovar
