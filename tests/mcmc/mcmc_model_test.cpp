#include "mcmc/mcmc_model.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/random/random_generator.h"
#include "mcmc/runs.h"
#include "mcmc/toy_model.h"
#include "support/allocation_fault.h"
#include "support/files.h"
#include "support/outcome.h"

namespace {

using Testing::Calls;
using Testing::kSummaryHeader;
using Testing::Observe;
using Testing::Outcome;
using Testing::PhaseLine;
using Testing::ScratchFolder;
using Testing::ToyModel;
using Testing::ToyScalar;
using Testing::ToyVector;
using Vell::Mcmc::McmcRunParameters;

/// The parameters of a run without its folder.
struct Lengths {
  std::int32_t bufferSize = 0;
  std::int32_t reportInterval = 0;
  std::int32_t thinning = 1;
  std::int32_t burnin = 0;
  std::int32_t steps = 0;

  McmcRunParameters In(const std::string& folder) const {
    return {.folder = Vell::String(folder),
            .bufferSize = bufferSize,
            .reportInterval = reportInterval,
            .thinning = thinning,
            .burnin = burnin,
            .steps = steps};
  }
};

/// A run in a folder of its own, which the run creates.
class McmcModelTest : public testing::Test {
 protected:
  Outcome RunToy(ToyModel& model, const Lengths& lengths) {
    Outcome outcome = Observe([&] { model.Run(lengths.In(scratch_.File("mcmc"))); });
    outcome.output = Testing::WithoutSeconds(outcome.output);
    return outcome;
  }
  /// A run of one scalar with a chain buffer.
  Outcome RunScalar(const Lengths& lengths) {
    ToyModel model(calls_, {&scalar_});
    return RunToy(model, lengths);
  }
  std::string Chain() const { return scratch_.Read("mcmc/Chain.csv"); }
  std::string Summary() const { return scratch_.Read("mcmc/Summary.csv"); }
  /// The calls that begin with this.
  Calls CallsOf(const std::string& prefix) const {
    Calls result;
    for (const std::string& call : calls_) {
      if (call.starts_with(prefix)) {
        result.push_back(call);
      }
    }
    return result;
  }

