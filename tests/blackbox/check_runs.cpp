#include "check_runs.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace Testing {

namespace fs = std::filesystem;

namespace {

/// Everything below a folder: the files with their contents, and the folders.
std::map<std::string, std::string> Snapshot(const ScratchFolder& folder) {
  std::map<std::string, std::string> entries;
  for (const auto& entry : fs::recursive_directory_iterator(folder.Path())) {
    entries[entry.path().string()] =
        entry.is_regular_file() ? ReadFile(entry.path()) : std::string("no file");
  }
  return entries;
}

}  // namespace

Command CheckIn(const ScratchFolder& folder, const std::vector<std::string>& arguments) {
  Command command;
  command.program = HOVAR_LAUNCHER;
  command.folder = folder.Path();
  command.arguments = {HOVAR_LAUNCHER, "--check"};
  command.arguments.insert(command.arguments.end(), arguments.begin(), arguments.end());
  return command;
}

ProcessResult CheckDefinition(const ScratchFolder& folder,
                              const std::vector<std::string>& arguments) {
  const std::map<std::string, std::string> before = Snapshot(folder);
  ProcessResult result = RunProcess(CheckIn(folder, arguments));
  EXPECT_EQ(Snapshot(folder), before);
  EXPECT_EQ(result.error, "");
  return result;
}

std::string ExpectAgreement(const ScratchFolder& folder) {
  const ProcessResult check = CheckDefinition(folder);
  const ProcessResult run = RunHovar(folder, {"d.xml"});
  EXPECT_EQ(check.exitStatus, run.exitStatus) << check.output << "the program:\n"
                                              << run.output << run.error;
  return check.output;
}

Command HovarByLink(const ScratchFolder& links, const ScratchFolder& folder,
                    const std::vector<std::string>& arguments) {
  const std::string link = links.File("C:\\hovar");
  fs::create_symlink(HOVAR_PROGRAM, link);
  Command command = HovarIn(folder, arguments);
  command.program = link;
  command.arguments[0] = link;
  return command;
}

bool HasError(const std::string& output) { return output.find(": error: ") != std::string::npos; }

void ExpectRows(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what + "\n" + row.definition);
    const TinyStudy study;
    study.Write("d.xml", row.definition);
    for (const auto& [name, content] : row.files) {
      study.Write(name, content);
    }
    const std::string output = ExpectAgreement(study);
    EXPECT_EQ(HasError(output), !row.error.empty()) << output;
    const bool isWhole = row.error.find(": error: ") != std::string::npos;
    const std::string expected = row.error + (row.error.empty() ? ""
                                              : isWhole         ? "\n"
                                                                : ": error: ");
    EXPECT_TRUE(("\n" + output).find("\n" + expected) != std::string::npos) << output;
  }
}

Row Changed(const std::string& text, const std::string& from, const std::string& to,
            const std::string& error) {
  return {from + " -> " + to, Replaced(text, from, to), {}, error};
}

Row Data(const std::string& what, const std::string& indicators, const std::string& data,
         const std::string& error) {
  return {what,
          Replaced(PredictionText(), "Indicators>1<", "Indicators>" + indicators + "<"),
          {{"data.csv", data},
           {"coefficients.csv", std::string(kCoefficientHeader) + kModelRow +
                                    "X,Z,0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n"}},
          error};
}

Row Fit(const std::string& what, const std::string& records, const std::string& error) {
  Row row{what, AnalysisText(), {{"data.csv", kHeader + records}}, error};
  row.definition = Replaced(row.definition, "<PriorPrecision>0<", "<PriorPrecision>1<");
  return row;
}

std::string WithChain(const std::string& definition, const char* thinning, const char* burnin,
                      const char* steps) {
  std::string text =
      Replaced(definition, "<Thinning>1<", "<Thinning>" + std::string(thinning) + "<");
  text = Replaced(text, "<Burnin>0<", "<Burnin>" + std::string(burnin) + "<");
  return Replaced(text, "<Steps>0<", "<Steps>" + std::string(steps) + "<");
}

std::string QuietAnalysis() { return WithChain(AnalysisText(), "1", "2", "4"); }

void WriteFiles(const TinyStudy& study, const Warning& row) {
  study.Write("d.xml", row.definition);
  for (const auto& [name, content] : row.files) {
    study.Write(name, content);
  }
}

void ExpectWarnings(const std::vector<Warning>& rows) {
  for (const Warning& row : rows) {
    SCOPED_TRACE(row.definition);
    const TinyStudy study;
    WriteFiles(study, row);
    const ProcessResult check = CheckDefinition(study);
    EXPECT_EQ(check.exitStatus, 0);
    EXPECT_TRUE(check.output.starts_with(row.place + ": warning: ")) << check.output;
    EXPECT_NE(check.output.find(row.words), std::string::npos) << check.output;
    EXPECT_TRUE(check.output.ends_with("\n0 errors, 1 warning\n")) << check.output;
    const ProcessResult strict = CheckDefinition(study, {"--strict", "d.xml"});
    EXPECT_EQ(strict.exitStatus, 1);
    EXPECT_EQ(strict.output, check.output);
    EXPECT_EQ(RunHovar(study, {"d.xml"}).exitStatus, 0);
  }
}

Warning Surprising(const std::string& from, const std::string& to, const std::string& place,
                   const std::string& words) {
  return {Replaced(QuietAnalysis(), from, to), {}, place, words};
}

Warning Records(const std::string& records, const std::string& place, const std::string& words) {
  const Row row = Data("", "1", kHeader + records, "");
  auto files = row.files;
  return {row.definition, files, place, words};
}

}  // namespace Testing
