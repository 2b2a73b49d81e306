#include "foundation/string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "support/all_texts.h"
#include "support/allocation_fault.h"
#include "support/huge_text.h"
#include "support/raised.h"

namespace {

using Testing::ExpectRaises;
using Testing::Quoted;
using Vell::String;
using Vell::Exceptions::IntegerOverflowException;
using Vell::Exceptions::InvalidArgumentException;

/// Text is followed by a zero byte within the buffer.
void ExpectTerminated(const String& string) {
  EXPECT_EQ(string.CStr()[string.Length()], '\0');
  EXPECT_GT(string.Capacity(), string.Length());
}

TEST(StringTest, DefaultHasNoBufferAndReadsAsEmpty) {
  const String string;
  EXPECT_EQ(string.Capacity(), 0);
  EXPECT_EQ(string.Length(), 0);
  EXPECT_STREQ(string.CStr(), "");
  EXPECT_EQ(string.View(), "");
  EXPECT_EQ(string.FindFirst('a'), -1);
  EXPECT_EQ(string.FindLast('\0'), -1);
}

TEST(StringTest, DefaultEqualsTheEmptyText) {
  EXPECT_TRUE(String().View() == String("").View());
  EXPECT_FALSE(String().View() < String("").View());
}

TEST(StringTest, CapacityIsOneMoreThanTheText) {
  for (const char* const text : {"", "a", "Analysis"}) {
    const String string(text);
    EXPECT_EQ(string.Length(), static_cast<std::int32_t>(std::strlen(text)));
    EXPECT_EQ(string.Capacity(), string.Length() + 1);
    EXPECT_STREQ(string.CStr(), text);
    ExpectTerminated(string);
  }
}

TEST(StringTest, ViewMayHoldZeroBytes) {
  const std::string_view text("a\0b", 3);
  const String string(text);
  EXPECT_EQ(string.Length(), 3);
  EXPECT_EQ(string.View(), text);
  ExpectTerminated(string);
}

TEST(StringTest, NullTextIsAnInvalidArgument) {
  ExpectRaises<InvalidArgumentException>(
      "Invalid argument", [] { const String string(static_cast<const char*>(nullptr)); });
}

TEST(StringTest, TextOf2To31BytesIsAnIntegerOverflow) {
  constexpr std::size_t kLimit = std::size_t{1} << 31;
  const Testing::HugeText huge(kLimit);
  const Testing::AllocationFault counter(0);
  ExpectRaises<IntegerOverflowException>("Integer overflow",
                                         [&huge] { const String string(huge.View(kLimit)); });
  ExpectRaises<IntegerOverflowException>("Integer overflow", [&huge] {
    String string("a");
    string.Append(huge.View(kLimit - 1));
  });
  ExpectRaises<IntegerOverflowException>("Integer overflow", [&huge] {
    Vell::Concatenate(huge.View(kLimit / 2), huge.View(kLimit / 2));
  });
  EXPECT_EQ(counter.Count(), 1) << "only the \"a\" needs memory";
}

TEST(StringTest, CopyHasTheSameCapacityAndItsOwnBytes) {
  String original("abc");
  original.ResizeBuffer(10);
  const String copy = original;
  EXPECT_EQ(copy.Capacity(), 10);
  EXPECT_EQ(copy.View(), "abc");
  EXPECT_NE(static_cast<const void*>(copy.CStr()), original.CStr());
  original.Truncate(1);
  original.Append('x');
  EXPECT_EQ(copy.View(), "abc");
}

TEST(StringTest, AssignmentReplacesTheText) {
  const String source("a longer text");
  String target("b");
  target = source;
  EXPECT_EQ(target.View(), "a longer text");
  EXPECT_EQ(target.Capacity(), source.Capacity());
  EXPECT_NE(static_cast<const void*>(target.CStr()), source.CStr());
  target = String();
  EXPECT_EQ(target.View(), "");
}

TEST(StringTest, SelfAssignmentKeepsTheText) {
  String string("abc");
  const String& alias = string;
  string = alias;
  EXPECT_EQ(string.View(), "abc");
  ExpectTerminated(string);
}

TEST(StringTest, MovingHandsTheBufferOver) {
  String source("abc");
  const void* const buffer = source.CStr();
  String target = std::move(source);
  EXPECT_EQ(static_cast<const void*>(target.CStr()), buffer);
  EXPECT_EQ(target.View(), "abc");
  String assigned("to be dropped");
  assigned = std::move(target);
  EXPECT_EQ(assigned.View(), "abc");
}

TEST(StringReserveTest, ReplacesTheBufferByZeroBytes) {
  String string("abc");
  string.Reserve(5);
  EXPECT_EQ(string.Length(), 0);
  EXPECT_EQ(string.Capacity(), 5);
  const std::string_view buffer(string.CStr(), 5);
  EXPECT_EQ(buffer, std::string_view("\0\0\0\0\0", 5));
  string.Reserve(0);
  EXPECT_EQ(string.Capacity(), 0);
  EXPECT_EQ(string.View(), "");
}

TEST(StringReserveTest, NegativeSizeIsAnInvalidArgument) {
  ExpectRaises<InvalidArgumentException>("Invalid argument", [] { String().Reserve(-1); });
  ExpectRaises<InvalidArgumentException>("Invalid argument", [] { String("a").ResizeBuffer(-1); });
  ExpectRaises<InvalidArgumentException>("Invalid argument",
                                         [] { String("a").Reserve(-2147483647 - 1); });
}

TEST(StringResizeTest, KeepsTheBytesThatFitAndZeroFillsTheRest) {
  String string("abc");
  string.ResizeBuffer(8);
  EXPECT_EQ(string.Capacity(), 8);
  EXPECT_EQ(string.View(), "abc");
  EXPECT_EQ(std::string_view(string.CStr(), 8), std::string_view("abc\0\0\0\0\0", 8));
}

TEST(StringResizeTest, ShorterBufferStillEndsTheTextWithAZeroByte) {
  for (const std::int32_t capacity : {0, 1, 2, 3, 4}) {
    SCOPED_TRACE(capacity);
    String string("abc");
    string.ResizeBuffer(capacity);
    EXPECT_EQ(string.Capacity(), capacity);
    EXPECT_TRUE(std::string_view("abc").starts_with(string.View()));
    EXPECT_EQ(std::strlen(string.CStr()), static_cast<std::size_t>(string.Length()));
    if (capacity > 0) {
      ExpectTerminated(string);
    }
  }
}

TEST(StringAppendTest, ByteByByteTheBufferDoubles) {
  // Room for the zero byte after the text is needed too: 1 byte for nothing, 2 for one byte, ...
  String string;
  std::string expected;
  std::int32_t capacity = 0;
  for (int i = 0; i < 1000; ++i) {
    const char byte = static_cast<char>('a' + i % 26);
    string.Append(byte);
    expected += byte;
    if (string.Capacity() != capacity) {
      EXPECT_EQ(string.Capacity(), std::max(2 * capacity, i + 2)) << i;
      capacity = string.Capacity();
    }
    ASSERT_EQ(string.View(), expected);
    ExpectTerminated(string);
  }
  EXPECT_EQ(capacity, 1024);
}

TEST(StringAppendTest, GrowsToWhatIsNeededWhenDoublingIsNotEnough) {
  String string("ab");
  string.Append(std::string_view("0123456789"));
  EXPECT_EQ(string.View(), "ab0123456789");
  EXPECT_EQ(string.Capacity(), 13);
  string.Append(std::string_view("x"));
  EXPECT_EQ(string.Capacity(), 26);
}

TEST(StringAppendTest, NothingAppendedChangesNothing) {
  String string("ab");
  string.Append(std::string_view());
  EXPECT_EQ(string.View(), "ab");
  EXPECT_EQ(string.Capacity(), 3);
}

TEST(StringTest, ClearKeepsTheBuffer) {
  String string("abc");
  string.Clear();
  EXPECT_EQ(string.Length(), 0);
  EXPECT_STREQ(string.CStr(), "");
  EXPECT_EQ(string.Capacity(), 4);
  String().Clear();
}

TEST(StringTest, TruncateZeroesTheBytesCutOff) {
  String string("C:\\tools\\hovar");
  string.Truncate(8);
  EXPECT_EQ(string.View(), "C:\\tools");
  const char* const end = string.CStr() + string.Capacity();
  EXPECT_TRUE(std::all_of(string.CStr() + 8, end, [](char c) { return c == '\0'; }));
  string.Truncate(0);
  EXPECT_EQ(string.View(), "");
}

TEST(StringTest, FindGivesTheFirstAndTheLastPlace) {
  const String path("\\a\\b");
  EXPECT_EQ(path.FindFirst('\\'), 0);
  EXPECT_EQ(path.FindLast('\\'), 2);
  EXPECT_EQ(path.FindFirst('b'), 3);
  EXPECT_EQ(path.FindLast('b'), 3);
  EXPECT_EQ(path.FindFirst('/'), -1);
  EXPECT_EQ(path.FindLast('/'), -1);
  EXPECT_EQ(path.FindFirst('\0'), -1) << "the zero byte after the text does not belong to it";
}

TEST(StringTest, ComparisonTakesBytesAsUnsigned) {
  EXPECT_TRUE(String("\x7F").View() < String("\x80").View());
  EXPECT_TRUE(String("a").View() < String("\xFF").View());
  EXPECT_TRUE(String("Z").View() < String("a").View());
}

TEST(StringTest, ComparisonPutsAPrefixFirst) {
  EXPECT_TRUE(String("ab").View() < String("abc").View());
  EXPECT_TRUE(String().View() < String("a").View());
  EXPECT_TRUE(String("abc").View() == String("abc").View());
  EXPECT_FALSE(String("abc").View() == String("Abc").View());
}

TEST(TrimTest, RemovesWhitespaceAtBothEndsOfEveryText) {
  // '\v' and '\f' are white space elsewhere, but not here.
  Testing::ForAllTexts(std::string_view(" \t\r\nx\v", 6), 5, [](const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    const std::string expected =
        first == std::string::npos ? "" : text.substr(first, last - first + 1);
    String string{std::string_view(text)};
    string.Trim();
    ASSERT_EQ(string.View(), expected) << Quoted(text);
    ASSERT_EQ(std::strlen(string.CStr()), expected.size()) << Quoted(text);
  });
}

TEST(TrimTest, BlanksAndTabsAloneLeaveLengthZero) {
  String string(" \t \t\t  ");
  string.Trim();
  EXPECT_EQ(string.Length(), 0);
  EXPECT_STREQ(string.CStr(), "");
}

TEST(TrimTest, DefaultStringStaysEmpty) {
  String string;
  string.Trim();
  EXPECT_EQ(string.Length(), 0);
}

TEST(ConcatenateTest, HoldsBothTextsAndOneByteMore) {
  const String both = Vell::Concatenate(String("ab"), String("cde"));
  EXPECT_EQ(both.View(), "abcde");
  EXPECT_EQ(both.Capacity(), 6);
  ExpectTerminated(both);
}

TEST(ConcatenateTest, TwoEmptyTextsGiveAnEmptyOneOfCapacity1) {
  for (const String& both :
       {Vell::Concatenate(String(), String()), Vell::Concatenate(String(""), String("")),
        Vell::Concatenate(String("").View(), String())}) {
    EXPECT_EQ(both.View(), "");
    EXPECT_EQ(both.Capacity(), 1);
    ExpectTerminated(both);
  }
}

TEST(JoinPathTest, PutsABackslashBetweenPartsThatStayAsWritten) {
  struct Case {
    const char* folder;
    const char* name;
    const char* joined;
  };
  constexpr Case kCases[] = {
      {"out", "log.txt", "out\\log.txt"},     {"out/sub", "log.txt", "out/sub\\log.txt"},
      {"out\\", "log.txt", "out\\\\log.txt"}, {"out/", "/log.txt", "out/\\/log.txt"},
      {"", "log.txt", "\\log.txt"},           {"out", "", "out\\"},
      {" out ", " log ", " out \\ log "},
  };
  for (const Case& c : kCases) {
    const String joined = Vell::JoinPath(c.folder, c.name);
    EXPECT_EQ(joined.View(), c.joined);
    ExpectTerminated(joined);
  }
}

TEST(StringTest, FailingAllocationIsOutOfMemoryInEveryOperation) {
  Testing::ExpectOutOfMemoryAtEachAllocation([] {
    String string("text");
    String copy = string;
    copy.Append(std::string_view("and more"));
    string = copy;
    copy.Append('.');
    string.ResizeBuffer(100);
    copy.Reserve(50);
    const String both = Vell::Concatenate(string, copy);
    const String path = Vell::JoinPath(both, string);
  });
}

}  // namespace
