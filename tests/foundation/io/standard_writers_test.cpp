#include "foundation/io/standard_writers.h"

#include <gtest/gtest.h>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/text_sink.h"
#include "support/allocation_fault.h"
#include "support/raised.h"

namespace {

using Testing::OutputCapture;
using Vell::IO::StandardError;
using Vell::IO::StandardOutput;

TEST(StandardWritersTest, WriteToTheirStreams) {
  OutputCapture capture;
  StandardOutput().WriteLine("Target platform: ", 64, '-', 0.5);
  StandardError().WriteLine("Error: none");
  EXPECT_EQ(capture.TakeOutput(), "Target platform: 64-0.5\n");
  EXPECT_EQ(capture.TakeError(), "Error: none\n");
}

TEST(StandardWritersTest, TheirStreamsHaveNoNameAndTheModeWriteText) {
  EXPECT_EQ(StandardOutput().Target().Name(), "");
  EXPECT_EQ(StandardError().Target().Name(), "");
  EXPECT_EQ(StandardOutput().Target().OpenMode(), 258u);
  EXPECT_EQ(StandardError().Target().OpenMode(), 258u);
}

TEST(StandardWritersTest, NeedNoMemory) {
  OutputCapture capture;
  {
    const Testing::AllocationFault fault(1, Testing::AllocationFault::Extent::kFromThenOn);
    StandardOutput().WriteLine("text ", 1, ' ', 2.5);
    const auto handle = Vell::IO::StandardOutputHandle();
    handle->WriteLine("more");
    StandardError().WriteLine("error");
    EXPECT_FALSE(fault.HasFired());
  }
  EXPECT_EQ(capture.TakeOutput(), "text 1 2.5\nmore\n");
}

TEST(StandardWritersTest, HandlesComeAndGoWithoutClosingTheWriter) {
  OutputCapture capture;
  for (int i = 0; i < 3; ++i) {
    auto handle = Vell::IO::StandardOutputHandle();
    auto copy = handle;
    EXPECT_EQ(&*copy, &StandardOutput());
  }
  StandardOutput().WriteLine("open");
  EXPECT_EQ(capture.TakeOutput(), "open\n");
}

TEST(StandardWritersTest, OtherWritersMayStandInForAScope) {
  using Vell::IO::TextSink;
  using Vell::IO::TextWriter;
  const auto outer = Vell::MakeShared<TextSink>(TextSink::Use::kKeep);
  const auto inner = Vell::MakeShared<TextSink>(TextSink::Use::kKeep);
  TextWriter outerWriter(outer);
  TextWriter innerWriter(inner);
  const auto raise = [] {
    try {
      throw Vell::Exceptions::Exception(Messages::Pattern("fault"));
    } catch (const Vell::Exceptions::Exception&) {
    }
  };
  OutputCapture capture;
  {
    const Vell::IO::StandardWritersRedirection redirection(outerWriter, outerWriter);
    StandardOutput().WriteLine("one");
    {
      const Vell::IO::StandardWritersRedirection nested(innerWriter, outerWriter);
      StandardOutput().WriteLine("two");
      raise();
    }
    StandardOutput().WriteLine("three");
  }
  StandardOutput().WriteLine("four");
  raise();
  EXPECT_EQ(outer->Text(), "one\nError: fault\nthree\n");
  EXPECT_EQ(inner->Text(), "two\n");
  EXPECT_EQ(capture.TakeOutput(), "four\n");
  EXPECT_EQ(capture.TakeError(), "Error: fault\n");
}

}  // namespace
