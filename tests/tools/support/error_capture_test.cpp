#include "tools/support/error_capture.h"

#include <gtest/gtest.h>

#include "foundation/io/log.h"
#include "foundation/xml/xml_reader.h"
#include "support/allocation_fault.h"
#include "support/raised.h"
#include "support/streams.h"

namespace {

using Hovar::ErrorOf;
using Hovar::MismatchIn;

TEST(CheckReadingTest, AnErrorIsAResultAndNothingIsShown) {
  Testing::OutputCapture capture;
  EXPECT_EQ(ErrorOf([] {
              Vell::IO::StandardOutput().WriteLine("progress");
              Vell::IO::Log().WriteLine("counts");
              throw Vell::Exceptions::Exception(Messages::Pattern("a fault"));
            }),
            "a fault");
  EXPECT_EQ(ErrorOf([] { Vell::IO::StandardOutput().WriteLine("progress"); }), std::nullopt);
  EXPECT_EQ(capture.TakeOutput(), "");
  EXPECT_EQ(capture.TakeError(), "");
}

TEST(CheckReadingTest, ReadersWithinReaders) {
  EXPECT_EQ(ErrorOf([] {
              EXPECT_EQ(
                  ErrorOf([] { throw Vell::Exceptions::Exception(Messages::Pattern("inner")); }),
                  "inner");
              throw Vell::Exceptions::Exception(Messages::Pattern("outer"));
            }),
            "outer");
}

TEST(CheckReadingTest, LackOfMemoryIsNoFaultOfAFile) {
  Testing::OutputCapture capture;
  bool isRaised = false;
  try {
    ErrorOf(
        [] { throw Vell::Exceptions::OutOfMemoryException(Messages::Pattern("Out of memory")); });
  } catch (const Vell::Exceptions::OutOfMemoryException&) {
    isRaised = true;
  }
  EXPECT_TRUE(isRaised);
  EXPECT_EQ(capture.TakeError(), "");
}

TEST(CheckReadingTest, AMismatchIsTakenApart) {
  const auto mismatch = MismatchIn(
      "Invalid input in file \"a \"b\".xml\": expected \"Data\", current \"Da\"a\"", "a \"b\".xml");
  ASSERT_TRUE(mismatch.has_value());
  EXPECT_EQ(mismatch->expected, "Data");
  EXPECT_EQ(mismatch->current, "Da\"a");
  EXPECT_FALSE(MismatchIn("Invalid input", "a.xml").has_value());
  EXPECT_FALSE(MismatchIn("", "").has_value());
}

TEST(CheckReadingTest, TheReadersOwnMismatchesAreUnderstood) {
  for (const char* text : {"<Date>", "\"", "<Data a=\"b\">"}) {
    const Testing::InputStream stream(text);
    const auto error = ErrorOf([&] { Vell::XmlReader(stream.Handle()).ReadStartTag("Data"); });
    ASSERT_TRUE(error.has_value());
    EXPECT_TRUE(MismatchIn(*error, stream.Path()).has_value()) << *error;
  }
  const Testing::InputStream stream("<a b='c'>");
  const auto error = ErrorOf([&] { Vell::XmlReader(stream.Handle()).ReadTag(); });
  EXPECT_EQ(MismatchIn(error.value(), stream.Path())->expected, "\"");
  EXPECT_EQ(MismatchIn(error.value(), stream.Path())->current, "'");
}

}  // namespace
