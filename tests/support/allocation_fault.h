#pragma once

#include <gtest/gtest.h>

#include "foundation/exceptions/exceptions.h"
#include "support/raised.h"

namespace Testing {

/// Counts the allocations of a scope and makes one of them fail. One fault exists at a time.
class AllocationFault {
 public:
  enum class Extent { kOnce, kFromThenOn };

  /// The `failing`-th allocation from now on fails (the first one is 1; 0 lets all pass), alone or
  /// with all later ones.
  explicit AllocationFault(int failing, Extent extent = Extent::kOnce);
  ~AllocationFault();
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;

  /// Allocations asked for so far, failed ones included.
  int Count() const;
  bool HasFired() const;
};

/// Runs `call` with its first, second, ... allocation failing, once and from then on, until a run
/// passes. Expects "Out of memory" and nothing else from each run that meets the fault. Blocks that
/// such a run leaves behind are reported by the address sanitizer's leak check.
template <typename Call>
void ExpectOutOfMemoryAtEachAllocation(Call call) {
  for (const auto extent : {AllocationFault::Extent::kOnce, AllocationFault::Extent::kFromThenOn}) {
    int failing = 0;
    for (bool isFired = true; isFired;) {
      ++failing;
      SCOPED_TRACE("allocation " + std::to_string(failing));
      OutputCapture capture;
      bool isRaised = false;
      {
        const AllocationFault fault(failing, extent);
        try {
          call();
        } catch (const Vell::Exceptions::OutOfMemoryException&) {
          isRaised = true;
        }
        isFired = fault.HasFired();
      }
      EXPECT_EQ(isRaised, isFired);
      EXPECT_EQ(capture.TakeError(), isFired ? "Error: Out of memory\n" : "");
    }
    EXPECT_GT(failing, 1) << "nothing was allocated";
  }
}

}  // namespace Testing
