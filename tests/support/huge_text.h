#pragma once

#include <cstddef>
#include <string_view>

namespace Testing {

/// Memory of this size that can be read (zeros) and costs nothing until it is.
class HugeText {
 public:
  explicit HugeText(std::size_t size);
  ~HugeText();
  HugeText(const HugeText&) = delete;
  HugeText& operator=(const HugeText&) = delete;

  std::string_view View(std::size_t size) const { return {static_cast<const char*>(bytes_), size}; }

 private:
  void* bytes_;
  std::size_t size_;
};

}  // namespace Testing
