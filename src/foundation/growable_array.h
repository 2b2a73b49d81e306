#pragma once

// An owned block of elements with a size and a capacity. It serves for numbers (Vector,
// IndexVector) and for objects (strings, handles) alike. Its blocks come from memory.h, so that
// running out of memory is an error of ours, and its sizes are the signed 32-bit numbers that the
// system counts with.

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

#include "foundation/integer_size.h"
#include "foundation/memory.h"

namespace Vell {

/// Elements 0 .. Size() - 1 exist; the block has room for Capacity() of them. New elements are
/// value-initialised (numbers are 0). Copying copies the elements; moving takes the block over and
/// leaves an empty array, moving into an array leaves what it held in the other one.
///
/// An index is checked by assert alone. Pointers, references and spans are valid until the block
/// changes: by Resize, Reserve, Clear, assignment, or an addition for which there is no room.
/// Errors: InvalidArgumentException "Invalid argument" for a negative size; "Out of memory", after
/// which an array that was being constructed or resized holds no block.
template <typename T>
class GrowableArray {
 public:
  /// An empty array without a block.
  GrowableArray() = default;
  /// `size` fresh elements.
  explicit GrowableArray(std::int32_t size) { Resize(size); }
  /// A copy with a capacity of exactly other.Size().
  GrowableArray(const GrowableArray& other) : GrowableArray() {
    Reallocate(other.size_);
    std::uninitialized_copy_n(other.data_, other.size_, data_);
    size_ = other.size_;
  }
  GrowableArray(GrowableArray&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)),
        capacity_(std::exchange(other.capacity_, 0)),
        size_(std::exchange(other.size_, 0)) {}
  GrowableArray& operator=(const GrowableArray& other) {
    if (this != &other) {
      *this = GrowableArray(other);
    }
    return *this;
  }
  GrowableArray& operator=(GrowableArray&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(capacity_, other.capacity_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~GrowableArray() { Clear(); }

  /// Elements, and how many the block has room for.
  std::int32_t Size() const noexcept { return size_; }
  std::int32_t Capacity() const noexcept { return capacity_; }
  bool IsEmpty() const noexcept { return size_ == 0; }

  /// Element `index`, 0 <= index < Size().
  T& operator[](std::int32_t index) noexcept {
    assert(index >= 0 && index < size_);
    return data_[index];
  }
  const T& operator[](std::int32_t index) const noexcept {
    assert(index >= 0 && index < size_);
    return data_[index];
  }

  /// All elements, in their order; null pointers without a block.
  T* begin() noexcept { return data_; }
  T* end() noexcept { return data_ + size_; }
  const T* begin() const noexcept { return data_; }
  const T* end() const noexcept { return data_ + size_; }
  std::span<T> Span() noexcept { return {begin(), end()}; }
  std::span<const T> Span() const noexcept { return {begin(), end()}; }

  /// Becomes `size` fresh elements; the old ones are gone.
  void Resize(std::int32_t size) {
    Clear();
    GrowableArray fresh;  // gives its block back when an element cannot be made
    fresh.Reallocate(size);
    std::uninitialized_value_construct_n(fresh.data_, size);
    fresh.size_ = size;
    *this = std::move(fresh);
  }

  /// Changes the capacity and keeps the first min(capacity, Size()) elements. When there is no
  /// memory for it, the array is as it was.
  void Reserve(std::int32_t capacity) {
    if (capacity != capacity_) {
      Reallocate(capacity);
    }
  }

  /// Adds one element; a full block doubles, to at least 1, so that n elements cost O(n) moves.
  /// Errors: IntegerOverflowException "Integer overflow" when doubling gives 2^31 elements or more;
  /// the array is then as it was.
  void Append(T element) {
    if (size_ == capacity_) {
      Reserve(std::max(CheckedSize(2 * static_cast<std::uint64_t>(capacity_)), 1));
    }
    new (data_ + size_) T(std::move(element));
    ++size_;
  }

  /// Adds `count` elements (numbers, whose values are whatever was there) and returns the first. A
  /// full block doubles, or grows to what is needed if that is more.
  /// Errors: IntegerOverflowException "Integer overflow" for 2^31 elements and more.
  T* AppendUninitialised(std::int32_t count) requires std::is_trivially_copyable_v<T> {
    const auto needed = static_cast<std::uint64_t>(size_) + static_cast<std::uint64_t>(count);
    if (needed > static_cast<std::uint64_t>(capacity_)) {
      const std::uint64_t doubled = 2 * static_cast<std::uint64_t>(capacity_);
      Reserve(CheckedSize(std::max(needed, std::min<std::uint64_t>(doubled, INT32_MAX))));
    }
    T* const first = data_ + size_;
    size_ += count;
    return first;
  }

  /// Truncates, or adds elements (numbers) as AppendUninitialised does.
  void ChangeSize(std::int32_t size) requires std::is_trivially_copyable_v<T> {
    if (size > size_) {
      AppendUninitialised(size - size_);
    } else {
      Truncate(size);
    }
  }

  /// Destroys the elements from `size` on and keeps the block.
  void Truncate(std::int32_t size) noexcept {
    assert(size >= 0 && size <= size_);
    std::destroy(data_ + size, data_ + size_);
    size_ = size;
  }

  /// Destroys all elements and gives the block back.
  void Clear() noexcept {
    std::destroy_n(data_, size_);
    ReleaseBlock(data_);
    data_ = nullptr;
    capacity_ = 0;
    size_ = 0;
  }

 private:
  void Reallocate(std::int32_t capacity) {
    T* const block = AllocateArray<T>(capacity);
    const std::int32_t kept = std::min(size_, capacity);
    std::uninitialized_move_n(data_, kept, block);
    Clear();
    data_ = block;
    capacity_ = capacity;
    size_ = kept;
  }

  T* data_ = nullptr;
  std::int32_t capacity_ = 0;
  std::int32_t size_ = 0;
};

}  // namespace Vell