  ScratchFolder scratch_;
  Calls calls_;
  ToyScalar scalar_{calls_, "a", true};
};

TEST_F(McmcModelTest, VariablesAreCalledInTheOrderOfTheirRegistration) {
  ToyScalar second(calls_, "b", false);
  second.probability = [](int) { return 0.0; };
  ToyModel model(calls_, {&scalar_, &second});
  EXPECT_EQ(RunToy(model, {.reportInterval = 1, .thinning = 2, .burnin = 1, .steps = 2}).Failure(),
            "");
  EXPECT_EQ(calls_, (Calls{
                        "Model.Initialize",
                        "a.Initialize, buffer 1",
                        "b.Initialize, buffer 1",
                        // burn-in
                        "a.ResetStatistics",
                        "b.ResetStatistics",
                        "a.Propose",
                        "a.AcceptanceProbability of 1",
                        "a.OnAccept 1 at 0",
                        "b.Propose",
                        "b.AcceptanceProbability of 1",
                        "Model.ReportProgress 1 burnin",
                        // main phase
                        "a.ResetStatistics",
                        "b.ResetStatistics",
                        "a.Propose",
                        "a.AcceptanceProbability of 2",
                        "a.OnAccept 2 at 1",
                        "b.Propose",
                        "b.AcceptanceProbability of 2",
                        "Model.ReportProgress 1 main",
                        "a.Propose",
                        "a.AcceptanceProbability of 3",
                        "a.OnAccept 3 at 2",
                        "b.Propose",
                        "b.AcceptanceProbability of 3",
                        "a.Record 0",
                        "b.Record 0",
                        "Model.ReportProgress 2 main",
                        //
                        "a.Finalize",
                        "b.Finalize",
                        "Model.Finalize",
                    }));
}

// Values 3, 6, 9: mean 6, variance 9; 10 acceptances over 3 * 3.
TEST_F(McmcModelTest, TenStepsThinnedByThreeKeepThreeStates) {
  const Outcome outcome = RunScalar({.thinning = 3, .steps = 10});
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(CallsOf("a.Initialize"), Calls{"a.Initialize, buffer 3"});
  EXPECT_EQ(Chain(), "Step,a\n3,3\n6,6\n9,9\n");
  EXPECT_EQ(Summary(), std::string(kSummaryHeader) + "a,6,9,1.11111\n");
  EXPECT_EQ(outcome.output, PhaseLine(10));
  EXPECT_EQ(outcome.log, "");
}

TEST_F(McmcModelTest, StepsThatThinningDoesNotDivideAreNotRecordedAtTheEnd) {
  RunScalar({.thinning = 2, .steps = 7});
  EXPECT_EQ(Chain(), "Step,a\n2,2\n4,4\n6,6\n");
  // Values 2, 4, 6: mean 4, variance 4; 7 acceptances over 3 * 2.
  EXPECT_EQ(Summary(), std::string(kSummaryHeader) + "a,4,4,1.16667\n");
}

TEST_F(McmcModelTest, FullBufferIsWrittenInBlocks) {
  RunScalar({.bufferSize = 2, .thinning = 1, .steps = 5});
  EXPECT_EQ(CallsOf("a.Record"),
            (Calls{"a.Record 0", "a.Record 1", "a.Record 0", "a.Record 1", "a.Record 0"}));
  EXPECT_EQ(Chain(), "Step,a\n1,1\n2,2\n3,3\n4,4\n5,5\n");
  EXPECT_EQ(Summary(), std::string(kSummaryHeader) + "a,3,2.5,1\n");
}

TEST_F(McmcModelTest, BufferThatIsExactlyFullAtTheEndIsWrittenOnce) {
  RunScalar({.bufferSize = 2, .thinning = 3, .steps = 12});
  EXPECT_EQ(Chain(), "Step,a\n3,3\n6,6\n9,9\n12,12\n");
}

TEST_F(McmcModelTest, BufferHoldsTheLongerPhaseUnlessItsSizeIsGiven) {
  struct Case {
    Lengths lengths;
    int expected;
  };
  for (const Case& c : std::vector<Case>{
           {{.bufferSize = 0, .thinning = 1, .burnin = 0, .steps = 4}, 4},
           {{.bufferSize = 0, .thinning = 2, .burnin = 9, .steps = 4}, 4},
           {{.bufferSize = -3, .thinning = 3, .burnin = 2, .steps = 8}, 2},
           {{.bufferSize = 0, .thinning = 5, .burnin = 2, .steps = 4}, 0},
           {{.bufferSize = 0, .thinning = 1, .burnin = 0, .steps = 0}, 0},
           {{.bufferSize = 0, .thinning = 1, .burnin = 3, .steps = -9}, 3},
           {{.bufferSize = 1, .thinning = 1, .burnin = 9, .steps = 9}, 1},
           {{.bufferSize = 70, .thinning = 1, .burnin = 0, .steps = 2}, 70},
       }) {
    ToyScalar scalar(calls_, "a", true);
    ToyModel model(calls_, {&scalar});
    calls_.clear();
    EXPECT_EQ(RunToy(model, c.lengths).Failure(), "");
    EXPECT_EQ(CallsOf("a.Initialize"), Calls{"a.Initialize, buffer " + std::to_string(c.expected)});
  }
}

// The values go on from the burn-in; statistics and step numbers begin anew.
TEST_F(McmcModelTest, BurninIsThrownAway) {
  const Outcome outcome = RunScalar({.thinning = 1, .burnin = 4, .steps = 2});
  EXPECT_EQ(Chain(), "Step,a\n1,5\n2,6\n");
  EXPECT_EQ(Summary(), std::string(kSummaryHeader) + "a,5.5,0.5,1\n");
  EXPECT_EQ(outcome.output, PhaseLine(4) + PhaseLine(2));
}

TEST_F(McmcModelTest, FullBufferOfTheBurninIsDropped) {
  RunScalar({.bufferSize = 2, .thinning = 1, .burnin = 5, .steps = 3});
  EXPECT_EQ(CallsOf("a.Record"), (Calls{"a.Record 0", "a.Record 1", "a.Record 0", "a.Record 1",
                                        "a.Record 0", "a.Record 0", "a.Record 1", "a.Record 0"}));
  EXPECT_EQ(Chain(), "Step,a\n1,6\n2,7\n3,8\n");
}

TEST_F(McmcModelTest, ProgressLinesComeAtEachInterval) {
  const Outcome outcome = RunScalar({.reportInterval = 3, .thinning = 1, .burnin = 4, .steps = 7});
  EXPECT_EQ(outcome.output, "Burnin: 3\n" + PhaseLine(4) + "Mcmc: 3\nMcmc: 6\n" + PhaseLine(7));
  EXPECT_EQ(outcome.log, "") << "for standard output only";
}

TEST_F(McmcModelTest, IntervalBelowOneGivesNoProgressLines) {
  for (const std::int32_t interval : {0, -1, -3}) {
    ToyScalar scalar(calls_, "a", true);
    ToyModel model(calls_, {&scalar});
    EXPECT_EQ(RunToy(model, {.reportInterval = interval, .thinning = 1, .steps = 3}).output,
              PhaseLine(3));
  }
}

TEST_F(McmcModelTest, WithoutStepsTheSummaryIsEmpty) {
  for (const std::int32_t steps : {0, -2}) {
    ToyScalar scalar(calls_, "a", true);
    ToyModel model(calls_, {&scalar});
    EXPECT_EQ(RunToy(model, {.thinning = 2, .burnin = 5, .steps = steps}).output, PhaseLine(5));
    EXPECT_EQ(Chain(), "Step,a\n");
    EXPECT_EQ(Summary(), "");
    EXPECT_EQ(model.Kept(), 2) << "the counts are those of the last phase that ran";
  }
}

TEST_F(McmcModelTest, WithoutAnyPhaseTheFilesAreMadeAllTheSame) {
  const Outcome outcome = RunScalar({.thinning = 1, .burnin = 0, .steps = 0});
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(Chain(), "Step,a\n");
  EXPECT_EQ(Summary(), "");
  EXPECT_EQ(calls_,
            (Calls{"Model.Initialize", "a.Initialize, buffer 0", "a.Finalize", "Model.Finalize"}));
}

TEST_F(McmcModelTest, NegativeBurninIsLeftOut) {
  const Outcome outcome = RunScalar({.thinning = 1, .burnin = -5, .steps = 2});
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.output, PhaseLine(2));
  EXPECT_EQ(Chain(), "Step,a\n1,1\n2,2\n");
}

