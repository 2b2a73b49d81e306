#include "foundation/exceptions/exceptions.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "foundation/io/standard_writers.h"
#include "foundation/string.h"
#include "support/memory_stream.h"
#include "support/raised.h"

namespace {

namespace E = Vell::Exceptions;
using Testing::ExpectRaises;
using Testing::MemoryStream;
using Testing::OutputCapture;
using Vell::String;

template <typename Base, typename Derived>
constexpr bool kIsDirectBase =
    std::is_base_of_v<Base, Derived> && !std::is_base_of_v<Derived, Base> &&
    std::is_convertible_v<Derived*, Base*>;

static_assert(kIsDirectBase<E::Exception, E::InvalidArgumentException>);
static_assert(kIsDirectBase<E::Exception, E::InvalidInputException>);
static_assert(kIsDirectBase<E::Exception, E::OutOfMemoryException>);
static_assert(kIsDirectBase<E::Exception, E::InvalidFormatException>);
static_assert(kIsDirectBase<E::Exception, E::InvalidCsvFormatException>);
static_assert(kIsDirectBase<E::Exception, E::NumericException>);
static_assert(kIsDirectBase<E::NumericException, E::IntegerOverflowException>);
static_assert(kIsDirectBase<E::Exception, E::IOException>);
static_assert(kIsDirectBase<E::IOException, E::EndOfStreamException>);
static_assert(kIsDirectBase<E::IOException, E::FileOpenException>);
static_assert(kIsDirectBase<E::IOException, E::MatchException<char>>);
static_assert(kIsDirectBase<E::IOException, E::MatchException<String>>);
static_assert(!std::is_base_of_v<E::InvalidFormatException, E::InvalidCsvFormatException>);
static_assert(!std::is_base_of_v<E::InvalidInputException, E::InvalidArgumentException>);
static_assert(!std::is_base_of_v<E::IOException, E::InvalidFormatException>);
static_assert(!std::is_base_of_v<E::NumericException, E::OutOfMemoryException>);
static_assert(!std::is_base_of_v<E::EndOfStreamException, E::MatchException<char>>);

// No data: an exception is its class and nothing else.
static_assert(std::is_empty_v<E::Exception> && std::is_empty_v<E::NumericException> &&
              std::is_empty_v<E::IntegerOverflowException> &&
              std::is_empty_v<E::FileOpenException> && std::is_empty_v<E::MatchException<char>> &&
              std::is_empty_v<E::MatchException<String>>);
static_assert(!std::is_polymorphic_v<E::Exception> && !std::is_polymorphic_v<E::IOException>);

template <typename T>
class MessageTest : public testing::Test {};

using ClassesWithMessage =
    testing::Types<E::Exception, E::InvalidArgumentException, E::InvalidInputException,
                   E::OutOfMemoryException, E::InvalidFormatException, E::InvalidCsvFormatException,
                   E::NumericException, E::IntegerOverflowException, E::IOException,
                   E::EndOfStreamException>;
TYPED_TEST_SUITE(MessageTest, ClassesWithMessage);

TYPED_TEST(MessageTest, IsOneLineOnStandardErrorAndNothingOnStandardOutput) {
  OutputCapture capture;
  EXPECT_THROW(throw TypeParam(Messages::Pattern("Unexpected end of stream")), TypeParam);
  EXPECT_EQ(capture.TakeError(), "Error: Unexpected end of stream\n");
  EXPECT_EQ(capture.TakeOutput(), "");
}

TYPED_TEST(MessageTest, NullPrintsTheStartOfTheLineAlone) {
  ExpectRaises<TypeParam>("", [] { throw TypeParam(Messages::Pattern(nullptr)); });
}

TYPED_TEST(MessageTest, IsPrintedOnceHoweverOftenTheObjectIsCopiedAndCaught) {
  OutputCapture capture;
  try {
    try {
      throw TypeParam(Messages::Pattern("once"));
    } catch (const E::Exception&) {
      throw;
    }
  } catch (const TypeParam& raised) {
    const TypeParam copy = raised;
    static_cast<void>(copy);
  }
  EXPECT_EQ(capture.TakeError(), "Error: once\n");
}

TEST(ExceptionsTest, MessagesAreNotFormats) {
  ExpectRaises<E::Exception>("100 %d %s %n",
                             [] { throw E::Exception(Messages::Pattern("100 %d %s %n")); });
}

TEST(ExceptionsTest, HandlerForStreamErrorsCatchesAllFourDerivedClasses) {
  const MemoryStream stream;
  ExpectRaises<E::IOException>("e", [] { throw E::EndOfStreamException(Messages::Pattern("e")); });
  ExpectRaises<E::IOException>("File \"f\" can not be opened",
                               [] { throw E::FileOpenException("f"); });
  ExpectRaises<E::IOException>("Invalid input in file \"\": expected \"a\", current \"b\"",
                               [&stream] { throw E::MatchException<char>('a', 'b', stream); });
  ExpectRaises<E::IOException>(
      "Invalid input in file \"\": expected \"ab\", current \"b\"",
      [&stream] { throw E::MatchException<String>(String("ab"), String("b"), stream); });
}

TEST(ExceptionsTest, HandlerForFormatErrorsDoesNotCatchCsvFormatErrors) {
  OutputCapture capture;
  bool isCaughtAsFormat = false;
  try {
    throw E::InvalidCsvFormatException(Messages::Pattern("Invalid CSV format"));
  } catch (const E::InvalidFormatException&) {
    isCaughtAsFormat = true;
  } catch (const E::Exception&) {
  }
  EXPECT_FALSE(isCaughtAsFormat);
}

TEST(FileOpenExceptionTest, NamesThePathAsItWasWritten) {
  ExpectRaises<E::FileOpenException>("File \"C:\\no where/%s.csv\" can not be opened",
                                     [] { throw E::FileOpenException("C:\\no where/%s.csv"); });
}

TEST(FileOpenExceptionTest, NullPathPrintsAsNothing) {
  ExpectRaises<E::FileOpenException>("File \"\" can not be opened",
                                     [] { throw E::FileOpenException(nullptr); });
}

TEST(MatchExceptionTest, CharacterLineNamesTheFileWhoseReaderFailed) {
  const MemoryStream stream("", MemoryStream::kWhole, "in put\\definition.xml");
  ExpectRaises<E::MatchException<char>>(
      "Invalid input in file \"in put\\definition.xml\": expected \"<\", current \"\"\"",
      [&stream] { throw E::MatchException<char>('<', '"', stream); });
}

TEST(MatchExceptionTest, CharactersThatCannotBePrintedStandAsTheyAre) {
  const MemoryStream stream;
  ExpectRaises<E::MatchException<char>>(
      std::string("Invalid input in file \"\": expected \">\", current \"") + '\0' + '"',
      [&stream] { throw E::MatchException<char>('>', '\0', stream); });
  ExpectRaises<E::MatchException<char>>(
      "Invalid input in file \"\": expected \">\", current \"\n\"",
      [&stream] { throw E::MatchException<char>('>', '\n', stream); });
}

TEST(MatchExceptionTest, NameLineShowsBothNames) {
  const MemoryStream stream("", MemoryStream::kWhole, "a.xml");
  ExpectRaises<E::MatchException<String>>(
      "Invalid input in file \"a.xml\": expected \"Analysis\", current \"analysis\"", [&stream] {
        throw E::MatchException<String>(String("Analysis"), String("analysis"), stream);
      });
}

TEST(MatchExceptionTest, NamesWithoutBufferShowAsNothing) {
  const MemoryStream stream;
  ExpectRaises<E::MatchException<String>>(
      "Invalid input in file \"\": expected \"\", current \"\"",
      [&stream] { throw E::MatchException<String>(String(), String(), stream); });
}

}  // namespace
