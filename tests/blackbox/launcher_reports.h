#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "launcher_runs.h"

namespace Testing {

/// Runs of the launcher's --report, with a small page in place of the real one.
class ReportTest : public testing::Test {
 protected:
  ProcessResult Report(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "--report");
    return RunLauncher(work_, arguments, launcher_);
  }

  static std::string Page(const std::string& files) {
    return std::string(kPageHead) + files + std::string(kPageTail);
  }

  static std::string File(int folder, const std::string& path, const std::string& base64,
                          int part = 0) {
    return "<script type=\"text/hovar\" data-folder=\"" + std::to_string(folder) +
           "\" data-path=\"" + path + "\" data-part=\"" + std::to_string(part) + "\">" + base64 +
           "</script>\n";
  }

  static std::string Folders(const std::string& list) {
    return "<script type=\"application/json\" id=\"hovar-folders\">[" + list + "]</script>\n";
  }

  ScratchFolder place_;
  ScratchFolder work_;
  std::string launcher_ = CopyTreeWithPageTo(place_.Path());
};

}  // namespace Testing
