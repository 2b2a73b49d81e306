// Which files dispatching leaves open, counted where the system shows them as a folder.

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

#include "app/dispatch.h"
#include "support/files.h"

namespace {

TEST(DispatchTest, TheDefinitionIsClosedWhenTheRunnerIsBuilt) {
  const Testing::ScratchFolder folder;
  const Vell::String definition(
      folder.Write("d.xml", "<Batch><Simulations></Simulations></Batch>"));
  const auto openFiles = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  const auto before = openFiles();
  const Hovar::RunnerHandle runner = Hovar::DispatchDefinition(definition);
  EXPECT_EQ(openFiles(), before);
}

}  // namespace
