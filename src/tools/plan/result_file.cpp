#include "tools/plan/result_file.h"

#include "foundation/io/file_stream.h"
#include "foundation/io/platform/folders.h"
#include "regression/coefficient_file.h"
#include "tools/support/error_capture.h"

namespace Hovar {

std::optional<RegressionResults> ReadResultFile(const std::string& path) {
  namespace Platform = Vell::IO::Platform;
  if (Platform::KindOf(path.c_str()) != Platform::PathKind::kFile) {
    return std::nullopt;  // reading a pipe would wait
  }
  RegressionResults results;
  const std::optional<std::string> error = ErrorOf([&] {
    Vell::IO::FileStream stream(Vell::String(path), Vell::IO::Mode::kReadText);
    ReadCoefficientFile(results, stream);
  });
  return error.has_value() ? std::nullopt : std::optional(std::move(results));
}

}  // namespace Hovar
