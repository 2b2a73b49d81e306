// Whole studies with the kernels limited to each vector width: every file must be the one that an
// independent implementation made, to the last byte.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>

#include "app/program.h"
#include "foundation/io/platform/platform.h"
#include "support/files.h"
#include "support/raised.h"
#include "support/width_limit.h"

namespace {

/// Runs the program with this folder as the current one; its output is not looked at.
int RunIn(const std::filesystem::path& folder, const char* definition) {
  const Testing::OutputCapture capture;
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder);
  Vell::IO::Platform::DetachStandardInput();  // after an error the program waits for a key
  const char* const arguments[] = {"C:\\hovar\\hovar.exe", definition};
  const int status = Hovar::RunProgram(2, arguments);
  std::filesystem::current_path(before);
  return status;
}

class VectorWidthTest : public testing::TestWithParam<std::tuple<std::string, Vell::VectorWidth>> {
};

TEST_P(VectorWidthTest, TheBatchWritesTheExpectedFiles) {
  const auto& [study, width] = GetParam();
  const Testing::WidthLimit limit(width);
  if (Vell::BestVectorWidth() != width) {
    GTEST_SKIP() << "this processor lacks the instructions";
  }
  const std::filesystem::path source = Testing::ReferenceFile(study);
  const Testing::ScratchFolder folder;
  for (const auto& entry : std::filesystem::directory_iterator(source)) {
    if (entry.is_regular_file()) {
      std::filesystem::copy(entry.path(), folder.Path());
    }
  }
  EXPECT_EQ(RunIn(folder.Path(), "batch.xml"), 0);
  for (const char* name : {"coefficients.csv", "individual.csv", "hospital.csv", "cstatistics.csv",
                           "Chain.csv", "Summary.csv"}) {
    const bool isChain = name[0] == 'C' || name[0] == 'S';
    EXPECT_EQ(folder.Read((isChain ? "out/mcmc/" : "out/") + std::string(name)),
              Testing::ReadFile(source / "expected" / name))
        << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Studies, VectorWidthTest,
                         testing::Combine(testing::Values("study_plain", "study_gee"),
                                          testing::Values(Vell::VectorWidth::kPortable,
                                                          Vell::VectorWidth::kAvx2,
                                                          Vell::VectorWidth::kAvx512)));

}  // namespace
