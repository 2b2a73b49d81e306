#include "faults/fault_study.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace Testing {
namespace {

// What each run of the batch writes beside its log, in the order of the runs.
struct RunFiles {
  const char* log;
  std::vector<const char*> others;
};

const std::vector<RunFiles>& BatchFiles() {
  static const std::vector<RunFiles> files = {
      {"analysis.log", {"mcmc/Chain.csv", "mcmc/Summary.csv", "fitted.csv"}},
      {"prediction.log", {"predicted.csv", "hospital.csv"}},
      {"validation.log", {"statistics.csv"}}};
  return files;
}

/// The table with a key of thousands of bytes in every record.
std::string WithLongKeys(const std::string& table) {
  const std::string more(2500, 'k');
  std::istringstream lines(table);
  std::string line;
  std::getline(lines, line);
  std::string result = line + "\n";
  while (std::getline(lines, line)) {
    result += line.insert(line.starts_with('"') ? 1 : 0, more) + "\n";
  }
  return result;
}

}  // namespace

FaultStudy::FaultStudy() {
  for (const char* name : {"analysis.xml", "gee.xml", "prediction.xml", "validation.xml",
                           "batch.xml", "data.csv", "coefficients.csv", "individual.csv"}) {
    Write(name, ReadFile(ReferenceFile(std::string("damage/") + name)));
  }
}

void FaultStudy::Enlarge() {
  for (const char* name : {"data.csv", "individual.csv"}) {
    const std::string table = WithLongKeys(Read(name));
    EXPECT_GT(table.size(), 65536U);
    Write(name, table);
  }
}

OutputFiles FaultStudy::Output() const {
  OutputFiles files;
  const std::filesystem::path folder = Path() / "out";
  if (std::filesystem::exists(folder)) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) {
        files[std::filesystem::relative(entry.path(), folder).string()] = ReadFile(entry.path());
      }
    }
  }
  return files;
}

void FaultStudy::RemoveOutput() const { std::filesystem::remove_all(Path() / "out"); }

void ExpectBrokenOff(const OutputFiles& files, const OutputFiles& complete) {
  for (const auto& [name, content] : files) {
    const auto whole = complete.find(name);
    ASSERT_NE(whole, complete.end()) << name;
    EXPECT_TRUE(whole->second.starts_with(content)) << name << " holds <" << content << ">";
    if (name.ends_with(".log")) {
      EXPECT_TRUE(content.empty() || content.ends_with('\n')) << name;
    }
  }
  const std::vector<RunFiles>& runs = BatchFiles();
  for (std::size_t later = 1; later < runs.size(); ++later) {
    if (files.contains(runs[later].log) && complete.contains(runs[later - 1].log)) {
      for (const char* name : runs[later - 1].others) {
        ASSERT_TRUE(files.contains(name)) << name;
        EXPECT_EQ(files.at(name), complete.at(name)) << name;
      }
    }
  }
}

}  // namespace Testing
