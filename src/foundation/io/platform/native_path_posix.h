#pragma once

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>

namespace Vell::IO::Platform {

/// A path as the system takes it: with '/' for every '\'. A path that does not fit is one that the
/// system would reject for its length, so Get() is null then.
class NativePath {
 public:
  explicit NativePath(const char* path) noexcept : fits_(std::strlen(path) < text_.size()) {
    if (fits_) {
      std::strcpy(text_.data(), path);
      std::replace(text_.begin(), text_.end(), '\\', '/');
    }
  }
  const char* Get() const noexcept { return fits_ ? text_.data() : nullptr; }

 private:
  std::array<char, PATH_MAX> text_;
  bool fits_;
};

}  // namespace Vell::IO::Platform
