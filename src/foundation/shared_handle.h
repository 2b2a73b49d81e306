#pragma once

// A reference-counted handle: runners, streams and text writers are shared through it. The count is
// a block of its own beside the object; it also remembers how to destroy the object as the type it
// was made as, so a base class needs no virtual destructor. Counts are not atomic: the system has a
// single thread. Handles that refer to each other in a circle would never be destroyed; the system
// has none.

#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>

#include "foundation/memory.h"

namespace Vell {

/// The count of a shared object and the way to destroy it. `object` is the block of memory.h in
/// which the object lies; both are null for an object with static storage.
struct SharedCount {
  std::int32_t count = 1;
  void* object = nullptr;
  void (*destroy)(void* object) noexcept = nullptr;
};

/// One reference to an object of type T, which goes with the last of its handles. An empty handle
/// refers to nothing and must not be dereferenced.
template <typename T>
class SharedHandle {
 public:
  /// An empty handle.
  SharedHandle() = default;

  /// Takes over one reference that `count` already holds. Used by MakeShared, and for objects with
  /// static storage, whose count starts at 1 and so is never released.
  SharedHandle(SharedCount& count, T& object) noexcept : count_(&count), object_(&object) {}

  SharedHandle(const SharedHandle& other) noexcept : SharedHandle(other.count_, other.object_) {
    Retain();
  }
  SharedHandle(SharedHandle&& other) noexcept
      : SharedHandle(std::exchange(other.count_, nullptr), std::exchange(other.object_, nullptr)) {}

  /// A handle to a derived object serves where one to its base is asked for.
  template <typename Derived>
  requires std::is_convertible_v<Derived*, T*> SharedHandle(const SharedHandle<Derived>& other)
  noexcept : SharedHandle(other.count_, other.object_) { Retain(); }

  SharedHandle& operator=(SharedHandle other) noexcept {
    std::swap(count_, other.count_);
    std::swap(object_, other.object_);
    return *this;
  }

  ~SharedHandle() {
    if (count_ != nullptr && --count_->count == 0) {
      count_->destroy(count_->object);
      ReleaseBlock(count_->object);
      ReleaseBlock(count_);
    }
  }

  /// The object, which lives at least as long as this handle refers to it.
  T& operator*() const noexcept { return *object_; }
  T* operator->() const noexcept { return object_; }
  /// False for an empty handle.
  explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
  template <typename Other>
  friend class SharedHandle;

  SharedHandle(SharedCount* count, T* object) noexcept : count_(count), object_(object) {}
  void Retain() noexcept {
    if (count_ != nullptr) {
      ++count_->count;
    }
  }

  SharedCount* count_ = nullptr;
  T* object_ = nullptr;
};

/// Makes an object of type T from `arguments` and returns the first handle to it.
/// Errors: "Out of memory"; whatever T's constructor raises (nothing is kept then).
template <typename T, typename... Arguments>
SharedHandle<T> MakeShared(Arguments&&... arguments) {
  auto* const count = new (AllocateZeroed(sizeof(SharedCount))) SharedCount;
  try {
    count->object = AllocateZeroed(sizeof(T));
    T* const object = new (count->object) T(std::forward<Arguments>(arguments)...);
    count->destroy = [](void* made) noexcept { static_cast<T*>(made)->~T(); };
    return SharedHandle<T>(*count, *object);
  } catch (...) {
    ReleaseBlock(count->object);
    ReleaseBlock(count);
    throw;
  }
}

}  // namespace Vell