TEST_F(McmcModelTest, OneKeptStateHasNoVariance) {
  RunScalar({.thinning = 4, .steps = 4});
  EXPECT_EQ(Chain(), "Step,a\n4,4\n");
  EXPECT_EQ(Summary(), std::string(kSummaryHeader) + "a,4,0,1\n");
}

TEST_F(McmcModelTest, NothingKeptGivesZeros) {
  RunScalar({.thinning = 5, .steps = 4});
  EXPECT_EQ(Chain(), "Step,a\n");
  EXPECT_EQ(Summary(), std::string(kSummaryHeader) + "a,0,0,0\n");
}

TEST_F(McmcModelTest, ThinningOfZeroIsRefusedBeforeAnythingIsCreated) {
  for (const std::int32_t bufferSize : {0, 5}) {
    const Outcome outcome =
        RunScalar({.bufferSize = bufferSize, .thinning = 0, .burnin = 1, .steps = 2});
    EXPECT_EQ(outcome.Failure(), "InvalidArgumentException: Invalid argument");
    EXPECT_EQ(calls_, Calls{});
    EXPECT_FALSE(scratch_.Has("mcmc"));
  }
}

TEST_F(McmcModelTest, NegativeBufferIsRefusedBeforeAnythingIsCreated) {
  for (const Lengths& lengths : {Lengths{.thinning = 1, .burnin = -4, .steps = -6},
                                 Lengths{.thinning = -2, .burnin = 0, .steps = 4}}) {
    ToyScalar scalar(calls_, "a", true);
    ToyModel model(calls_, {&scalar});
    EXPECT_EQ(RunToy(model, lengths).Failure(), "InvalidArgumentException: Invalid argument");
    EXPECT_FALSE(scratch_.Has("mcmc"));
  }
}

