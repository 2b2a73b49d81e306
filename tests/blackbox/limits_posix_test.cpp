// Limits that a shell sets (ulimit), and runs that nobody could wait for, which are killed.

#include <gtest/gtest.h>

#include "limited_runs.h"
#include "progress.h"
#include "runs.h"
#include "support/running_process.h"
#include "tiny_study.h"

namespace Testing {
namespace {

const std::string kAnalysisProgress = std::string(kTinyReading) + kTinyElimination + kTinyFits;

TEST(IntegerLimitTest, TheLargestNumberOfPassesIsBegun) {
  for (const std::string& text : {PredictionText(), ValidationText()}) {
    const TinyStudy study;
    study.Write("data.csv", Replaced(kTinyData, "d,B,1,0", "d,B,1,"));
    study.Write("d.xml", WithValues(text, {{"Burnin", "2147483647"}, {"Steps", "2147483647"}}));
    Process process(HovarIn(study, {"d.xml"}));
    EXPECT_TRUE(process.WaitForOutput("\n0/2147483647\n1/2147483647\n2/2147483647\n"));
  }
}

TEST(MemoryLimitTest, AChainThatNoMemoryHoldsIsRefusedBeforeItsFolderIsMade) {
  for (const char* phase : {"Burnin", "Steps"}) {
    const TinyStudy study;
    study.Write("d.xml", WithValues(AnalysisText(), {{phase, "2147483647"}}));
    const ProcessResult result = RunWithLittleMemory(study, "d.xml");
    EXPECT_TRUE(result.error.ends_with("Error: Out of memory\n")) << result.error;
    EXPECT_TRUE(kIsSanitized || result.error.starts_with("Error: ")) << result.error;
    EXPECT_EQ(result.output, kBanner + kAnalysisProgress + kPrompt);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_FALSE(study.Has("out/mcmc"));
    EXPECT_FALSE(study.Has("out/fitted.csv"));
  }
}

TEST(MemoryLimitTest, ABatchThatNamesItselfEndsWithTheStack) {
  const TinyStudy study;
  study.Write("batch.xml", BatchText({"other.xml", "prediction.xml"}));
  study.Write("other.xml", BatchText({"batch.xml"}));
  study.Write("self.xml", BatchText({"self.xml"}));
  for (const char* definition : {"self.xml", "batch.xml"}) {
    ExpectError(RunLimited(study, "ulimit -s 1024", definition), "Out of memory");
  }
  EXPECT_FALSE(study.Has("out"));
}

TEST(OpenFileLimitTest, ABatchOfMoreRunsThanFilesCanBeOpenNamesTheFileThatCannot) {
  const TinyStudy study;
  study.Write("batch.xml", BatchText(std::vector<std::string>(40, "prediction.xml")));
  const ProcessResult result = RunLimited(study, "ulimit -n 30", "batch.xml");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_TRUE(result.error.starts_with("Error: File \"")) << result.error;
  EXPECT_TRUE(result.error.ends_with("\" can not be opened\n")) << result.error;
  EXPECT_TRUE(result.output.ends_with(kPrompt));
}

}  // namespace
}  // namespace Testing
