// Failed writes that the system reports by a signal too: into a pipe without a reader,
// and beyond the limit for the size of files (`ulimit -f`). They end like any other failed write.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "check_runs.h"
#include "launcher_runs.h"
#include "support/running_process.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

constexpr char kBroken[] = "Error: IO Exception\n";

/// A named pipe that a run writes to and a test does not read.
class UnreadPipe {
 public:
  explicit UnreadPipe(const std::string& path) {
    EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    // Open before the process is, so that neither waits for the other.
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_GE(descriptor_, 0);
  }
  ~UnreadPipe() { Close(); }
  UnreadPipe(const UnreadPipe&) = delete;
  UnreadPipe& operator=(const UnreadPipe&) = delete;

  /// Lets the run write something, of which there is more to come, and goes.
  void Break() {
    pollfd entry{descriptor_, POLLIN, 0};
    EXPECT_EQ(::poll(&entry, 1, 60'000), 1);
    Close();
  }

 private:
  void Close() {
    if (descriptor_ >= 0) {
      ::close(descriptor_);
      descriptor_ = -1;
    }
  }

  int descriptor_ = -1;
};

/// A data file with so many records that their predictions, and a warning for each of them, are
/// more than a pipe holds.
std::string ManyRecords() {
  std::string data = "Key,Hospital,Y,POA\n";
  for (int i = 0; i < 3000; ++i) {
    data += "k,A,0,1\n";
  }
  return data;
}

/// An analysis that keeps so many draws that they are more than a pipe holds.
std::string ManyDraws() { return ChainedAnalysisText(0, 20'000); }

TEST(BrokenPipeTest, StandardOutputThatIsNoLongerReadEndsTheRun) {
  const TinyStudy study;
  study.Write("long.xml", LongAnalysisText());
  for (const Command& command : {HovarIn(study, {"long.xml"}), LauncherIn(study, {"long.xml"})}) {
    Process process(command);
    EXPECT_TRUE(process.WaitForOutput("\nBurnin: 1 "));
    process.CloseOutput();
    const ProcessResult result = process.Wait();
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    EXPECT_EQ(result.error, std::string(kBroken) + kBroken);  // the prompt fails too
    EXPECT_FALSE(study.Has("out/fitted.csv"));
  }
}

/// A run that writes more into one of its files than a pipe holds.
struct LongWriting {
  const char* file;
  std::string definition;
  std::string data;
  const char* last;  // on standard output before that
};

void ExpectErrorWhenUnread(const LongWriting& row, bool isLaunched) {
  const TinyStudy study;
  study.Write("d.xml", row.definition);
  study.Write("data.csv", row.data);
  study.Write("out/mcmc/other", "");
  UnreadPipe pipe(study.File(std::string("out/") + row.file));
  Process process(isLaunched ? LauncherIn(study, {"d.xml"}) : HovarIn(study, {"d.xml"}));
  EXPECT_TRUE(process.WaitForOutput(row.last));
  pipe.Break();
  const ProcessResult result = process.Wait();
  EXPECT_EQ(result.error, kBroken);
  EXPECT_TRUE(result.output.ends_with(kPrompt));
  EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
}

TEST(BrokenPipeTest, ALogOrResultFileThatIsNoLongerReadEndsTheRun) {
  const std::string many = ManyRecords();
  for (const LongWriting& row :
       {LongWriting{"prediction.log", PredictionText(), many, "\nNumber of hospitals: 1\n"},
        LongWriting{"predicted.csv", PredictionText(), many,
                    "\nCalculating individual predictions\n"},
        LongWriting{"mcmc/Chain.csv", ManyDraws(), kTinyData, "\nMcmc: 20000 "}}) {
    SCOPED_TRACE(row.file);
    ExpectErrorWhenUnread(row, false);
    ExpectErrorWhenUnread(row, true);
  }
}

TEST(BrokenPipeTest, TheBarIsNoPartOfARun) {
  const TinyStudy study;
  for (const Output error : {Output::kBroken, Output::kFull}) {
    fs::remove_all(study.Path() / "out");
    Command command = LauncherIn(study, {"--progress", "analysis.xml"});
    command.error = error;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 0) << "signal " << result.signal;
    EXPECT_TRUE(study.Has("out/fitted.csv"));
  }
}

/// The outputs of a run with their contents.
std::map<std::string, std::string> OutputsOf(const std::string& definition) {
  const TinyStudy study;
  study.Write("d.xml", definition);
  EXPECT_EQ(RunHovar(study, {"d.xml"}).exitStatus, 0);
  std::map<std::string, std::string> outputs;
  for (const std::string& file : FilesBelow(study)) {
    if (file.starts_with("out/")) {
      outputs[file] = study.Read(file);
    }
  }
  return outputs;
}

void ExpectErrorAtLimit(const std::string& definition,
                        const std::map<std::string, std::string>& outputs, const std::string& file,
                        std::int64_t limit, bool isLaunched) {
  SCOPED_TRACE(file + " " + std::to_string(limit));
  const TinyStudy study;
  study.Write("d.xml", definition);
  study.Write("out/mcmc/other", "");
  for (const auto& [other, content] : outputs) {
    if (other != file) {  // leads nowhere, so that the limit does not concern it
      fs::create_symlink("/dev/null", study.Path() / other);
    }
  }
  Command command = isLaunched ? LauncherIn(study, {"d.xml"}) : HovarIn(study, {"d.xml"});
  command.fileSizeLimit = limit;
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(result.error, kBroken);
  EXPECT_TRUE(result.output.ends_with(kPrompt)) << result.output;
  EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  // The system takes what has room before it refuses the rest.
  EXPECT_EQ(study.Read(file), outputs.at(file).substr(0, static_cast<std::size_t>(limit)));
}

TEST(FileSizeLimitTest, OfEachOutputFileIsAnError) {
  struct Row {
    std::string definition;
    std::size_t outputCount;
  };
  for (const Row& row :
       {Row{ChainedAnalysisText(2, 4), 4}, Row{PredictionText(), 3}, Row{ValidationText(), 2}}) {
    const std::map<std::string, std::string> outputs = OutputsOf(row.definition);
    EXPECT_EQ(outputs.size(), row.outputCount);
    for (const auto& [file, content] : outputs) {
      for (const std::int64_t limit : {0, 10}) {
        ExpectErrorAtLimit(row.definition, outputs, file, limit, false);
        ExpectErrorAtLimit(row.definition, outputs, file, limit, true);
      }
    }
  }
}

/// A command with a file as its standard output.
Command IntoFile(const TinyStudy& study, const Command& command) {
  Command shell;
  shell.program = "/bin/sh";
  shell.folder = study.Path();
  shell.arguments = {"sh", "-c", "exec \"$@\" > stdout.txt", "sh"};
  shell.arguments.insert(shell.arguments.end(), command.arguments.begin(), command.arguments.end());
  return shell;
}

TEST(FileSizeLimitTest, OfStandardOutputIsAnError) {
  const TinyStudy study;
  const ScratchFolder links;
  for (const Command& command :
       {HovarByLink(links, study, {"prediction.xml"}), LauncherIn(study, {"prediction.xml"})}) {
    Command limited = IntoFile(study, command);
    limited.fileSizeLimit = 30;
    const ProcessResult result = RunProcess(limited);
    EXPECT_EQ(result.error, std::string(kBroken) + kBroken);  // the prompt fails too
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    EXPECT_EQ(study.Read("stdout.txt"), (kBanner + std::string(kTinyReading)).substr(0, 30));
  }
}

TEST(FileSizeLimitTest, OfTheOutputOfAToolIsAnError) {
  const TinyStudy study;
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"--help"}, {"--check", "prediction.xml"}}) {
    SCOPED_TRACE(arguments[0]);
    Command command = IntoFile(study, LauncherIn(study, arguments));
    command.fileSizeLimit = 5;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.error, "hovar: cannot write to standard output\n");
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  }
}

