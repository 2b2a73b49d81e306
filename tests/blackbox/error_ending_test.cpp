// The end after an error: the prompt, one key, exit status 1.

#include <gtest/gtest.h>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

TEST(ErrorEndingTest, OneByteOrTheEndOfInputServesAsAKey) {
  const ScratchFolder folder;
  struct Row {
    Input input;
    const char* text;
  };
  for (const Row& row :
       {Row{Input::kNull, ""}, Row{Input::kClosed, ""}, Row{Input::kText, ""},
        Row{Input::kText, "x"}, Row{Input::kText, "more than one"}, Row{Input::kFile, ""},
        Row{Input::kFile, "x\n"}, Row{Input::kOpenPipe, "x"}}) {
    SCOPED_TRACE(static_cast<int>(row.input));
    ExpectError(RunProcess(FailingRun(folder, row.input, row.text)), CannotOpen("none.xml"));
  }
}

TEST(ErrorEndingTest, BannerErrorAndPromptStandInTheirOrderOnOnePipe) {
  const TinyStudy study;
  std::filesystem::remove(study.Path() / "individual.csv");
  Command command = HovarIn(study, {"validation.xml"});
  command.error = Output::kWithStandard;
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(result.output, kBanner + std::string(kTinyReading) +
                               "Error: " + CannotOpen("individual.csv") + "\n" + kPrompt);
}

}  // namespace
}  // namespace Testing
