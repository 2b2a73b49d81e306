// Paths that the command puts together had backslashes on systems with slashes too, so that a shell could
// not find what was pasted from a message.

#include <gtest/gtest.h>

#include "blackbox/check_runs.h"
#include "blackbox/launcher_runs.h"

namespace Testing {
namespace {

TEST(RegressionTest, AFileOfAFindingCanBePastedIntoAShell) {
  const TinyStudy study;
  study.Write("out/analysis.log", "");
  const std::string output = CheckDefinition(study, {"analysis.xml"}).output;
  EXPECT_NE(output.find("\"out/analysis.log\""), std::string::npos) << output;
  EXPECT_EQ(output.find('\\'), std::string::npos) << output;
}

TEST(RegressionTest, ThePathOfAReportCanBePastedIntoAShell) {
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  const TinyStudy study;
  study.Write("analysis.xml", ChainedAnalysisText(5, 60));
  const ProcessResult result = RunLauncher(study, {"--chains", "2", "analysis.xml"}, launcher);
  EXPECT_TRUE(result.output.ends_with("\nout/report.html\n")) << result.output;
}

}  // namespace
}  // namespace Testing
