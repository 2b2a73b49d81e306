#pragma once

namespace Testing {

/// Counts what is allocated by way of operator new in a scope, and makes one allocation fail. One
/// exists at a time.
class CountedNew {
 public:
  /// The `failing`-th allocation from now on fails (the first one is 1; 0 lets all pass).
  explicit CountedNew(int failing = 0);
  ~CountedNew();
  CountedNew(const CountedNew&) = delete;
  CountedNew& operator=(const CountedNew&) = delete;

  /// Allocations asked for so far, a failed one included.
  int Count() const;
};

}  // namespace Testing
