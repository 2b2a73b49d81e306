// On Windows the lines of input files may end in a carriage return and a line feed, and results are
// the same as without: every output file, to the last byte.

#include <gtest/gtest.h>

#include <map>

#include "runs.h"

namespace Testing {
namespace {

using Files = std::map<std::string, std::string>;

std::string WithCarriageReturns(const std::string& text) {
  std::string result;
  for (const char c : text) {
    result += c == '\n' ? "\r\n" : std::string(1, c);
  }
  return result;
}

/// Runs the batch of a study of the reference data whose files were changed; returns what it wrote.
template <typename Change>
Files RunStudy(const std::string& name, Change change) {
  const ScratchFolder folder;
  for (const auto& entry : std::filesystem::directory_iterator(ReferenceFile(name))) {
    if (entry.is_regular_file()) {
      folder.Write(entry.path().filename().string(), change(ReadFile(entry.path())));
    }
  }
  const ProcessResult result = RunHovar(folder, {"batch.xml"});
  EXPECT_EQ(result.exitStatus, 0) << result.error;
  Files files = {{"standard output", WithoutSeconds(result.output)}};
  for (const std::string& file : FilesBelow(folder)) {
    if (file.starts_with("out/")) {
      files[file] = WithoutSeconds(folder.Read(file));
    }
  }
  return files;
}

TEST(CarriageReturnsTest, ResultsAreTheSameAsWithout) {
  for (const char* const study : {"study_plain", "study_gee"}) {
    SCOPED_TRACE(study);
    const Files plain = RunStudy(study, [](const std::string& text) { return text; });
    const Files withReturns = RunStudy(study, WithCarriageReturns);
    EXPECT_GT(plain.size(), 5U);
    EXPECT_EQ(withReturns, plain);
    for (const auto& [name, text] : withReturns) {
      EXPECT_EQ(text.find('\r'), std::string::npos) << name;
    }
  }
}

}  // namespace
}  // namespace Testing
