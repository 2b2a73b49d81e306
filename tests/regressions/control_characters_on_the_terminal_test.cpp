// Names and error lines with control characters went to the terminal as they were, where they can
// change its colours, its title, and what was shown before.

#include <gtest/gtest.h>

#include "blackbox/control_characters.h"
#include "blackbox/launcher_reports.h"

namespace Testing {
namespace {

/// A name with C0 and C1 control characters, a line feed and one that turns the order of letters.
constexpr char kEvil[] = "e\x1b[2J\x07\n#forged\x7f\xc2\x9b\xe2\x80\xae.csv";

void ExpectPlain(const ProcessResult& result) {
  for (const std::string& text : {result.output, result.error}) {
    EXPECT_EQ(ControlCharactersIn(text), "") << text;
    EXPECT_EQ(text.find("\n#forged"), std::string::npos) << text;
  }
}

/// An analysis that names an input or output of this name.
std::string AnalysisWith(const std::string& element) {
  return WithValues(AnalysisText(), {{element, kEvil}});
}

TEST(ControlCharacterTest, InTheErrorLineOfAWatchedProgram) {
  const TinyStudy study;
  study.Write("d.xml", AnalysisWith("Data"));
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--progress", "d.xml"},
                                                    {"--chains", "1", "d.xml"},
                                                    {"--chains", "1", "--only", "1", "d.xml"},
                                                    {"--check", "d.xml"},
                                                    {"--check", "--data", "d.xml"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProcessResult result = RunLauncher(study, arguments);
    EXPECT_EQ(result.exitStatus, 1);
    ExpectPlain(result);
  }
}

TEST(ControlCharacterTest, InNamesOfOutputs) {
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  for (const char* element : {"RegressionCoefficients", "McmcSubFolder", "LogFile", "Folder"}) {
    const TinyStudy study;
    study.Write("d.xml", AnalysisWith(element));
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--progress", "d.xml"},
          {"--keep", "--progress", "--json", "r.json", "d.xml"},
          {"--chains", "1", "d.xml"},
          {"--chains", "2", "--collect", "d.xml"},
          {"--check", "d.xml"}}) {
      SCOPED_TRACE(element + testing::PrintToString(arguments));
      ExpectPlain(RunLauncher(study, arguments, launcher));
    }
  }
}

TEST(ControlCharacterTest, InTheNameOfTheDefinition) {
  const TinyStudy study;
  study.Write(std::string("there") + kEvil, Replaced(AnalysisText(), "Vector", "Randomize"));
  study.Write(std::string("stands") + kEvil,
              WithValues(AnalysisText(), {{"Element", "2422767615"}}));
  for (const std::string name : {"absent", "there", "stands"}) {
    for (const char* tool : {"--progress", "--check", "--chains=1", "--keep"}) {
      SCOPED_TRACE(name + tool);
      if (tool != std::string("--keep")) {  // the program itself answers then
        ExpectPlain(RunLauncher(study, {tool, name + kEvil}));
      }
    }
  }
}

TEST(ControlCharacterTest, InTheNamesOfRecordsAndReports) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  study.Write("out/a.csv", "f");
  const std::string evil = kEvil;
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--json", "none/" + evil, "analysis.xml"},
        {"--json", "./analysis.xml", "analysis.xml"},
        {"--report", evil},
        {"--report", "out", "--output", evil},
        {"--report", "out", "--output", "none/" + evil}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    ExpectPlain(RunLauncher(study, arguments, launcher));
  }
  study.Write("folder" + evil + "/" + evil, "f");
  ExpectPlain(RunLauncher(study, {"--report", "folder" + evil}, launcher));
}

TEST(ControlCharacterTest, InOptions) {
  const TinyStudy study;
  const std::string evil = kEvil;
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--keep", "--" + evil, "analysis.xml"},
        {"--chains", evil, "analysis.xml"},
        {"--check", "--strict", evil, evil},
        {"--json=" + evil + "/x", "analysis.xml"}}) {
    const ProcessResult result = RunLauncher(study, arguments);
    EXPECT_EQ(result.exitStatus, 1);
    ExpectPlain(result);
  }
}

}  // namespace
}  // namespace Testing
