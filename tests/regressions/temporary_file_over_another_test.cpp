// Temporary files had names that anybody could foresee: what a link of such a name led to was
// emptied, two commands in one folder mixed their lines or failed, and what was written stayed when
// the command was interrupted.

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <map>
#include <thread>

#include "blackbox/launcher_reports.h"
#include "blackbox/watched_run.h"
#include "support/running_process.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

constexpr int kRounds = 25;

TEST(TemporaryFileTest, ALinkOfItsNameLeadsNowhere) {
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  struct Case {
    std::string link;
    std::vector<std::string> arguments;
    std::string result;
  };
  for (const Case& example :
       {Case{"r.json.part", {"--json", "r.json", "analysis.xml"}, "r.json"},
        Case{"r.json.output.part", {"--json", "r.json", "analysis.xml"}, "r.json"},
        Case{"out/analysis.log.output.part",
             {"--json", "/dev/null", "analysis.xml"},
             "out/fitted.csv"},
        Case{"out/chain-1/chain-1.xml.part", {"--chains", "1", "analysis.xml"}, "out/report.html"},
        Case{"out/report.html.part", {"--chains", "1", "analysis.xml"}, "out/report.html"},
        Case{"out/report.html.part", {"--report", "out"}, "out/report.html"}}) {
    SCOPED_TRACE(example.link);
    const TinyStudy study;
    study.Write("victim", "precious");
    const fs::path link = study.Path() / example.link;
    fs::create_directories(link.parent_path());
    fs::create_symlink(study.Path() / "victim", link);
    const ProcessResult result = RunLauncher(study, example.arguments, launcher);
    EXPECT_EQ(study.Read("victim"), "precious");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_TRUE(study.Has(example.result));
  }
}

/// Runs two commands at once and expects that both succeed and that the second's lines, and the
/// first's, are those of a run of its own.
void RunTwo(const TinyStudy& study, const std::vector<std::string>& first,
            const std::vector<std::string>& second, const std::string& launcher) {
  Process one(LauncherIn(study, first, launcher));
  Process two(LauncherIn(study, second, launcher));
  for (Process* process : {&one, &two}) {
    const ProcessResult result = process->Wait();
    EXPECT_EQ(result.exitStatus, 0) << "signal " << result.signal << "\n" << result.error;
    EXPECT_EQ(result.error, "");
  }
}

/// Files below a folder that a tool left and no definition or option names.
std::set<std::string> Unnamed(const ScratchFolder& folder) {
  std::set<std::string> names;
  for (const std::string& name : FilesBelow(folder)) {
    if (name.find(".part") != std::string::npos || name.find(".tmp") != std::string::npos) {
      names.insert(name);
    }
  }
  return names;
}

void ExpectAsAlone(const ProcessResult& result, const ProcessResult& alone) {
  EXPECT_EQ(WithoutSeconds(result.output), WithoutSeconds(alone.output));
  EXPECT_EQ(result.error, alone.error);
  EXPECT_EQ(result.exitStatus, alone.exitStatus);
}

TEST(TwoCommandsTest, RecordsOfOneNameAreWhole) {
  const TinyStudy study;
  study.Write("a.xml", WithValues(AnalysisText(), {{"Folder", "a"}}));
  study.Write("p.xml", WithValues(PredictionText(), {{"Folder", "p"}}));
  const ProcessResult aloneA = RunLauncher(study, {"a.xml"});
  const ProcessResult aloneP = RunLauncher(study, {"p.xml"});
  for (int round = 0; round < kRounds && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(round);
    Process a(LauncherIn(study, {"--json", "r.json", "a.xml"}));
    Process p(LauncherIn(study, {"--json", "r.json", "p.xml"}));
    ExpectAsAlone(a.Wait(), aloneA);
    ExpectAsAlone(p.Wait(), aloneP);
    const std::string record = study.Read("r.json");
    EXPECT_TRUE(record.starts_with("{\n") && record.ends_with("\n}\n")) << record;
    const bool isOfA = record.find("\"path\": \"a.xml\"") != std::string::npos;
    const bool isOfP = record.find("\"path\": \"p.xml\"") != std::string::npos;
    EXPECT_TRUE(isOfA != isOfP) << record;
    EXPECT_EQ(Unnamed(study), std::set<std::string>());
  }
}

TEST(TwoCommandsTest, ReportsOfOneNameAreWhole) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  study.Write("one/a.csv", std::string(3000000, 'a'));
  study.Write("two/b.csv", std::string(3000000, 'b'));
  const auto report = [](const char* folder) {
    return std::vector<std::string>{"--report", folder, "--output", "all.html"};
  };
  std::set<std::string> pages;
  for (const char* folder : {"one", "two"}) {
    EXPECT_EQ(RunLauncher(study, report(folder), launcher).exitStatus, 0);
    pages.insert(study.Read("all.html"));
  }
  for (int round = 0; round < kRounds && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(round);
    RunTwo(study, report("one"), report("two"), launcher);
    EXPECT_TRUE(pages.contains(study.Read("all.html")));
    EXPECT_EQ(Unnamed(study), std::set<std::string>());
  }
}

TEST(TwoCommandsTest, ChainsOfOneFolderDoNotDisturbEachOther) {
  const TinyStudy study;
  for (int round = 0; round < kRounds && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(round);
    fs::remove_all(study.Path() / "out");
    Process one(LauncherIn(study, {"--chains", "2", "--only", "1", "analysis.xml"}));
    Process two(LauncherIn(study, {"--chains", "2", "--only", "2", "analysis.xml"}));
    Process again(LauncherIn(study, {"--chains", "2", "--only", "2", "analysis.xml"}));
    for (Process* process : {&one, &two, &again}) {
      const ProcessResult result = process->Wait();
      EXPECT_EQ(result.exitStatus, 0) << result.error;
    }
    EXPECT_EQ(Unnamed(study), std::set<std::string>());
  }
}

/// All entries of a folder with their sizes.
std::map<std::string, std::uintmax_t> Entries(const fs::path& folder) {
  std::map<std::string, std::uintmax_t> entries;
  for (const auto& entry : fs::directory_iterator(folder)) {
    entries[entry.path().filename().string()] = entry.file_size();
  }
  return entries;
}

TEST_F(ReportTest, AnInterruptionLeavesNoTemporaryFile) {
  work_.Write("out/a.csv", "f");
  fs::resize_file(work_.Path() / "out/a.csv", std::uintmax_t{1} << 40);
  const auto before = Entries(work_.Path() / "out");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    SCOPED_TRACE(signal);
    Process process(LauncherIn(work_, {"--report", "out"}, launcher_));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (Entries(work_.Path() / "out") == before && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    process.Signal(signal);
    EXPECT_TRUE(process.EndsWithin(kTimeToEnd));
    EXPECT_EQ(Entries(work_.Path() / "out"), before);
    for (const auto& [name, size] : Entries(work_.Path() / "out")) {
      if (!before.contains(name)) {
        fs::remove(work_.Path() / "out" / name);
      }
    }
  }
}

}  // namespace
}  // namespace Testing