TEST_F(McmcModelTest, ValueWithoutChainBufferHasNoColumnButARow) {
  ToyScalar plain(calls_, "plain", false);
  ToyVector vector("v", 3, true);
  ToyVector hidden("h", 2, false);
  ToyModel model(calls_, {&plain, &vector, &scalar_, &hidden});
  RunToy(model, {.thinning = 1, .steps = 2});
  EXPECT_EQ(Chain(),
            "Step,v0,v1,v2,a\n"
            "1,1,2,3,1\n"
            "2,2,4,6,2\n");
  // Of the values k and 2 k the mean is 1.5 k and the variance k^2 / 2.
  EXPECT_EQ(Summary(), std::string(kSummaryHeader) +
                           "plain,1.5,0.5,1\n"
                           "v0,1.5,0.5,1\nv1,3,2,1\nv2,4.5,4.5,1\n"
                           "a,1.5,0.5,1\n"
                           "h0,1.5,0.5,1\nh1,3,2,1\n");
}

/// A variable that answers no more than it must.
class PlainScalar : public Vell::Mcmc::McmcScalar {
 public:
  double Propose() override { return value_ + 1; }
  double AcceptanceProbability(double /*proposal*/) override { return 1; }
  Vell::String GetName() const override { return Vell::String("plain"); }
};

/// A model whose variable was there before it ran.
class PlainModel : public Vell::Mcmc::McmcModel {
 public:
  explicit PlainModel(Vell::Mcmc::McmcVariable& variable) { Register(variable); }
};

TEST_F(McmcModelTest, WhatIsNotOverriddenDoesNothing) {
  PlainScalar scalar;
  PlainModel model(scalar);
  const Outcome outcome = Observe([&] {
    model.Run(
        Lengths{.bufferSize = 0, .thinning = 1, .burnin = 2, .steps = 3}.In(scratch_.File("mcmc")));
  });
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(scalar.Value(), 5);
  // The values 3, 4 and 5 of the main phase have the mean 4 and the variance 1.
  EXPECT_EQ(Summary(), kSummaryHeader + std::string("plain,4,1,1\n"));
}

TEST_F(McmcModelTest, ModelWithoutVariablesWritesStepsAlone) {
  ToyModel model(calls_, {});
  RunToy(model, {.thinning = 1, .steps = 2});
  EXPECT_EQ(Chain(), "Step\n1\n2\n");
  EXPECT_EQ(Summary(), kSummaryHeader);
}

TEST_F(McmcModelTest, NamesStandUnquotedInBothFiles) {
  ToyScalar odd(calls_, "a,\"b\"", true);
  ToyModel model(calls_, {&odd});
  RunToy(model, {.thinning = 1, .steps = 1});
  EXPECT_EQ(Chain(), "Step,a,\"b\"\n1,1\n");
  EXPECT_EQ(Summary(), std::string(kSummaryHeader) + "a,\"b\",1,0,1\n");
}

TEST_F(McmcModelTest, FilesOfAnEarlierRunAreReplaced) {
  scratch_.Write("mcmc/Chain.csv", std::string(1000, 'c'));
  scratch_.Write("mcmc/Summary.csv", std::string(1000, 's'));
  EXPECT_EQ(RunScalar({.thinning = 1, .burnin = 1}).Failure(), "");
  EXPECT_EQ(Chain(), "Step,a\n");
  EXPECT_EQ(Summary(), "");
}

TEST_F(McmcModelTest, SummaryIsOpenedBeforeTheChain) {
  scratch_.Write("mcmc/Summary.csv/file", "");
  Outcome outcome = RunScalar({.thinning = 1, .steps = 1});
  EXPECT_EQ(outcome.Failure(), "FileOpenException: File \"" + scratch_.File("mcmc") +
                                   "\\Summary.csv\" can not be opened");
  EXPECT_FALSE(scratch_.Has("mcmc/Chain.csv"));
  EXPECT_EQ(calls_, (Calls{"Model.Initialize", "a.Initialize, buffer 1"}));
}

TEST_F(McmcModelTest, ChainThatCannotBeOpenedLeavesAnEmptySummary) {
  scratch_.Write("mcmc/Chain.csv/file", "");
  Outcome outcome = RunScalar({.thinning = 1, .steps = 1});
  EXPECT_EQ(outcome.Failure(), "FileOpenException: File \"" + scratch_.File("mcmc") +
                                   "\\Chain.csv\" can not be opened");
  EXPECT_EQ(Summary(), "");
}

