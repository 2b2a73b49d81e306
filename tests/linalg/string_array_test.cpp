#include "linalg/string_array.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "support/matrices.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

using Testing::ExpectRaises;
using Testing::MakeIndexVector;
using Vell::StringArray;
using Vell::Exceptions::InvalidArgumentException;

constexpr std::int32_t kMinimum = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMaximum = std::numeric_limits<std::int32_t>::max();

// The texts "t0", "t1", ... up to the count.
StringArray Numbered(std::int32_t count) {
  StringArray result(count);
  for (std::int32_t i = 0; i < count; ++i) {
    result[i] = Vell::String("t" + std::to_string(i));
  }
  return result;
}

std::vector<std::string> Texts(const StringArray& array) {
  std::vector<std::string> result;
  for (std::int32_t i = 0; i < array.Count(); ++i) {
    result.emplace_back(array[i].View());
  }
  return result;
}

TEST(StringArrayTest, NewTextsAreEmpty) {
  EXPECT_EQ(StringArray().Count(), 0);
  EXPECT_EQ(StringArray(0).Count(), 0);
  EXPECT_EQ(Texts(StringArray(2)), (std::vector<std::string>{"", ""}));
}

TEST(StringArrayTest, ANegativeCountIsInvalid) {
  for (const std::int32_t count : {-1, kMinimum}) {
    SCOPED_TRACE(count);
    ExpectRaises<InvalidArgumentException>("Invalid argument", [&] { StringArray{count}; });
  }
}

TEST(StringArrayTest, AccessIsChecked) {
  StringArray array = Numbered(3);
  const StringArray& constant = array;
  EXPECT_EQ(constant[0].View(), "t0");
  EXPECT_EQ(constant[2].View(), "t2");
  for (const std::int32_t index : {-1, 3, 4, kMinimum, kMaximum}) {
    SCOPED_TRACE(index);
    ExpectRaises<InvalidArgumentException>("Index out of range",
                                           [&] { array[index] = Vell::String("x"); });
    ExpectRaises<InvalidArgumentException>("Index out of range",
                                           [&] { static_cast<void>(constant[index]); });
  }
  EXPECT_EQ(Texts(array), (std::vector<std::string>{"t0", "t1", "t2"}));
}

TEST(StringArrayTest, AnEmptyArrayHasNoFirstText) {
  StringArray array;
  ExpectRaises<InvalidArgumentException>("Index out of range",
                                         [&] { array[0] = Vell::String("Intercept"); });
}

TEST(StringArrayTest, ACopyHasTextsOfItsOwn) {
  StringArray original = Numbered(2);
  const StringArray copy = original;
  original[0].Append("!");
  EXPECT_EQ(Texts(copy), (std::vector<std::string>{"t0", "t1"}));
  EXPECT_EQ(Texts(original), (std::vector<std::string>{"t0!", "t1"}));
}

struct Removal {
  std::int32_t count;
  std::vector<std::int32_t> indices;
  std::vector<std::string> left;
};

TEST(StringArrayTest, RemovingKeepsTheOrderOfTheRest) {
  const std::vector<Removal> cases = {
      {5, {3, 1}, {"t0", "t2", "t4"}},
      {5, {1, 3}, {"t0", "t2", "t4"}},
      // none and all
      {3, {}, {"t0", "t1", "t2"}},
      {3, {2, 0, 1}, {}},
      {1, {0}, {}},
      {0, {}, {}},
      // first and last
      {3, {0}, {"t1", "t2"}},
      {3, {2}, {"t0", "t1"}},
      {4, {3, 0}, {"t1", "t2"}},
      // neighbours
      {5, {2, 1}, {"t0", "t3", "t4"}},
      // by value, not by text: "t10" comes after "t2"
      {12, {10, 2}, {"t0", "t1", "t3", "t4", "t5", "t6", "t7", "t8", "t9", "t11"}},
  };
  for (const Removal& c : cases) {
    SCOPED_TRACE(testing::Message() << c.count << " without " << testing::PrintToString(c.indices));
    StringArray array = Numbered(c.count);
    const Vell::IndexVector indices = MakeIndexVector(c.indices);
    array.RemoveElements(indices);
    EXPECT_EQ(Texts(array), c.left);
    EXPECT_EQ(Testing::Elements(indices), c.indices) << "the list itself stays as it is";
  }
}

TEST(StringArrayTest, RandomListsInAnyOrderAreRemoved) {
  Testing::SeededRandom random(33);
  SCOPED_TRACE(random.Text());
  for (int repeat = 0; repeat < 200; ++repeat) {
    const std::int32_t count = random.Integer(1, 40);
    const auto removed = random.Choose(random.Integer(0, count), count);
    SCOPED_TRACE(testing::Message() << count << " without " << testing::PrintToString(removed));
    std::vector<std::string> left;
    for (std::int32_t i = 0; i < count; ++i) {
      if (std::ranges::find(removed, i) == removed.end()) {
        left.push_back("t" + std::to_string(i));
      }
    }
    StringArray array = Numbered(count);
    array.RemoveElements(MakeIndexVector(removed));
    ASSERT_EQ(Texts(array), left);
  }
}

TEST(StringArrayTest, RemovingATextThatIsNotThereIsOutOfRange) {
  const std::vector<std::vector<std::int32_t>> lists = {
      {-1}, {3}, {4}, {0, 3}, {3, 0}, {-1, 2}, {2, -1}, {1, 9, 2}, {kMinimum}, {kMaximum}};
  for (const auto& list : lists) {
    SCOPED_TRACE(testing::PrintToString(list));
    StringArray array = Numbered(3);
    ExpectRaises<InvalidArgumentException>("Index out of range",
                                           [&] { array.RemoveElements(MakeIndexVector(list)); });
  }
  StringArray empty;
  ExpectRaises<InvalidArgumentException>("Index out of range",
                                         [&] { empty.RemoveElements(MakeIndexVector({0})); });
}

}  // namespace
