#include "support/raised.h"

#include <iostream>
#include <utility>

#include "foundation/io/standard_writers.h"

namespace Testing {

OutputCapture::OutputCapture() {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
}

OutputCapture::~OutputCapture() {
  const std::string error = TakeError();
  const std::string output = TakeOutput();
  if (testing::Test::HasFailure()) {
    // Among what was captured is the message of the failure.
    std::cerr << error;
    std::cout << output;
  }
}

std::string OutputCapture::TakeError() {
  return std::exchange(hasError_, false) ? testing::internal::GetCapturedStderr() : "";
}

std::string OutputCapture::TakeOutput() {
  Vell::IO::TryFlushStandardOutput();
  return std::exchange(hasOutput_, false) ? testing::internal::GetCapturedStdout() : "";
}

}  // namespace Testing
