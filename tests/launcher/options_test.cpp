#include "launcher/options.h"

#include <gtest/gtest.h>

namespace Hovar {
namespace {

using Arguments = std::vector<std::string_view>;

/// The settings that a command line gives this tool; a fresh record, and a failure, for another
/// one.
template <typename Settings>
Settings Parsed(const Arguments& arguments) {
  const std::optional<Task> task = ParseOptions(arguments);
  const bool isOfTool = task.has_value() && std::holds_alternative<Settings>(*task);
  EXPECT_TRUE(isOfTool);
  return isOfTool ? std::get<Settings>(*task) : Settings();
}

TEST(OptionsTest, OnlyKnownOptionsBeginACommandLineOfTheLauncher) {
  for (const char* option :
       {"--json", "--keep", "--progress", "--chains", "--jobs", "--only", "--collect", "--report",
        "--output", "--json=r.json", "--json=", "--keep=1"}) {
    EXPECT_TRUE(IsLauncherOption(option)) << option;
  }
  for (const char* argument : {"", "-", "--", "--help", "--version", "--Keep", "-k", "keep",
                               "a.xml", "--keepx", "--jsonx=r.json", "=--json"}) {
    EXPECT_FALSE(IsLauncherOption(argument)) << argument;
  }
}

TEST(OptionsTest, ARunWithItsOptionsInAnyOrder) {
  for (const Arguments& arguments :
       {Arguments{"--json", "r.json", "--keep", "--progress", "a.xml"},
        Arguments{"--keep", "a.xml", "--progress", "--json", "r.json"}}) {
    const RunSettings run = Parsed<RunSettings>(arguments);
    EXPECT_EQ(run.definition, "a.xml");
    EXPECT_EQ(run.recordFile, "r.json");
    EXPECT_TRUE(run.keepOutputs);
    EXPECT_TRUE(run.showProgress);
  }
}

TEST(OptionsTest, AValueMayFollowAnEqualsSign) {
  const auto run = Parsed<RunSettings>({"--json=a=b.json", "--keep", "a.xml"});
  EXPECT_EQ(run.recordFile, "a=b.json");
  EXPECT_EQ(run.definition, "a.xml");
  EXPECT_TRUE(run.keepOutputs);
  EXPECT_EQ(Parsed<RunSettings>({"--json=-x", "a.xml"}).recordFile, "-x") << "no doubt there";
  EXPECT_EQ(Parsed<ReportSettings>({"--report", "out", "--output=p.html"}).reportFile, "p.html");
  const auto chains = Parsed<ChainSettings>({"--chains=4", "a.xml", "--jobs=2"});
  EXPECT_EQ(chains.chainCount, 4);
  EXPECT_EQ(chains.jobs, 2);
}

TEST(OptionsTest, AfterTwoDashesEverythingIsAName) {
  const auto run = Parsed<RunSettings>({"--keep", "--", "--json"});
  EXPECT_EQ(run.definition, "--json");
  EXPECT_EQ(run.recordFile, "");
}

TEST(OptionsTest, Chains) {
  const auto chains = Parsed<ChainSettings>({"--chains", "4", "a.xml", "--jobs", "2"});
  EXPECT_EQ(chains.definition, "a.xml");
  EXPECT_EQ(chains.chainCount, 4);
  EXPECT_EQ(chains.jobs, 2);
  EXPECT_EQ(chains.onlyChain, 0);
  EXPECT_EQ(Parsed<ChainSettings>({"--chains", "9999", "a.xml", "--only", "9999"}).onlyChain, 9999);
  EXPECT_TRUE(Parsed<ChainSettings>({"--chains", "2", "a.xml", "--collect"}).collectOnly);
}

TEST(OptionsTest, Checks) {
  const auto check = Parsed<CheckSettings>({"--check", "a.xml"});
  EXPECT_EQ(check.definition, "a.xml");
  EXPECT_FALSE(check.isStrict);
  EXPECT_EQ(check.describe, Describe::kNothing);
  EXPECT_TRUE(Parsed<CheckSettings>({"--check", "--strict", "a.xml"}).isStrict);
  EXPECT_EQ(Parsed<CheckSettings>({"--check", "--data", "a.xml"}).describe, Describe::kData);
}

TEST(OptionsTest, Reports) {
  const auto report = Parsed<ReportSettings>({"--report", "one", "two", "--output", "page.html"});
  EXPECT_EQ(report.folders, (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(report.reportFile, "page.html");
}

TEST(OptionsTest, WrongCommandLinesAreRefusedWithTheReason) {
  const std::pair<Arguments, std::string> rows[] = {
      {{"--json"}, "--json needs a FILE"},
      {{"--json", "", "a.xml"}, "--json needs a FILE"},
      {{"--json=", "a.xml"}, "--json needs a FILE"},
      {{"--json", "--keep", "a.xml"},
       "--json needs a FILE, and --keep looks like an option; write ./--keep if it is a name"},
      {{"--report", "out", "--output", "-x"},
       "--output needs a FILE, and -x looks like an option; write ./-x if it is a name"},
      {{"--keep=yes", "a.xml"}, "--keep takes no value"},
      {{"--json=a", "--json=b", "a.xml"}, "--json is given twice"},
      {{"--chains", "--jobs", "2", "a.xml"}, "--chains needs a number from 1 to 9999"},
      {{"--chains="}, "--chains needs a N"},
      {{"--keep", "--quiet=1", "a.xml"}, "there is no option --quiet"},
      {{"--json", "r.json"}, "the DEFINITION is missing"},
      {{"--keep", "a.xml", "b.xml"}, "more than one DEFINITION is given"},
      {{"--keep", "--keep", "a.xml"}, "--keep is given twice"},
      {{"--keep", "--quiet", "a.xml"}, "there is no option --quiet"},
      {{"--chains", "a.xml"}, "--chains needs a number from 1 to 9999"},
      {{"--chains", "0", "a.xml"}, "--chains needs a number from 1 to 9999"},
      {{"--chains", "10000", "a.xml"}, "--chains needs a number from 1 to 9999"},
      {{"--chains", "2x", "a.xml"}, "--chains needs a number from 1 to 9999"},
      {{"--chains", "99999999999", "a.xml"}, "--chains needs a number from 1 to 9999"},
      {{"--chains", "2", "--only", "3", "a.xml"},
       "--only needs a number from 1 to the number of chains"},
      {{"--chains", "2", "--only", "1", "--jobs", "2", "a.xml"},
       "--only does not go with --jobs or --collect"},
      {{"--chains", "2", "--collect", "--jobs", "2", "a.xml"}, "--collect does not go with --jobs"},
      {{"--chains", "2", "--keep", "a.xml"}, "--keep does not go with --chains"},
      {{"--jobs", "2", "a.xml"}, "--jobs does not go with a single run"},
      {{"--report"}, "--report needs a FOLDER"},
      {{"--report", "out", "--json", "r"}, "--json does not go with --report"},
      {{"--output", "x", "a.xml"}, "--output does not go with a single run"},
  };
  for (const auto& [arguments, reason] : rows) {
    testing::internal::CaptureStderr();
    const bool isParsed = ParseOptions(arguments).has_value();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "hovar: " + reason + "\nhovar: see hovar --help\n");
    EXPECT_FALSE(isParsed);
  }
}

}  // namespace
}  // namespace Hovar
