// Whole studies with the kernels limited to each vector width: every file must be the one that an
// independent implementation made, to the last byte.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>

#include "app/program.h"
#include "support/child_process.h"
#include "support/files.h"
#include "support/width_limit.h"

namespace {

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
  const Testing::ProcessEnd end = Testing::RunInChild([&] {
    std::filesystem::current_path(folder.Path());
    Testing::ReplaceHandle(0, "/dev/null");
    Testing::ReplaceHandle(1, "/dev/null");
    const char* const arguments[] = {"C:\\hovar\\hovar.exe", "batch.xml"};
    return Hovar::RunProgram(2, arguments);
  });
  EXPECT_EQ(end.exitStatus, 0);
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
