#include "app/launcher/options.h"

#include <gtest/gtest.h>

namespace Hovar {
namespace {

using Arguments = std::vector<std::string_view>;

TEST(OptionsTest, OnlyKnownOptionsBeginACommandLineOfTheLauncher) {
  for (const char* option : {"--json", "--keep", "--progress", "--chains", "--jobs", "--only",
                             "--collect", "--report", "--output"}) {
    EXPECT_TRUE(IsLauncherOption(option)) << option;
  }
  for (const char* argument : {"", "-", "--", "--help", "--version", "--Keep", "--keep=1", "-k",
                               "keep", "a.xml", "--keepx"}) {
    EXPECT_FALSE(IsLauncherOption(argument)) << argument;
  }
}

TEST(OptionsTest, ARunWithItsOptionsInAnyOrder) {
  for (const Arguments& arguments :
       {Arguments{"--json", "r.json", "--keep", "--progress", "a.xml"},
        Arguments{"--keep", "a.xml", "--progress", "--json", "r.json"}}) {
    const std::optional<Options> options = ParseOptions(arguments);
    ASSERT_TRUE(options);
    EXPECT_EQ(options->task, Task::kRun);
    EXPECT_EQ(options->definition, "a.xml");
    EXPECT_EQ(options->recordFile, "r.json");
    EXPECT_TRUE(options->keepOutputs);
    EXPECT_TRUE(options->showProgress);
  }
}

TEST(OptionsTest, AfterTwoDashesEverythingIsAName) {
  const std::optional<Options> options = ParseOptions({"--keep", "--", "--json"});
  ASSERT_TRUE(options);
  EXPECT_EQ(options->definition, "--json");
  EXPECT_EQ(options->recordFile, "");
}

TEST(OptionsTest, Chains) {
  const std::optional<Options> options = ParseOptions({"--chains", "4", "a.xml", "--jobs", "2"});
  ASSERT_TRUE(options);
  EXPECT_EQ(options->task, Task::kChains);
  EXPECT_EQ(options->chainCount, 4);
  EXPECT_EQ(options->jobs, 2);
  EXPECT_EQ(options->onlyChain, 0);
  EXPECT_EQ(ParseOptions({"--chains", "9999", "a.xml", "--only", "9999"})->onlyChain, 9999);
  EXPECT_TRUE(ParseOptions({"--chains", "2", "a.xml", "--collect"})->collectOnly);
}

TEST(OptionsTest, Reports) {
  const std::optional<Options> options =
      ParseOptions({"--report", "one", "two", "--output", "page.html"});
  ASSERT_TRUE(options);
  EXPECT_EQ(options->task, Task::kReport);
  EXPECT_EQ(options->folders, (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(options->reportFile, "page.html");
}

TEST(OptionsTest, WrongCommandLinesAreRefusedWithTheReason) {
  const std::pair<Arguments, std::string> rows[] = {
      {{"--json"}, "--json needs a FILE"},
      {{"--json", "", "a.xml"}, "--json needs a FILE"},
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
