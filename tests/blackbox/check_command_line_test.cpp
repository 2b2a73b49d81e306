// `hovar --check` as a command: its arguments and its standard output.

#include <gtest/gtest.h>

#include "check_runs.h"

namespace Testing {
namespace {

TEST(CheckCommandLineTest, AWrongCommandLineIsAnError) {
  const TinyStudy study;
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                    {"--strict"},
                                                    {"--data"},
                                                    {"--all", "prediction.xml"},
                                                    {"prediction.xml", "analysis.xml"}}) {
    const ProcessResult result = RunProcess(CheckIn(study, arguments));
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.error.starts_with("hovar: ")) << result.error;
    EXPECT_EQ(result.exitStatus, 1);
  }
}

TEST(CheckCommandLineTest, OutputThatCannotBeWrittenIsAnError) {
  const TinyStudy study;
  for (const Output output : {Output::kFull, Output::kClosed, Output::kBroken}) {
    Command command = CheckIn(study, {"prediction.xml"});
    command.output = output;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    EXPECT_EQ(result.error, "hovar: cannot write to standard output\n");
  }
}

}  // namespace
}  // namespace Testing
