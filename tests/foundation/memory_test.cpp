#include "foundation/memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "support/allocation_fault.h"
#include "support/raised.h"

namespace {

using Testing::AllocationFault;
using Testing::ExpectRaises;
using Vell::Exceptions::InvalidArgumentException;
using Vell::Exceptions::OutOfMemoryException;

TEST(AllocationTest, BlocksAreZeroFilledAndAligned) {
  for (const std::size_t bytes : {1u, 2u, 15u, 16u, 17u, 1000u, 65536u, 1000001u}) {
    // A released block that is handed out again must be cleared again.
    for (int repetition = 0; repetition < 3; ++repetition) {
      auto* const block = static_cast<unsigned char*>(Vell::AllocateZeroed(bytes));
      ASSERT_NE(block, nullptr);
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0u);
      EXPECT_TRUE(std::all_of(block, block + bytes, [](unsigned char c) { return c == 0; }))
          << bytes;
      std::fill_n(block, bytes, static_cast<unsigned char>(0xA5));
      Vell::ReleaseBlock(block);
    }
  }
}

TEST(AllocationTest, NoBytesAreANullPointerThatCanBeReleased) {
  EXPECT_EQ(Vell::AllocateZeroed(0), nullptr);
  EXPECT_EQ(Vell::AllocateArray<double>(0), nullptr);
  Vell::ReleaseBlock(nullptr);
}

TEST(AllocationTest, NoBytesAreNoFailure) {
  const AllocationFault fault(1, AllocationFault::Extent::kFromThenOn);
  EXPECT_EQ(Vell::AllocateZeroed(0), nullptr);
}

TEST(AllocationTest, FailureIsOutOfMemory) {
  ExpectRaises<OutOfMemoryException>("Out of memory", [] {
    const AllocationFault fault(1);
    Vell::AllocateZeroed(8);
  });
  ExpectRaises<OutOfMemoryException>("Out of memory", [] {
    const AllocationFault fault(1);
    Vell::AllocateArray<double>(8);
  });
}

TEST(AllocationTest, SizeThatNoMachineHasIsOutOfMemory) {
  const AllocationFault fault(1);  // stands in for the system, whose answer may be slow
  ExpectRaises<OutOfMemoryException>("Out of memory",
                                     [] { Vell::AllocateZeroed(std::size_t{1} << 62); });
}

TEST(AllocationTest, NegativeCountIsAnInvalidArgument) {
  const AllocationFault counter(0);
  for (const std::int64_t count :
       {std::int64_t{-1}, std::int64_t{-2147483648}, std::numeric_limits<std::int64_t>::min()}) {
    ExpectRaises<InvalidArgumentException>("Invalid argument",
                                           [count] { Vell::AllocateArray<char>(count); });
    ExpectRaises<InvalidArgumentException>("Invalid argument",
                                           [count] { Vell::RequireNotNegative(count); });
  }
  EXPECT_EQ(counter.Count(), 0);
}

TEST(AllocationTest, SizesFromZeroUpAreAccepted) {
  Vell::RequireNotNegative(0);
  Vell::RequireNotNegative(std::numeric_limits<std::int64_t>::max());
}

TEST(AllocationTest, RaisingAnErrorNeedsNoMemory) {
  const AllocationFault fault(1, AllocationFault::Extent::kFromThenOn);
  ExpectRaises<Vell::Exceptions::Exception>(
      "plain", [] { throw Vell::Exceptions::Exception(Messages::Pattern("plain")); });
  ExpectRaises<Vell::Exceptions::FileOpenException>(
      "File \"x\" can not be opened", [] { throw Vell::Exceptions::FileOpenException("x"); });
  EXPECT_FALSE(fault.HasFired());
}

void* RecordedAllocation(std::size_t bytes) noexcept { return std::calloc(bytes, 1); }

TEST(AllocationFunctionTest, ReplacingReturnsTheOneInForceAndNullRestoresTheDefault) {
  const Vell::AllocationFunction usual = Vell::SetAllocationFunction(RecordedAllocation);
  ASSERT_NE(usual, nullptr);
  EXPECT_NE(usual, &RecordedAllocation);
  EXPECT_EQ(Vell::SetAllocationFunction(nullptr), &RecordedAllocation);
  EXPECT_EQ(Vell::SetAllocationFunction(usual), usual);
}

}  // namespace
