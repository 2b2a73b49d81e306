#pragma once

namespace Testing {

/// Counts what is allocated by way of operator new in a scope; one at a time.
class CountedNew {
 public:
  CountedNew();
  ~CountedNew();
  CountedNew(const CountedNew&) = delete;
  CountedNew& operator=(const CountedNew&) = delete;

  int Count() const;
};

}  // namespace Testing
