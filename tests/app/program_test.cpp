#include "app/program.h"

#include <gtest/gtest.h>

#include "foundation/io/platform/platform.h"
#include "support/files.h"
#include "support/outcome.h"
#include "support/raised.h"

namespace {

constexpr char kBanner[] = "Target platform: 64-bit\n";
constexpr char kPrompt[] = "Press any button to continue . . .\n";

TEST(StartupDirectoryTest, IsWhatStandsBeforeTheLastBackslash) {
  struct Row {
    const char* path;
    const char* directory;
  };
  for (const Row& row : {Row{"C:\\hovar\\hovar.exe", "C:\\hovar"}, Row{"C:\\hovar.exe", "C:"},
                         Row{"\\\\server\\x", "\\\\server"}, Row{"a\\", "a"}, Row{"\\\\x", "\\"},
                         Row{"/usr/lib\\hovar", "/usr/lib"}, Row{" \t a b \r\n\\x", "a b"},
                         Row{"a\\ \\x", "a\\"}, Row{"a\\b/c", "a"}}) {
    SCOPED_TRACE(row.path);
    EXPECT_EQ(Hovar::StartupDirectoryOf(Vell::String(row.path)).View(), row.directory);
  }
}

TEST(StartupDirectoryTest, ThePathMustHoldABackslash) {
  for (const char* path : {"", "hovar", "./hovar", "/usr/bin/hovar", "C:/hovar/hovar.exe", " "}) {
    SCOPED_TRACE(path);
    EXPECT_EQ(Testing::Observe([&] { Hovar::StartupDirectoryOf(Vell::String(path)); }).Failure(),
              "InvalidArgumentException: Invalid argument");
  }
}

TEST(StartupDirectoryTest, SomethingMustStandBeforeTheBackslash) {
  for (const char* path : {"\\", "\\hovar", " \\hovar", " \t\r\n\\hovar"}) {
    SCOPED_TRACE(path);
    EXPECT_EQ(Testing::Observe([&] { Hovar::StartupDirectoryOf(Vell::String(path)); }).Failure(),
              "Exception: Cannot determine startup directory");
  }
}

class ProgramTest : public testing::Test {
 protected:
  // After an error the program waits for a key.
  ProgramTest() { Vell::IO::Platform::DetachStandardInput(); }

  static void Expect(int count, const char* const* arguments, int status, const std::string& output,
                     const std::string& error) {
    Testing::OutputCapture capture;
    const int result = Hovar::RunProgram(count, arguments);
    EXPECT_EQ(capture.TakeOutput(), output);
    EXPECT_EQ(capture.TakeError(), error);
    EXPECT_EQ(result, status);
  }
};

TEST_F(ProgramTest, ArgumentsThatAreNullAreInvalid) {
  const std::string output = std::string(kBanner) + kPrompt;
  const char* const withoutProgram[] = {nullptr, "d.xml", nullptr};
  Expect(2, withoutProgram, 1, output, "Error: Invalid argument\n");
  const char* const withoutDefinition[] = {"C:\\hovar", nullptr, nullptr};
  Expect(2, withoutDefinition, 1, output, "Error: Invalid argument\n");
  const char* const nothing[] = {nullptr};
  Expect(0, nothing, 1, output, "Error: Wrong number of parameters in command line\n");
}

TEST_F(ProgramTest, AnEmptyBatchSucceedsAndTheStartupDirectoryIsKept) {
  const Testing::ScratchFolder folder;
  const std::string definition =
      folder.Write("batch.xml", "<Batch><Simulations></Simulations></Batch>");
  const char* const arguments[] = {"D:\\programs\\hovar.exe", definition.c_str(), nullptr};
  Expect(2, arguments, 0, kBanner, "");
  EXPECT_EQ(Hovar::StartupDirectory().View(), "D:\\programs");
}

}  // namespace
