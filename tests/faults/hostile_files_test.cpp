// Hostile names and kinds of files in every argument of the command and in every element of a
// definition that names a file. How a run must end follows from rules (hostile_rules.h) and from the
// program alone with the same files.

#include <gtest/gtest.h>

#include <iostream>
#include <map>

#include "blackbox/launcher_runs.h"
#include "faults/hostile_rules.h"
#include "faults/sample.h"

namespace Testing {
namespace {

constexpr std::size_t kSampledCells = 60;
constexpr std::size_t kCrossedCells = 2000;  // of all, when all run
constexpr int kMostReported = 30;

const NamedKind kRegular{HostileKind::kRegular, "regular file"};
const HostileName kHarmless{"harmless name", kHarmlessName};

class HostileFileTest : public testing::Test {
 protected:
  void Judge(const HostileCell& cell) {
    const HostileEnd& alone = Alone(cell);
    const HostileEnd run = RunCell(cell, launcher_);
    const std::vector<std::string> broken = BrokenRules(cell, run, alone);
    std::string text;
    for (const std::string& rule : broken) {
      text += "  " + rule + "\n";
      ++ruleCounts_[rule.substr(0, rule.find(':'))];
    }
    brokenCount_ += broken.empty() ? 0 : 1;
    if (!broken.empty() && brokenCount_ <= kMostReported) {
      ADD_FAILURE() << cell.Text() << "\n"
                    << text << "status " << run.Result().exitStatus << ", the program alone "
                    << alone.Result().exitStatus << "\n"
                    << testing::PrintToString(run.Result().output + run.Result().error);
    }
  }

  /// The program alone, which many tools are compared with.
  const HostileEnd& Alone(const HostileCell& cell) {
    if (cell.place->task == Task::kReport) {
      return none_;
    }
    const std::string key = cell.Definition() + '\0' + cell.place->definition + '\0' +
                            cell.place->content + '\0' + cell.File() + '\0' + cell.kind.what +
                            (cell.place->hasChains ? ", chains" : "");
    const auto known = alone_.find(key);
    return known != alone_.end() ? known->second
                                 : alone_.emplace(key, RunProgramAlone(cell)).first->second;
  }

  void TearDown() override {
    for (const auto& [rule, count] : ruleCounts_) {
      std::cout << count << " times broken: " << rule << "\n";
    }
    EXPECT_EQ(brokenCount_, 0);
  }

  void JudgeSample(const std::vector<HostileCell>& cells, std::size_t count) {
    Sample sample(count, cells.size());
    for (const HostileCell& cell : cells) {
      if (sample.Takes()) {
        Judge(cell);
      }
    }
    std::cout << sample.Text() << ", " << brokenCount_ << " break a rule\n";
  }

  /// Every place with each of these names.
  std::vector<HostileCell> NameCells(const std::vector<HostileName>& names) const {
    std::vector<HostileCell> cells;
    for (const HostilePlace& place : places_) {
      for (const HostileName& name : names) {
        if (!place.isNameFixed && (!place.IsInDefinition() || IsTextOfAnElement(name.name))) {
          cells.push_back({&place, name, kRegular});
        }
      }
    }
    return cells;
  }

  const std::vector<HostilePlace> places_ = HostilePlaces();
  const ScratchFolder installation_;
  const std::string launcher_ = CopyTreeWithPageTo(installation_.Path());
  const HostileEnd none_{};
  std::map<std::string, HostileEnd> alone_;
  std::map<std::string, int> ruleCounts_;
  int brokenCount_ = 0;
};

TEST_F(HostileFileTest, HarmlessFilesBreakNoRule) {
  JudgeSample(NameCells({kHarmless}), kSampledCells);
}

TEST_F(HostileFileTest, NamesInEveryPlace) {
  JudgeSample(NameCells(HostileNames()), kSampledCells);
}

TEST_F(HostileFileTest, EveryByteInEveryPlace) {
  JudgeSample(NameCells(NamesOfSingleBytes()), kSampledCells);
}

TEST_F(HostileFileTest, KindsInEveryPlace) {
  std::vector<HostileCell> cells;
  for (const HostilePlace& place : places_) {
    for (const NamedKind& kind : HostileKinds()) {
      cells.push_back({&place, kHarmless, kind});
    }
  }
  JudgeSample(cells, kSampledCells);
}

TEST_F(HostileFileTest, NamesAndKindsTogether) {
  const std::vector<HostileName> names = HostileNames();
  SeededRandom random = Sample::Random();
  const auto choice = [&random](std::size_t count) {
    return static_cast<std::size_t>(random.Integer(0, static_cast<std::int32_t>(count) - 1));
  };
  std::vector<HostileCell> cells;
  while (cells.size() < kCrossedCells) {
    const HostilePlace& place = places_[choice(places_.size())];
    const HostileName& name = names[choice(names.size())];
    if (!place.isNameFixed && (!place.IsInDefinition() || IsTextOfAnElement(name.name))) {
      cells.push_back({&place, name, HostileKinds()[choice(HostileKinds().size())]});
    }
  }
  JudgeSample(cells, kSampledCells);
}

}  // namespace
}  // namespace Testing
