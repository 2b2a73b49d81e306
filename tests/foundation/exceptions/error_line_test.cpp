// Where an error line goes when the standard streams are exchanged, full or closed.

#include <gtest/gtest.h>

#include <string>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/platform/platform.h"
#include "foundation/io/standard_writers.h"
#include "foundation/io/text_sink.h"
#include "messages/error_texts.h"
#include "support/child_process.h"
#include "support/files.h"

namespace {

namespace E = Vell::Exceptions;

TEST(ErrorLineTest, ComesBehindEverythingWrittenOnStandardOutputBefore) {
  const Testing::ScratchFolder folder;
  const std::string file = folder.Write("both", "");
  const Testing::ProcessEnd end = Testing::RunInChild([&file] {
    Testing::ReplaceHandle(1, file);
    Testing::ReplaceHandle(2, 1);
    Vell::IO::StandardOutput().Write("no line end yet;");
    try {
      throw E::Exception(Messages::Pattern("then this"));
    } catch (const E::Exception&) {
    }
    return 0;
  });
  EXPECT_EQ(end, Testing::ProcessEnd{0});
  EXPECT_EQ(folder.Read("both"), "no line end yet;Error: then this\n");
}

TEST(ErrorLineDeathTest, StandardErrorOnAFullDiskEndsTheProcessWithStatus1) {
  const auto raise = [] {
    Testing::ReplaceHandle(2, "/dev/full");
    throw E::Exception(Messages::Pattern("nobody hears this"));
  };
  EXPECT_EXIT(raise(), testing::ExitedWithCode(1), "");
}

TEST(ErrorLineDeathTest, ClosedStandardErrorEndsTheProcessWithStatus1) {
  const auto raise = [] {
    Testing::CloseHandle(2);
    throw E::FileOpenException("nobody hears this");
  };
  EXPECT_EXIT(raise(), testing::ExitedWithCode(1), "");
}

/// Tells of each attempt to write to it, and fails.
class FailingSink final : public Vell::IO::TextSink {
 public:
  FailingSink() : TextSink(Use::kDrop) {}
  void Write(const void* /*buffer*/, std::size_t /*count*/) override {
    Vell::IO::Platform::WriteFile(Vell::IO::Platform::kStandardError, "attempt;", 8);
    throw E::IOException(Messages::kErrors.ioException);
  }
};

TEST(ErrorLineDeathTest, ErrorOfAnotherKindWhileALineIsWrittenEndsTheProcessAtOnce) {
  const auto raise = [] {
    Vell::IO::TextWriter output(Vell::MakeShared<FailingSink>());
    Vell::IO::TextWriter error(Vell::MakeShared<FailingSink>());
    const Vell::IO::StandardWritersRedirection redirection(output, error);
    throw E::FileOpenException("nobody hears this");
  };
  EXPECT_EXIT(raise(), testing::ExitedWithCode(1), "^attempt;$");
}

TEST(ErrorLineTest, UnwritableStandardOutputDoesNotHideTheLine) {
  const Testing::ScratchFolder folder;
  const std::string file = folder.Write("error", "");
  const Testing::ProcessEnd end = Testing::RunInChild([&file] {
    Testing::ReplaceHandle(1, "/dev/full");
    Testing::ReplaceHandle(2, file);
    Vell::IO::StandardOutput().Write("lost");
    try {
      throw E::Exception(Messages::Pattern("the cause"));
    } catch (const E::Exception&) {
      return 1;
    }
    return 0;
  });
  EXPECT_EQ(end, Testing::ProcessEnd{1});
  EXPECT_EQ(folder.Read("error"), "Error: the cause\n");
}

}  // namespace
