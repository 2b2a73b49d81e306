// The end of a program in which an error could not be raised or handled: exit status 1, never an
// abort.

#include <gtest/gtest.h>

#include <exception>
#include <new>
#include <string>

#include "app/program.h"
#include "foundation/io/platform/platform.h"
#include "support/child_process.h"
#include "support/files.h"

namespace {

using Testing::ProcessEnd;

enum class Fault { kNone, kUnhandled };

/// A process in which a program has run and that ends as a fault in it would end it.
ProcessEnd EndOf(Fault fault, const std::string& output, const std::string& error) {
  const Testing::ScratchFolder folder;
  const std::string definition =
      folder.Write("batch.xml", "<Batch><Simulations></Simulations></Batch>");
  return Testing::RunInChild([&] {
    Vell::IO::Platform::DetachStandardInput();
    const char* const arguments[] = {"C:\\hovar", definition.c_str(), nullptr};
    if (Hovar::RunProgram(2, arguments) != 0) {
      return 99;
    }
    Testing::ReplaceHandle(1, output);
    Testing::ReplaceHandle(2, error);
    if (fault == Fault::kNone) {
      std::terminate();  // as the runtime where nothing could be thrown
    }
    try {
      throw std::bad_alloc();
    } catch (...) {
      std::terminate();
    }
    return 98;
  });
}

TEST(ProgramEndingTest, WithoutMemoryForAnExceptionIsThatOfOutOfMemory) {
  const Testing::ScratchFolder folder;
  EXPECT_EQ(EndOf(Fault::kNone, folder.Write("output", ""), folder.Write("error", "")),
            ProcessEnd{1});
  EXPECT_EQ(folder.Read("output"), "Press any button to continue . . .\n");
  EXPECT_EQ(folder.Read("error"), "Error: Out of memory\n");
}

TEST(ProgramEndingTest, OfAnExceptionThatNobodyHandlesHasThePrompt) {
  const Testing::ScratchFolder folder;
  EXPECT_EQ(EndOf(Fault::kUnhandled, folder.Write("output", ""), folder.Write("error", "")),
            ProcessEnd{1});
  EXPECT_EQ(folder.Read("output"), "Press any button to continue . . .\n");
}

TEST(ProgramEndingTest, IsNoAbortWhereNothingCanBeWritten) {
  for (const Fault fault : {Fault::kNone, Fault::kUnhandled}) {
    const Testing::ScratchFolder folder;
    const std::string file = folder.Write("file", "");
    EXPECT_EQ(EndOf(fault, "/dev/full", file), ProcessEnd{1});
    EXPECT_EQ(EndOf(fault, file, "/dev/full"), ProcessEnd{1});
    EXPECT_EQ(EndOf(fault, "/dev/full", "/dev/full"), ProcessEnd{1});
  }
}

}  // namespace
