#include "faults/fault_answers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace Testing {
namespace {

constexpr int kStandardError = 2;

std::string CannotOpen(const std::string& path) {
  return "File \"" + path + "\" can not be opened";
}

/// An error line names a file as it was written, with a backslash where it was joined.
std::string WithoutBackslashes(std::string text) {
  std::replace(text.begin(), text.end(), '\\', '/');
  return text;
}

/// The log that a definition begins first.
std::string FirstLog(const std::string& definition) {
  return definition == "batch.xml" ? "analysis.log"
                                   : definition.substr(0, definition.find('.')) + ".log";
}

}  // namespace

FaultAnswers::FaultAnswers(std::string definition, RunResult whole, OutputFiles complete)
    : definition_(std::move(definition)),
      whole_(std::move(whole)),
      complete_(std::move(complete)) {}

void FaultAnswers::ExpectWhole(const RunResult& result, const OutputFiles& files) const {
  EXPECT_EQ(result.end, ProcessEnd{0}) << result.Text();
  EXPECT_EQ(result.error, whole_.error);
  EXPECT_EQ(files, complete_);
}

void FaultAnswers::ExpectBroken(const RunResult& result, const OutputFiles& files) const {
  EXPECT_EQ(result.end, ProcessEnd{1}) << result.Text();
  ExpectBrokenOff(files, complete_);
}

void FaultAnswers::ExpectFailed(const std::string& line, const RunResult& result,
                                const OutputFiles& files) const {
  const std::string last = "Error: " + line + "\n";
  const std::string error = WithoutBackslashes(result.error);
  EXPECT_TRUE(error.ends_with(last) &&
              whole_.error.starts_with(error.substr(0, error.size() - last.size())))
      << "expected: " << last << result.Text();
  EXPECT_TRUE(result.output.ends_with(kPrompt)) << result.Text();
  ExpectBroken(result, files);
}

void FaultAnswers::ExpectAnswer(const SystemCallReport& call, const RunResult& result,
                                const OutputFiles& files) const {
  SCOPED_TRACE(NameOf(call.call) + " of <" + call.path + ">");
  const bool isStandard = call.file >= 0 && call.file <= kStandardError;
  if ((call.call == SystemCall::kClose && !call.isOpenForWriting) ||
      (call.call == SystemCall::kSeek && isStandard)) {
    // Closing a file that was only read loses nothing; a pipe or a terminal has no position.
    ExpectWhole(result, files);
  } else if (call.file == kStandardError) {
    ExpectBroken(result, files);  // there is no place for an error line
  } else if (call.call == SystemCall::kOpen) {
    ExpectFailed(CannotOpen(call.path), result, files);
  } else if (call.call == SystemCall::kMakeFolder) {
    ExpectAnswerToMissingFolder(call, result, files);
  } else {
    ExpectFailed("IO Exception", result, files);
  }
}

// That a folder could not be made is not reported: the first file in it cannot be opened.
void FaultAnswers::ExpectAnswerToMissingFolder(const SystemCallReport& call,
                                               const RunResult& result,
                                               const OutputFiles& files) const {
  if (call.isThere) {
    ExpectWhole(result, files);
  } else {
    const std::string path(call.path);
    ExpectFailed(CannotOpen(path + "/" + (path == "out" ? FirstLog(definition_) : "Summary.csv")),
                 result, files);
  }
}

}  // namespace Testing
