#include "foundation/growable_array.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "foundation/string.h"
#include "support/allocation_fault.h"
#include "support/raised.h"

namespace {

using Testing::ExpectRaises;
using Vell::GrowableArray;
using Vell::String;
using Vell::Exceptions::IntegerOverflowException;
using Vell::Exceptions::InvalidArgumentException;
using Vell::Exceptions::OutOfMemoryException;

template <typename T>
std::vector<T> Elements(const GrowableArray<T>& array) {
  return {array.begin(), array.end()};
}

GrowableArray<std::int32_t> Counting(std::int32_t size) {
  GrowableArray<std::int32_t> array(size);
  std::iota(array.begin(), array.end(), 1);
  return array;
}

/// Counts the objects of its kind that live.
class Counted {
 public:
  Counted() { ++living; }
  Counted(const Counted& other) : text_(other.text_) { ++living; }
  Counted(Counted&& other) noexcept : text_(std::move(other.text_)) { ++living; }
  Counted& operator=(const Counted&) = default;
  ~Counted() { --living; }

  static inline int living = 0;

 private:
  String text_{"an object with a block of its own"};
};

TEST(GrowableArrayTest, DefaultIsEmptyWithoutCapacity) {
  const GrowableArray<double> array;
  EXPECT_EQ(array.Size(), 0);
  EXPECT_EQ(array.Capacity(), 0);
  EXPECT_TRUE(array.IsEmpty());
  EXPECT_EQ(array.begin(), array.end());
  EXPECT_TRUE(array.Span().empty());
}

TEST(GrowableArrayTest, NewElementsAreZero) {
  const GrowableArray<double> array(3);
  EXPECT_EQ(Elements(array), (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(array.Capacity(), 3);
  EXPECT_FALSE(array.IsEmpty());
}

TEST(GrowableArrayTest, SizeZeroHoldsNothing) {
  const GrowableArray<double> array(0);
  EXPECT_EQ(array.Size(), 0);
  EXPECT_EQ(array.Capacity(), 0);
}

TEST(GrowableArrayTest, NegativeSizesAreInvalidArguments) {
  ExpectRaises<InvalidArgumentException>("Invalid argument", [] { GrowableArray<int> array(-1); });
  ExpectRaises<InvalidArgumentException>("Invalid argument",
                                         [] { GrowableArray<double> array(-2147483647 - 1); });
  ExpectRaises<InvalidArgumentException>("Invalid argument", [] { Counting(2).Resize(-1); });
  ExpectRaises<InvalidArgumentException>("Invalid argument", [] { Counting(2).Reserve(-1); });
}

TEST(GrowableArrayTest, ResizingForgetsTheOldElements) {
  GrowableArray<std::int32_t> array = Counting(5);
  array.Resize(3);
  EXPECT_EQ(Elements(array), (std::vector<std::int32_t>{0, 0, 0}));
  EXPECT_EQ(array.Capacity(), 3);
}

TEST(GrowableArrayTest, AppendingDoublesTheCapacityFromOne) {
  GrowableArray<std::int32_t> array;
  const std::vector<std::int32_t> capacities{1, 2, 4, 4, 8, 8, 8, 8, 16};
  for (std::int32_t i = 0; i < 9; ++i) {
    array.Append(10 * i);
    EXPECT_EQ(array.Size(), i + 1);
    EXPECT_EQ(array.Capacity(), capacities[static_cast<std::size_t>(i)]) << i;
  }
  EXPECT_EQ(Elements(array), (std::vector<std::int32_t>{0, 10, 20, 30, 40, 50, 60, 70, 80}));
}

TEST(GrowableArrayTest, ElementOfTheArrayItselfCanBeAppendedWhenItIsFull) {
  GrowableArray<String> array;
  array.Append(String("first"));
  ASSERT_EQ(array.Size(), array.Capacity());
  array.Append(array[0]);
  EXPECT_EQ(array[0].View(), "first");
  EXPECT_EQ(array[1].View(), "first");
}

TEST(GrowableArrayTest, UninitialisedElementsFollowTheOldOnes) {
  GrowableArray<std::int32_t> array = Counting(2);
  std::int32_t* const added = array.AppendUninitialised(3);
  EXPECT_EQ(added, array.begin() + 2);
  std::fill_n(added, 3, 7);
  EXPECT_EQ(Elements(array), (std::vector<std::int32_t>{1, 2, 7, 7, 7}));
  EXPECT_EQ(array.Capacity(), 5) << "what is needed is more than the double";
  array.AppendUninitialised(1);
  EXPECT_EQ(array.Capacity(), 10) << "the double is more than what is needed";
}

TEST(GrowableArrayTest, NoUninitialisedElementsChangeNothing) {
  GrowableArray<std::int32_t> array = Counting(2);
  EXPECT_EQ(array.AppendUninitialised(0), array.end());
  EXPECT_EQ(array.Size(), 2);
  EXPECT_EQ(array.Capacity(), 2);
}

TEST(GrowableArrayTest, ElementCountOf2To31IsAnIntegerOverflow) {
  GrowableArray<char> array(1);
  ExpectRaises<IntegerOverflowException>("Integer overflow",
                                         [&array] { array.AppendUninitialised(2147483647); });
  EXPECT_EQ(array.Size(), 1);
}

TEST(GrowableArrayTest, ReserveKeepsTheElementsThatFit) {
  GrowableArray<std::int32_t> array = Counting(4);
  array.Reserve(6);
  EXPECT_EQ(array.Capacity(), 6);
  EXPECT_EQ(Elements(array), (std::vector<std::int32_t>{1, 2, 3, 4}));
  array.Reserve(2);
  EXPECT_EQ(array.Capacity(), 2);
  EXPECT_EQ(Elements(array), (std::vector<std::int32_t>{1, 2}));
  array.Reserve(0);
  EXPECT_EQ(array.Capacity(), 0);
  EXPECT_TRUE(array.IsEmpty());
}

TEST(GrowableArrayTest, CopyHasItsOwnElements) {
  GrowableArray<String> original;
  original.Append(String("a"));
  original.Append(String("b"));
  const GrowableArray<String> copy = original;
  original[0].Append('x');
  original.Append(String("c"));
  EXPECT_EQ(copy.Size(), 2);
  EXPECT_EQ(copy[0].View(), "a");
  EXPECT_EQ(copy[1].View(), "b");
}

TEST(GrowableArrayTest, AssignmentCopiesTheElements) {
  const GrowableArray<std::int32_t> source = Counting(3);
  GrowableArray<std::int32_t> target = Counting(5);
  target = source;
  target[0] = 9;
  EXPECT_EQ(Elements(source), (std::vector<std::int32_t>{1, 2, 3}));
  EXPECT_EQ(Elements(target), (std::vector<std::int32_t>{9, 2, 3}));
}

TEST(GrowableArrayTest, SelfAssignmentKeepsTheElements) {
  GrowableArray<String> array;
  array.Append(String("kept"));
  const GrowableArray<String>& alias = array;
  array = alias;
  ASSERT_EQ(array.Size(), 1);
  EXPECT_EQ(array[0].View(), "kept");
}

TEST(GrowableArrayTest, MovingTakesTheBlockOver) {
  GrowableArray<std::int32_t> source = Counting(3);
  const std::int32_t* const block = source.begin();
  const GrowableArray<std::int32_t> target = std::move(source);
  EXPECT_EQ(target.begin(), block);
  EXPECT_EQ(source.Size(), 0);  // NOLINT(bugprone-use-after-move): that is the point
  EXPECT_EQ(source.Capacity(), 0);
}

TEST(GrowableArrayTest, TruncateKeepsTheBlock) {
  GrowableArray<std::int32_t> array = Counting(4);
  array.Truncate(1);
  EXPECT_EQ(Elements(array), std::vector<std::int32_t>{1});
  EXPECT_EQ(array.Capacity(), 4);
}

TEST(GrowableArrayTest, ClearGivesTheBlockBack) {
  GrowableArray<std::int32_t> array = Counting(4);
  array.Clear();
  EXPECT_TRUE(array.IsEmpty());
  EXPECT_EQ(array.Capacity(), 0);
}

TEST(GrowableArrayTest, EveryObjectIsDestroyedOnce) {
  {
    GrowableArray<Counted> array(3);
    EXPECT_EQ(Counted::living, 3);
    array.Append(Counted());
    array.Append(Counted());
    EXPECT_EQ(Counted::living, 5);
    array.Truncate(4);
    EXPECT_EQ(Counted::living, 4);
    array.Reserve(2);
    EXPECT_EQ(Counted::living, 2);
    GrowableArray<Counted> copy = array;
    EXPECT_EQ(Counted::living, 4);
    array = std::move(copy);
    array.Resize(1);
    copy.Clear();
    EXPECT_EQ(Counted::living, 1);
  }
  EXPECT_EQ(Counted::living, 0);
}

TEST(GrowableArrayTest, FailedResizeHoldsNoBlock) {
  GrowableArray<std::int32_t> array = Counting(4);
  ExpectRaises<OutOfMemoryException>("Out of memory", [&array] {
    const Testing::AllocationFault fault(1);
    array.Resize(8);
  });
  EXPECT_EQ(array.Size(), 0);
  EXPECT_EQ(array.Capacity(), 0);
}

TEST(GrowableArrayTest, ElementThatCannotBeMadeTakesTheOthersWithIt) {
  GrowableArray<Counted> array(2);
  ExpectRaises<OutOfMemoryException>("Out of memory", [&array] {
    const Testing::AllocationFault fault(4);  // the block, then the third of five elements
    array.Resize(5);
  });
  EXPECT_EQ(Counted::living, 0);
  EXPECT_EQ(array.Size(), 0);
  EXPECT_EQ(array.Capacity(), 0);
}

TEST(GrowableArrayTest, FailingAllocationIsOutOfMemoryAndLeavesNoObject) {
  Testing::ExpectOutOfMemoryAtEachAllocation([] {
    GrowableArray<Counted> array(2);
    array.Append(Counted());
    array.Append(Counted());
    GrowableArray<Counted> copy = array;
    copy.Resize(3);
    copy = array;
    array.Reserve(9);
    EXPECT_EQ(Counted::living, 8);
  });
  EXPECT_EQ(Counted::living, 0);
}

}  // namespace
