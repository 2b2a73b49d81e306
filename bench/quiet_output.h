#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace Hovar::Bench {

/// Sends what the libraries print on standard output nowhere, for one scope.
class QuietOutput {
 public:
  QuietOutput() : kept_(dup(STDOUT_FILENO)) {
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
  }
  ~QuietOutput() {
    dup2(kept_, STDOUT_FILENO);
    close(kept_);
  }
  QuietOutput(const QuietOutput&) = delete;
  QuietOutput& operator=(const QuietOutput&) = delete;

 private:
  int kept_;
};

}  // namespace Hovar::Bench