TEST(FileSizeLimitTest, OfARunRecordIsAnError) {
  const TinyStudy study;
  EXPECT_EQ(RunLauncher(study, {"--json", "run.json", "prediction.xml"}).exitStatus, 0);
  const std::string record = study.Read("run.json");
  Command command = LauncherIn(study, {"--json", "run.json", "prediction.xml"});
  command.fileSizeLimit = static_cast<std::int64_t>(record.size()) - 1;
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(
      result.error,
      "hovar: the run is complete; its record could not be written: run.json: it would exceed "
      "the limit on the size of files\n");
  EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  EXPECT_EQ(study.Read("run.json"), record) << "an earlier record stays";
}

TEST(FileSizeLimitTest, OfAReportIsAnError) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  study.Write("out/a.csv", "f");
  Command command = LauncherIn(study, {"--report", "out"}, launcher);
  command.fileSizeLimit = 10;
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error, "hovar: cannot write out/report.html\n");
  EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  EXPECT_FALSE(HasTemporaryFile(study));
}

TEST(FileSizeLimitTest, OfAChainIsAnError) {
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  struct Row {
    std::int64_t limit;
    std::string line;
  };
  // The definition of a chain has more than 1000 bytes, the lines of its run more than 2000.
  for (const Row& row :
       {Row{500, "hovar: cannot write " + Shown("out\\chain-1\\chain-1.xml") + "\n"},
        Row{2000, "hovar: chain-1 failed; its output is in " +
                      Shown("out\\chain-1\\analysis.log.output.txt") + "\n"}}) {
    SCOPED_TRACE(row.limit);
    const TinyStudy study;
    study.Write("analysis.xml", ChainedAnalysisText(40, 40));
    Command command = LauncherIn(study, {"--chains", "2", "analysis.xml", "--jobs", "1"}, launcher);
    command.fileSizeLimit = row.limit;
    const ProcessResult result = RunProcess(command);
    ExpectHolds(result.error, row.line);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  }
}

}  // namespace
}  // namespace Testing
