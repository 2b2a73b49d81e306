// Inputs without positions: named pipes, and those that a shell makes. The program moves back in
// what it reads, so that they never serve, however much of them comes at once.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "check_runs.h"
#include "launcher_runs.h"
#include "support/running_process.h"

namespace Testing {
namespace {

/// A named pipe that a run reads. It never ends, so that nobody waits for its writer.
class FedPipe {
 public:
  explicit FedPipe(const std::string& path) {
    EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    descriptor_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_GE(descriptor_, 0);
  }
  ~FedPipe() { ::close(descriptor_); }
  FedPipe(const FedPipe&) = delete;
  FedPipe& operator=(const FedPipe&) = delete;

  void Write(std::string_view bytes) const {
    EXPECT_EQ(::write(descriptor_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }

 private:
  int descriptor_ = -1;
};

/// The ways in which a definition can begin.
std::vector<std::string> Beginnings() {
  return {"", "\n  ", "<?xml version=\"1.0\"?>\n", "<!-- a comment -->"};
}

TEST(PipeDefinitionTest, ThatComesAtOnceIsAnError) {
  for (const std::string& beginning : Beginnings()) {
    SCOPED_TRACE(beginning);
    for (const bool isLaunched : {false, true}) {
      const TinyStudy study;
      const FedPipe pipe(study.File("d.xml"));
      pipe.Write(beginning + PredictionText());
      ExpectError(isLaunched ? RunLauncher(study, {"d.xml"}) : RunHovar(study, {"d.xml"}),
                  "IO Exception");
      EXPECT_FALSE(study.Has("out"));
    }
  }
}

TEST(PipeDefinitionTest, ThatComesInPiecesIsAnError) {
  using std::chrono::milliseconds;
  for (const std::string& beginning : Beginnings()) {
    SCOPED_TRACE(beginning);
    const std::string text = beginning + PredictionText();
    for (const std::size_t first : {std::size_t{0}, text.find('<'), text.find('<') + 1}) {
      const TinyStudy study;
      const FedPipe pipe(study.File("d.xml"));
      pipe.Write(text.substr(0, first));
      Process process(HovarIn(study, {"d.xml"}));
      EXPECT_TRUE(process.WaitForOutput(kBanner));
      // The bytes so far, up to the first tag, are read by themselves.
      process.EndsWithin(milliseconds(50));
      for (const char byte : text.substr(first)) {
        pipe.Write({&byte, 1});
      }
      ExpectError(process.Wait(), "IO Exception");
      EXPECT_FALSE(study.Has("out"));
    }
  }
}

TEST(PipeDefinitionTest, OfABatchIsAnError) {
  const TinyStudy study;
  const FedPipe list(study.File("list.xml"));
  list.Write(BatchText({"prediction.xml"}));
  ExpectError(RunHovar(study, {"list.xml"}), "IO Exception");
  const FedPipe listed(study.File("listed.xml"));
  listed.Write(PredictionText());
  study.Write("d.xml", BatchText({"prediction.xml", "listed.xml"}));
  ExpectError(RunHovar(study, {"d.xml"}), "IO Exception", kPredictionProgress);
}

/// A command that gets a definition as a shell substitutes a process.
Command Substituted(const TinyStudy& study, const Command& command) {
  Command shell;
  shell.program = "/bin/sh";
  shell.folder = study.Path();
  shell.arguments = {"sh", "-c", "cat prediction.xml | { exec 3<&0 </dev/null; exec \"$@\"; }",
                     "sh"};
  shell.arguments.insert(shell.arguments.end(), command.arguments.begin(), command.arguments.end());
  return shell;
}

TEST(PipeDefinitionTest, OfAProcessIsAnError) {
  const TinyStudy study;
  const ScratchFolder links;
  for (const Command& command :
       {HovarByLink(links, study, {"/dev/fd/3"}), LauncherIn(study, {"/dev/fd/3"})}) {
    ExpectError(RunProcess(Substituted(study, command)), "IO Exception");
  }
  EXPECT_FALSE(study.Has("out"));
}

TEST(PipeDefinitionTest, IsFoundByTheCheck) {
  const std::string finding =
      " is no regular file. Name one: the program moves back in it while it reads, which a pipe "
      "does not allow.\n";
  const TinyStudy study;
  const ProcessResult check = RunProcess(Substituted(study, CheckIn(study, {"/dev/fd/3"})));
  EXPECT_EQ(check.exitStatus, 1);
  EXPECT_EQ(check.output, "/dev/fd/3:1:1: error: The definition file \"/dev/fd/3\"" + finding +
                              "1 error, 0 warnings\n");
  {
    const TinyStudy alone;
    const FedPipe pipe(alone.File("d.xml"));
    pipe.Write(PredictionText());
    EXPECT_EQ(ExpectAgreement(alone), "d.xml:1:1: error: The definition file \"d.xml\"" + finding +
                                          "1 error, 0 warnings\n");
  }
  const FedPipe listed(study.File("listed.xml"));
  listed.Write(PredictionText());
  study.Write("d.xml", BatchText({"listed.xml"}));
  EXPECT_EQ(ExpectAgreement(study), "d.xml:3:13: error: The definition file \"listed.xml\"" +
                                        finding + "1 error, 0 warnings\n");
}

// Nobody writes into the pipe: whoever opened it would wait.
TEST(PipeDefinitionTest, IsNotOpenedByTheCheck) {
  const TinyStudy study;
  EXPECT_EQ(::mkfifo(study.File("d.xml").c_str(), 0600), 0);
  EXPECT_TRUE(HasError(CheckDefinition(study).output));
}

// The launcher empties standard input, for the check as for the run.
TEST(PipeDefinitionTest, AFileAsStandardInputOfTheLauncherIsNoDefinition) {
  const TinyStudy study;
  Command run = LauncherIn(study, {"/dev/stdin"});
  run.input = Input::kFile;
  run.inputText = PredictionText();
  EXPECT_EQ(RunProcess(run).exitStatus, 1);
  Command check = CheckIn(study, {"/dev/stdin"});
  check.input = Input::kFile;
  check.inputText = PredictionText();
  const ProcessResult result = RunProcess(check);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_TRUE(HasError(result.output)) << result.output;
}

TEST(PipeDefinitionTest, IsAnErrorOfTheTools) {
  const TinyStudy study;
  {
    const FedPipe pipe(study.File("d.xml"));
    pipe.Write(PredictionText());
    ExpectError(RunLauncher(study, {"--json", "run.json", "d.xml"}), "IO Exception");
    const std::string record = study.Read("run.json");
    ExpectHolds(record, "\"exitStatus\": 1");
    ExpectHolds(record, "\"error\": \"Error: IO Exception\"");
    ExpectHolds(record, "\"kind\": null");
  }
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--progress", "e.xml"}, {"--chains", "2", "e.xml"}}) {
    SCOPED_TRACE(arguments[0]);
    const TinyStudy other;
    const FedPipe pipe(other.File("e.xml"));
    pipe.Write(AnalysisText());
    const ProcessResult result = RunLauncher(other, arguments);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, arguments[0] == "--chains"
                                ? "hovar: e.xml is a named pipe; a regular file is required\n"
                                : "Error: IO Exception\n"
                                  "hovar: not done, 0 warnings; output in e.xml.output.txt\n");
    EXPECT_FALSE(other.Has("out"));
  }
}

// These are read twice.
TEST(PipeInputTest, OfDataIsAnErrorWhereItIsReadAgain) {
  const TinyStudy study;
  std::filesystem::remove(study.Path() / "data.csv");
  std::filesystem::create_symlink("/dev/stdin", study.Path() / "data.csv");
  Command command = HovarIn(study, {"analysis.xml"});
  command.input = Input::kText;
  command.inputText = kTinyData;
  ExpectError(RunProcess(command), "IO Exception", "Reading data file...\n");
}

TEST(PipeInputTest, OfCoefficientsOrPredictionsIsAnErrorWhereItIsReadAgain) {
  for (const char* file : {"coefficients.csv", "individual.csv"}) {
    SCOPED_TRACE(file);
    const TinyStudy study;
    Command command = HovarIn(study, {"validation.xml"});
    command.input = Input::kText;
    command.inputText = study.Read(file);
    std::filesystem::remove(study.Path() / file);
    std::filesystem::create_symlink("/dev/stdin", study.Path() / file);
    ExpectError(RunProcess(command), "IO Exception", kTinyReading);
  }
}

}  // namespace
}  // namespace Testing
