// Where an error line goes when the standard streams are exchanged, full or closed.

#include <gtest/gtest.h>

#include <string>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/standard_writers.h"
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
      throw E::Exception("then this");
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
    throw E::Exception("nobody hears this");
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

TEST(ErrorLineTest, UnwritableStandardOutputDoesNotHideTheLine) {
  const Testing::ScratchFolder folder;
  const std::string file = folder.Write("error", "");
  const Testing::ProcessEnd end = Testing::RunInChild([&file] {
    Testing::ReplaceHandle(1, "/dev/full");
    Testing::ReplaceHandle(2, file);
    Vell::IO::StandardOutput().Write("lost");
    try {
      throw E::Exception("the cause");
    } catch (const E::Exception&) {
      return 1;
    }
    return 0;
  });
  EXPECT_EQ(end, Testing::ProcessEnd{1});
  EXPECT_EQ(folder.Read("error"), "Error: the cause\n");
}

}  // namespace