TEST_F(McmcModelTest, OnlyOneLevelOfTheFolderIsCreated) {
  const std::string folder = scratch_.File("missing") + "\\mcmc";
  ToyModel model(calls_, {&scalar_});
  const Outcome outcome = Observe([&] { model.Run(Lengths{.steps = 1}.In(folder)); });
  EXPECT_EQ(outcome.Failure(),
            "FileOpenException: File \"" + folder + "\\Summary.csv\" can not be opened");
  EXPECT_FALSE(scratch_.Has("missing"));
}

// Each full buffer is written before the next state is recorded, so the blocks 1, 2 and 3, 4 are
// there when step 6 fails, and state 5 is lost.
TEST_F(McmcModelTest, ErrorInTheMainPhaseLeavesTheBlocksWrittenSoFar) {
  scalar_.failingStep = 6;
  const Outcome outcome = RunScalar({.bufferSize = 2, .thinning = 1, .steps = 9});
  EXPECT_EQ(outcome.Failure(), "NumericException: No proposal");
  EXPECT_EQ(Chain(), "Step,a\n1,1\n2,2\n3,3\n4,4\n");
  EXPECT_EQ(Summary(), "");
  EXPECT_EQ(outcome.output, "") << "no line for a phase that did not end";
  EXPECT_EQ(CallsOf("a.Finalize"), Calls{});
}

TEST_F(McmcModelTest, ErrorInTheBurninLeavesTheHeader) {
  scalar_.failingStep = 3;
  const Outcome outcome = RunScalar({.bufferSize = 1, .thinning = 1, .burnin = 4, .steps = 2});
  EXPECT_EQ(outcome.Failure(), "NumericException: No proposal");
  EXPECT_EQ(Chain(), "Step,a\n");
  EXPECT_EQ(Summary(), "");
}

// A draw is made only for a probability between 0 and 1, and accepts when it is below it.
TEST_F(McmcModelTest, AcceptancesAreCountedInEveryIterationOfTheMainPhase) {
  const std::vector<double> probabilities = {0.3, 0.0, 0.6, 1.0, 0.5, 0.9, 0.1, 2.0, 0.4, 0.7};
  Vell::RandomGenerator::Seed(11, 22);
  int accepted = 0;
  int value = 0;
  std::string rows;
  double sum = 0;
  for (int step = 1; step <= 10; ++step) {
    const double p = probabilities[static_cast<std::size_t>(step - 1)];
    if (p >= 1 || (p > 0 && p > Vell::RandomGenerator::NextWord() * 0x1p-32)) {
      ++accepted;
      value = step;
    }
    if (step % 2 == 0) {
      rows += std::to_string(step) + "," + std::to_string(value) + "\n";
      sum += value;
    }
  }
  const std::uint32_t next = Vell::RandomGenerator::NextWord();
  ASSERT_GT(accepted, 2);
  ASSERT_LT(accepted, 10);

  Vell::RandomGenerator::Seed(11, 22);
  scalar_.probability = [&](int step) { return probabilities[static_cast<std::size_t>(step - 1)]; };
  RunScalar({.thinning = 2, .steps = 10});
  EXPECT_EQ(Vell::RandomGenerator::NextWord(), next);
  EXPECT_EQ(Chain(), "Step,a\n" + rows);
  const auto cells = Testing::ReadCsv(scratch_.Path() / "mcmc/Summary.csv");
  EXPECT_EQ(std::stod(cells[1][1]), sum / 5);
  EXPECT_NEAR(std::stod(cells[1][3]), accepted / 10.0, 1e-6);
}

TEST_F(McmcModelTest, EachFailingAllocationEndsInOutOfMemory) {
  Testing::ExpectOutOfMemoryAtEachAllocation([&] {
    ToyScalar scalar(calls_, "a", true);
    ToyVector vector("v", 2, true);
    ToyModel model(calls_, {&scalar, &vector});
    model.Run(Lengths{.steps = 2}.In(scratch_.File("mcmc")));
  });
}

}  // namespace
