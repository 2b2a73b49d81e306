#include "faults/forked_run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "app/program.h"

namespace Testing {
namespace {

constexpr unsigned kPatienceSeconds = 60;

int NewMemoryFile(const char* name) {
  const int file = memfd_create(name, MFD_CLOEXEC);
  EXPECT_GE(file, 0);
  return file;
}

void Empty(int file) {
  EXPECT_EQ(ftruncate(file, 0), 0);
  lseek(file, 0, SEEK_SET);
}

std::string ContentOf(int file) {
  struct stat status {};
  fstat(file, &status);
  std::string content(static_cast<std::size_t>(status.st_size), '\0');
  EXPECT_EQ(pread(file, content.data(), content.size(), 0), static_cast<ssize_t>(content.size()));
  return content;
}

bool Ends(const std::string& text, const std::string& end) { return text.ends_with(end); }

}  // namespace

std::string RunResult::Text() const {
  return "exit status " + std::to_string(end.exitStatus) + ", signal " +
         std::to_string(end.signal) + "\nstandard error: <" + error + ">\nstandard output: <" +
         output + ">";
}

ForkedRuns::ForkedRuns() : output_(NewMemoryFile("output")), error_(NewMemoryFile("error")) {}

ForkedRuns::~ForkedRuns() {
  close(output_);
  close(error_);
}

RunResult ForkedRuns::Run(const std::filesystem::path& folder, const std::string& definition,
                          const std::function<void()>& prepare) {
  Empty(output_);
  Empty(error_);
  RunResult result;
  result.end = RunInChild([&] {
    alarm(kPatienceSeconds);
    ReplaceHandle(0, "/dev/null");
    ReplaceHandle(1, output_);
    ReplaceHandle(2, error_);
    if (chdir(folder.c_str()) != 0) {
      return 99;
    }
    if (prepare) {
      prepare();
    }
    return RunHere(definition);
  });
  result.output = ContentOf(output_);
  result.error = ContentOf(error_);
  return result;
}

int RunHere(const std::string& definition) {
  const char* const arguments[] = {"C:\\hovar\\hovar.exe", definition.c_str(), nullptr};
  return Hovar::RunProgram(2, arguments);
}

void ExpectFailed(const RunResult& result, const std::string& line) {
  const bool isRight = result.end == ProcessEnd{1} && result.error == "Error: " + line + "\n" &&
                       result.output.starts_with(kBanner) && Ends(result.output, kPrompt);
  EXPECT_TRUE(isRight) << "expected: " << line << "\n" << result.Text();
}

void ExpectSucceeded(const RunResult& result) {
  const bool isRight = result.end == ProcessEnd{0} && result.error.empty() &&
                       result.output.starts_with(kBanner) && !Ends(result.output, kPrompt);
  EXPECT_TRUE(isRight) << "expected success\n" << result.Text();
}

}  // namespace Testing
