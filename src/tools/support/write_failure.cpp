#include "tools/support/write_failure.h"

#include "foundation/io/platform/device_files.h"
#include "tools/support/messages.h"

namespace Hovar {

std::string_view LastWriteReason() noexcept {
  using Vell::IO::Platform::WriteFailure;
  switch (Vell::IO::Platform::LastWriteFailure()) {
    case WriteFailure::kDiskFull:
      return kWriteReasons.diskFull.Text();
    case WriteFailure::kSizeLimit:
      return kWriteReasons.sizeLimit.Text();
    case WriteFailure::kNotAllowed:
      return kWriteReasons.notAllowed.Text();
    case WriteFailure::kNoFolder:
      return kWriteReasons.noFolder.Text();
    case WriteFailure::kNobodyReads:
      return kWriteReasons.nobodyReads.Text();
    case WriteFailure::kUnknown:
      break;
  }
  return kWriteReasons.unknown.Text();
}

}  // namespace Hovar
