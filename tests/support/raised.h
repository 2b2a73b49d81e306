#pragma once

#include <gtest/gtest.h>

#include <string>

#include "foundation/exceptions/exceptions.h"

namespace Testing {

/// Captures what the process writes on standard error and standard output for one scope. What
/// nobody took is written after all when the test has failed.
class OutputCapture {
 public:
  OutputCapture();
  ~OutputCapture();
  OutputCapture(const OutputCapture&) = delete;
  OutputCapture& operator=(const OutputCapture&) = delete;

  /// End the capture and give what was written; each may be called once.
  std::string TakeError();
  std::string TakeOutput();

 private:
  bool hasError_ = true;
  bool hasOutput_ = true;
};

/// Runs `call`, expects that it raises E (or a class derived from it)
/// and that exactly the line "Error: " + `text` was written on standard error, nothing else.
template <typename E, typename Call>
void ExpectRaises(const std::string& text, Call call) {
  OutputCapture capture;
  bool isRaised = false;
  try {
    try {
      call();
    } catch (const E&) {
      isRaised = true;
    }
  } catch (const Vell::Exceptions::Exception&) {
  }
  EXPECT_EQ(capture.TakeError(), "Error: " + text + "\n");
  EXPECT_TRUE(isRaised) << "another class, or nothing, was raised";
}

}  // namespace Testing
