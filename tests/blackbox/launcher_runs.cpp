#include "launcher_runs.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

namespace Testing {

namespace fs = std::filesystem;

Command LauncherIn(const ScratchFolder& folder, const std::vector<std::string>& arguments,
                   const std::string& launcher) {
  Command command;
  command.program = std::u8string(launcher.begin(), launcher.end());
  command.folder = folder.Path();
  command.arguments = {launcher};
  command.arguments.insert(command.arguments.end(), arguments.begin(), arguments.end());
  return command;
}

ProcessResult RunLauncher(const ScratchFolder& folder, const std::vector<std::string>& arguments,
                          const std::string& launcher) {
  return RunProcess(LauncherIn(folder, arguments, launcher));
}

std::string LauncherFile() { return "bin/" + fs::path(HOVAR_LAUNCHER).filename().string(); }

std::string ProgramFile() { return "libexec/hovar/" + fs::path(HOVAR_PROGRAM).filename().string(); }

std::string CopyTreeTo(const fs::path& root) {
  fs::create_directories(root / "bin");
  fs::create_directories(root / "libexec/hovar");
  fs::copy_file(HOVAR_LAUNCHER, root / LauncherFile());
  fs::copy_file(HOVAR_PROGRAM, root / ProgramFile());
  const std::u8string launcher = (root / LauncherFile()).u8string();
  return {launcher.begin(), launcher.end()};
}

void ExpectPredicts(const TinyStudy& study, const std::string& launcher) {
  SCOPED_TRACE(launcher);
  fs::remove_all(study.Path() / "out");
  ExpectSuccess(RunLauncher(study, {"prediction.xml"}, launcher), kPredictionProgress);
  EXPECT_TRUE(study.Has("out/predicted.csv"));
}

std::string CopyTreeWithPageTo(const fs::path& root) {
  fs::create_directories(root / "share/hovar");
  std::ofstream(root / "share/hovar/report.html", std::ios::binary)
      << kPageHead << "<!-- hovar:files -->" << kPageTail;
  return CopyTreeTo(root);
}

std::string LauncherOfScript(const ScratchFolder& place, const std::string& script) {
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  fs::remove(place.Path() / ProgramFile());
  place.Write(ProgramFile(), "#!/bin/sh\n" + script);
  fs::permissions(place.Path() / ProgramFile(), fs::perms::owner_all);
  return launcher;
}

std::string ChainedAnalysisText(int burnin, int steps) {
  return Replaced(Replaced(AnalysisText(), "<Burnin>0<", "<Burnin>" + std::to_string(burnin) + "<"),
                  "<Steps>0<", "<Steps>" + std::to_string(steps) + "<");
}

bool WaitForText(const fs::path& file, std::string_view text) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (std::chrono::steady_clock::now() < deadline) {
    std::ifstream stream(file, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    if (content.find(text) != std::string::npos) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

bool HasStoppedGrowing(const fs::path& file) {
  const auto size = fs::file_size(file);
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  return fs::file_size(file) == size;
}

void ExpectHolds(const std::string& text, const std::string& part) {
  EXPECT_NE(text.find(part), std::string::npos) << "no " << part << " in\n" << text;
}

void ExpectLacks(const std::string& text, const std::string& part) {
  EXPECT_EQ(text.find(part), std::string::npos) << part << " in\n" << text;
}

}  // namespace Testing
