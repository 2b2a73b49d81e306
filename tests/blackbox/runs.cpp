#include "runs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "foundation/io/platform/platform.h"

namespace Testing {

Command HovarIn(const ScratchFolder& folder, const std::vector<std::string>& arguments) {
  Command command;
  command.program = HOVAR_PROGRAM;
  command.folder = folder.Path();
  command.arguments = {kProgramPath};
  command.arguments.insert(command.arguments.end(), arguments.begin(), arguments.end());
  return command;
}

Command FailingRun(const ScratchFolder& folder, Input input, const std::string& text) {
  Command command = HovarIn(folder, {"none.xml"});
  command.input = input;
  command.inputText = text;
  return command;
}

ProcessResult RunHovar(const ScratchFolder& folder, const std::vector<std::string>& arguments) {
  return RunProcess(HovarIn(folder, arguments));
}

void ExpectError(const ProcessResult& result, const std::string& line,
                 const std::string& progress) {
  EXPECT_EQ(result.error, "Error: " + line + "\n");
  EXPECT_EQ(result.output, kBanner + progress + kPrompt);
  EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
}

void ExpectSuccess(const ProcessResult& result, const std::string& progress) {
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.output, kBanner + progress);
  EXPECT_EQ(result.exitStatus, 0) << "signal " << result.signal;
}

std::string Mismatch(const std::string& file, const std::string& expected,
                     const std::string& current) {
  return "Invalid input in file \"" + file + "\": expected \"" + expected + "\", current \"" +
         current + "\"";
}

std::string CannotOpen(const std::string& path) {
  return "File \"" + path + "\" can not be opened";
}

std::string Shown(std::string path) {
  std::replace(path.begin(), path.end(), '\\', Vell::IO::Platform::FolderSeparator());
  return path;
}

std::set<std::string> FilesBelow(const ScratchFolder& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path())) {
    if (!entry.is_directory()) {
      names.insert(std::filesystem::relative(entry.path(), folder.Path()).generic_string());
    }
  }
  return names;
}

std::string Replaced(std::string text, std::string_view from, std::string_view to) {
  const std::size_t place = text.find(from);
  if (place == std::string::npos) {
    ADD_FAILURE() << "nothing to replace: " << from;
    return text;
  }
  return text.replace(place, from.size(), to);
}

std::string WithoutSeconds(const std::string& output) {
  static const std::regex seconds("(MCMC: -?[0-9]+ iterations in )[-+.0-9e]+( seconds)");
  return std::regex_replace(output, seconds, "$1T$2");
}

}  // namespace Testing
