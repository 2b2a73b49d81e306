// Whether a definition from a pipe was read depended on where the blocks of its writer ended. `--check`
// waited for somebody to write.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "blackbox/check_runs.h"

namespace Testing {
namespace {

TEST(RegressionTest, ADefinitionThatComesAtOnceIsAnErrorToo) {
  const TinyStudy study;
  Command command = HovarIn(study, {"/dev/stdin"});
  command.input = Input::kText;
  command.inputText = PredictionText();
  ExpectError(RunProcess(command), "IO Exception");
  EXPECT_FALSE(study.Has("out"));
}

TEST(RegressionTest, TheCheckDoesNotWaitForAWriter) {
  const TinyStudy study;
  EXPECT_EQ(::mkfifo(study.File("d.xml").c_str(), 0600), 0);
  EXPECT_TRUE(CheckDefinition(study).output.starts_with("d.xml:1:1: error: ")) << "or it waited";
}

}  // namespace
}  // namespace Testing
