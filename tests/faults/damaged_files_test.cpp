// Whole runs with one damaged file: cut at every offset, every byte replaced by each of six others,
// every line dropped, repeated, swapped with the next one, or alone with the first one.
// The end that each must have was found from the rules of the formats by tests/reference/damage.py.

#include <gtest/gtest.h>

#include "faults/damage_tables.h"
#include "faults/fault_study.h"
#include "faults/forked_run.h"
#include "faults/sample.h"

namespace Testing {
namespace {

constexpr std::size_t kSampledRuns = 1500;

/// How `result` differs from what it must be; nothing when it does not.
std::string Difference(const RunResult& result, const DamageEnd& end) {
  const bool isOrderly = result.output.starts_with(kBanner) && result.end.signal == -1;
  if (!isOrderly) {
    return "no orderly end";
  }
  const bool hasPrompt = result.output.ends_with(kPrompt);
  if (result.end.exitStatus == 0) {
    return end.MayEndWell() && result.error.empty() && !hasPrompt ? "" : "should have failed";
  }
  const std::string prefix = "Error: ";
  if (result.end.exitStatus != 1 || !hasPrompt || !result.error.starts_with(prefix) ||
      !result.error.ends_with('\n')) {
    return "no documented end";
  }
  const std::string line =
      result.error.substr(prefix.size(), result.error.size() - prefix.size() - 1);
  return end.MayEndWith(line) ? "" : "another error";
}

TEST(DamagedFilesTest, EachEndsAsTheRulesSay) {
  const std::vector<DamageTable> tables = ReadDamageTables();
  std::size_t total = 0;
  for (const DamageTable& table : tables) {
    total += table.ranges.back().last + 1;
  }
  Sample sample(kSampledRuns, total);
  ForkedRuns runs;
  const FaultStudy study;
  std::size_t valid = 0;
  int different = 0;
  for (const DamageTable& table : tables) {
    const std::string original = study.Read(table.file);
    EXPECT_EQ(table.ranges.back().last + 1, DamageCount(original, table.change));
    // They are few, and those that leave the file valid go on to compute with another model.
    const bool isAlwaysTaken = table.file == "coefficients.csv" && IsLineChange(table.change);
    std::size_t offset = 0;
    for (const DamageRange& range : table.ranges) {
      for (; offset <= range.last; ++offset) {
        if (!sample.Takes() && !isAlwaysTaken) {
          continue;
        }
        const std::string content = Damaged(original, table.change, offset);
        study.Write(table.file, content);
        const DamageEnd end(range.end, table.definition, content);
        const RunResult result = runs.Run(study.Path(), table.definition);
        valid += end.IsValid() ? 1 : 0;
        if (const std::string difference = Difference(result, end);
            !difference.empty() && ++different < 20) {
          ADD_FAILURE() << table.definition << " with " << table.file << ", " << table.change
                        << " at " << offset << ": " << difference << "; expected: " << range.end
                        << "\n"
                        << result.Text();
        }
      }
    }
    study.Write(table.file, original);
  }
  EXPECT_EQ(different, 0);
  EXPECT_GT(valid, 0U) << "no damage left its file valid";
  std::cout << sample.Text() << ", " << valid << " still valid\n";
}

TEST(DamagedFilesTest, WithoutDamageEachRunSucceeds) {
  ForkedRuns runs;
  const FaultStudy study;
  for (const char* definition : {"analysis.xml", "prediction.xml", "validation.xml", "batch.xml"}) {
    SCOPED_TRACE(definition);
    ExpectSucceeded(runs.Run(study.Path(), definition));
  }
}

}  // namespace
}  // namespace Testing
