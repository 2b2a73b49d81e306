#include "support/raised.h"

#include <utility>

#include "foundation/io/standard_writers.h"

namespace Testing {

OutputCapture::OutputCapture() {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
}

OutputCapture::~OutputCapture() {
  TakeError();
  TakeOutput();
}

std::string OutputCapture::TakeError() {
  return std::exchange(hasError_, false) ? testing::internal::GetCapturedStderr() : "";
}

std::string OutputCapture::TakeOutput() {
  Vell::IO::TryFlushStandardOutput();
  return std::exchange(hasOutput_, false) ? testing::internal::GetCapturedStdout() : "";
}

}  // namespace Testing
