#pragma once

// Room for the floor's large arrays.

#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>

namespace Hovar::Floor {

/// Elements that nobody has written yet, so that no time goes into clearing them. Large arrays ask
/// the system for large pages, which cost it less to hand out.
template <typename T>
class RawArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  RawArray() = default;
  explicit RawArray(std::size_t capacity) { Grow(capacity, 0); }

  T* begin() noexcept { return data_.get(); }
  const T* begin() const noexcept { return data_.get(); }
  T& operator[](std::size_t i) noexcept { return data_[i]; }
  const T& operator[](std::size_t i) const noexcept { return data_[i]; }
  std::size_t Capacity() const noexcept { return capacity_; }

  /// Keeps the first `used` elements.
  void Grow(std::size_t capacity, std::size_t used) {
    constexpr std::size_t kLine = 64;
    constexpr std::size_t kLargePage = std::size_t{1} << 21;
    const std::size_t bytes = capacity * sizeof(T);
    const std::size_t unit = bytes < kLargePage ? kLine : kLargePage;
    const std::size_t rounded = std::max(unit, (bytes + unit - 1) / unit * unit);
    std::unique_ptr<T[], Release> larger(static_cast<T*>(std::aligned_alloc(unit, rounded)));
    if (larger == nullptr) {
      throw std::bad_alloc();
    }
#if defined(MADV_HUGEPAGE)
    if (unit == kLargePage) {
      madvise(larger.get(), rounded, MADV_HUGEPAGE);
    }
#endif
    std::copy_n(data_.get(), used, larger.get());
    data_ = std::move(larger);
    capacity_ = capacity;
  }

 private:
  struct Release {
    void operator()(T* data) const noexcept { std::free(data); }
  };

  std::unique_ptr<T[], Release> data_;
  std::size_t capacity_ = 0;
};

}  // namespace Hovar::Floor
