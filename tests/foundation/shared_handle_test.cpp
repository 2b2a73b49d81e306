#include "foundation/shared_handle.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "foundation/string.h"
#include "support/allocation_fault.h"

namespace {

using Vell::MakeShared;
using Vell::SharedCount;
using Vell::SharedHandle;

/// Writes down which destructors ran.
class Member {
 public:
  Member(std::string& story, std::string name) : story_(story), name_(std::move(name)) {
    story_ += "+" + name_;
  }
  ~Member() { story_ += "-" + name_; }
  Member(const Member&) = delete;
  Member& operator=(const Member&) = delete;

 private:
  std::string& story_;
  std::string name_;
};

struct Base {  // like a runner: operations but no virtual destructor
  virtual int Number() const = 0;

 protected:
  ~Base() = default;
};

struct OtherBase {
  std::int64_t padding = 7;
};

struct Derived final : OtherBase, Base {
  Derived(std::string& story, int n) : member(story, "member"), number(n) {}
  int Number() const override { return number; }

  Member member;
  Vell::String text{"owns a block"};
  int number;
};

struct Throwing {
  explicit Throwing(std::string& story) : first(story, "first"), text("owns a block") { throw 42; }
  Member first;
  Vell::String text;
};

TEST(SharedHandleTest, DefaultIsEmpty) {
  const SharedHandle<int> empty;
  EXPECT_FALSE(empty);
  const SharedHandle<int> copy = empty;
  EXPECT_FALSE(copy);
}

TEST(SharedHandleTest, ObjectLivesUntilItsLastHandleGoes) {
  std::string story;
  SharedHandle<Derived> first = MakeShared<Derived>(story, 5);
  {
    const SharedHandle<Derived> second = first;
    EXPECT_EQ(&*second, &*first);
    first = SharedHandle<Derived>();
    EXPECT_FALSE(first);
    EXPECT_EQ(second->number, 5);
    EXPECT_EQ(story, "+member");
  }
  EXPECT_EQ(story, "+member-member");
}

TEST(SharedHandleTest, DestroysTheDerivedObjectThroughABaseWithoutVirtualDestructor) {
  static_assert(!std::has_virtual_destructor_v<Base>);
  std::string story;
  {
    SharedHandle<Base> base = MakeShared<Derived>(story, 9);  // a base that is not the first one
    EXPECT_EQ(base->Number(), 9);
  }
  EXPECT_EQ(story, "+member-member");
}

TEST(SharedHandleTest, HandlesToBaseAndDerivedShareOneCount) {
  std::string story;
  SharedHandle<Derived> derived = MakeShared<Derived>(story, 1);
  SharedHandle<Base> base = derived;
  derived = SharedHandle<Derived>();
  EXPECT_EQ(story, "+member");
  EXPECT_EQ(base->Number(), 1);
  base = SharedHandle<Base>();
  EXPECT_EQ(story, "+member-member");
}

TEST(SharedHandleTest, AssignmentReleasesWhatWasHeld) {
  std::string one;
  std::string two;
  SharedHandle<Derived> handle = MakeShared<Derived>(one, 1);
  handle = MakeShared<Derived>(two, 2);
  EXPECT_EQ(one, "+member-member");
  EXPECT_EQ(two, "+member");
  EXPECT_EQ(handle->number, 2);
}

TEST(SharedHandleTest, SelfAssignmentKeepsTheObject) {
  std::string story;
  SharedHandle<Derived> handle = MakeShared<Derived>(story, 3);
  const SharedHandle<Derived>& alias = handle;
  handle = alias;
  EXPECT_EQ(story, "+member");
  EXPECT_EQ(handle->number, 3);
}

TEST(SharedHandleTest, MovingEmptiesTheSourceAndDestroysNothing) {
  std::string story;
  SharedHandle<Derived> source = MakeShared<Derived>(story, 4);
  const SharedHandle<Derived> target = std::move(source);
  EXPECT_FALSE(source);  // NOLINT(bugprone-use-after-move): that is the point
  EXPECT_EQ(target->number, 4);
  EXPECT_EQ(story, "+member");
}

TEST(SharedHandleTest, CountsEachHandle) {
  std::string story;
  Derived object(story, 6);
  SharedCount count;  // as of an object with static storage, which is never released
  EXPECT_EQ(count.count, 1);
  {
    ++count.count;
    const SharedHandle<Derived> first(count, object);
    EXPECT_EQ(count.count, 2);
    const SharedHandle<Derived> second = first;
    EXPECT_EQ(count.count, 3);
    const SharedHandle<Base> third = second;
    EXPECT_EQ(count.count, 4);
    SharedHandle<Base> fourth = third;
    EXPECT_EQ(count.count, 5);
    const SharedHandle<Base> fifth = std::move(fourth);
    EXPECT_EQ(count.count, 5);
  }
  EXPECT_EQ(count.count, 1);
  EXPECT_EQ(story, "+member");
}

TEST(MakeSharedTest, PassesReferencesAndMovedArguments) {
  struct Taker {
    Taker(int& n, std::string&& s) : number(n), text(std::move(s)) { ++n; }
    int number;
    std::string text;
  };
  int number = 1;
  const SharedHandle<Taker> handle = MakeShared<Taker>(number, std::string(100, 'x'));
  EXPECT_EQ(number, 2);
  EXPECT_EQ(handle->number, 1);
  EXPECT_EQ(handle->text.size(), 100u);
}

TEST(MakeSharedTest, FailingAllocationLeavesNothingBehind) {
  std::string story;
  Testing::ExpectOutOfMemoryAtEachAllocation([&story] {
    story.clear();
    const SharedHandle<Base> handle = MakeShared<Derived>(story, 1);
    EXPECT_EQ(handle->Number(), 1);
  });
  EXPECT_EQ(story, "+member-member");
}

TEST(MakeSharedTest, MemberIsDestroyedWhenALaterMembersAllocationFails) {
  std::string story;
  const Testing::AllocationFault fault(3);  // count, object, then the text within the object
  Testing::ExpectRaises<Vell::Exceptions::OutOfMemoryException>(
      "Out of memory", [&story] { MakeShared<Derived>(story, 1); });
  EXPECT_EQ(story, "+member-member");
}

TEST(MakeSharedTest, WhatAConstructorRaisesPassesAndNothingIsKept) {
  std::string story;
  EXPECT_THROW(MakeShared<Throwing>(story), int);
  EXPECT_EQ(story, "+first-first");
}

}  // namespace
