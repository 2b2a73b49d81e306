#include "tools/run/progress.h"

#include <gtest/gtest.h>

namespace Hovar {
namespace {

PlannedRun Planned(RunKind kind, std::int64_t burnin, std::int64_t steps) {
  PlannedRun run;
  run.kind = kind;
  run.burnin = burnin;
  run.steps = steps;
  run.data = "no such file";
  return run;
}

RunPlan PlanOf(std::initializer_list<PlannedRun> runs) {
  RunPlan plan;
  plan.runs = runs;
  return plan;
}

/// Takes lines, a second apart, and looks at the bar after each.
class Watched {
 public:
  explicit Watched(const RunPlan& plan) : progress_(plan, 0) {}

  void Take(const std::string& line) {
    const double before = progress_.Share();
    now_ += 1;
    lines_.Take(line);
    progress_.Update(lines_, now_);
    EXPECT_GE(progress_.Share(), before) << line;
    EXPECT_LT(progress_.Share(), 1) << line;
  }
  void TakeIterations(const std::string& kind, int count) {
    for (int i = 1; i <= count; ++i) {
      Take(kind + ": " + std::to_string(i) + " Intercept: 0.5 ");
    }
  }

  const Progress& Bar() const { return progress_; }
  double Now() const { return now_; }
  double SecondsLeft() const { return progress_.SecondsLeft(now_); }

 private:
  RunLines lines_;
  Progress progress_;
  double now_ = 0;
};

TEST(ProgressTest, AnAnalysisIsMeasuredByItsIterations) {
  Watched run(PlanOf({Planned(RunKind::kAnalysis, 20, 80)}));
  EXPECT_EQ(run.Bar().Share(), 0);
  EXPECT_EQ(run.SecondsLeft(), -1);
  run.Take("Reading data file...");
  for (const char* label : {"[P|X]", "[Y|Z]", "[Y|X]", "[Y|X,P=0]", "MCMC Analysis"}) {
    run.Take(label);
    EXPECT_EQ(run.SecondsLeft(), -1);
  }
  run.TakeIterations("Burnin", 20);
  EXPECT_EQ(run.SecondsLeft(), 80);
  EXPECT_EQ(run.Bar().Activity(), "Analysis, burn-in 20 of 20");
  run.TakeIterations("Mcmc", 30);
  // 2 units of reading and fits, 20 + 30 iterations, of 102.
  EXPECT_NEAR(run.Bar().Share(), 52.0 / 102, 1e-12);
  EXPECT_EQ(run.SecondsLeft(), 50);
  EXPECT_EQ(run.Bar().Activity(), "Analysis, iteration 30 of 80");
}

TEST(ProgressTest, TheTimeLeftRunsDownBetweenTheLines) {
  Watched run(PlanOf({Planned(RunKind::kAnalysis, 0, 10)}));
  run.Take("Reading data file...");
  run.TakeIterations("Mcmc", 4);
  EXPECT_EQ(run.Bar().SecondsLeft(run.Now()), 6);
  EXPECT_EQ(run.Bar().SecondsLeft(run.Now() + 2.5), 3.5);
  EXPECT_EQ(run.Bar().SecondsLeft(run.Now() + 60), 0);
}

TEST(ProgressTest, APredictionPrintsOnePassLessThanItsSteps) {
  Watched run(PlanOf({Planned(RunKind::kPrediction, 2, 4)}));
  for (const char* line :
       {"Reading data file...", "Calculating individual predictions", "0/2", "1/2", "1/4"}) {
    run.Take(line);
  }
  // Two passes are done and the third of five is being made.
  EXPECT_EQ(run.Bar().Activity(), "Prediction, pass 2 of 5");
  EXPECT_NEAR(run.Bar().Share(), 4.0 / 7, 1e-12);
  EXPECT_EQ(run.SecondsLeft(), 3);
  run.Take("2/4");
  run.Take("3/4");
  run.Take("Calculating hospital-aggregated predictions");
  EXPECT_GT(run.Bar().Share(), 0.99);
}

TEST(ProgressTest, AValidationCountsAllItsPasses) {
  Watched run(PlanOf({Planned(RunKind::kValidation, 1, 3)}));
  for (const char* line :
       {"Reading data file...", "Y|Z", "Y|X", "P|X", "P|YPZX", "0/1", "0/3", "1/3", "2/3"}) {
    run.Take(line);
  }
  EXPECT_EQ(run.Bar().Activity(), "Validation, pass 3 of 4");
  EXPECT_EQ(run.SecondsLeft(), 1);
}

TEST(ProgressTest, ABatchSharesTheBar) {
  // All data weigh the same; an iteration costs 5, a pass of a prediction 1.
  Watched run(PlanOf({Planned(RunKind::kAnalysis, 0, 8), Planned(RunKind::kPrediction, 0, 9)}));
  run.Take("Target platform: 64-bit");
  run.Take("Reading data file...");
  run.TakeIterations("Mcmc", 8);
  EXPECT_NEAR(run.Bar().Share(), 50.0 / 60, 1e-12);
  EXPECT_EQ(run.Bar().Activity(), "1 of 2: Analysis, iteration 8 of 8");
  // 10 s for 5/6 of the work leave 2 s for the rest.
  EXPECT_NEAR(run.SecondsLeft(), 2, 1e-9);
  run.Take("Reading data file...");
  EXPECT_EQ(run.Bar().Activity(), "2 of 2: Prediction, reading data");
}

TEST(ProgressTest, MoreThanWasPlannedDoesNoHarm) {
  Watched run(PlanOf({Planned(RunKind::kAnalysis, 0, 2)}));
  run.Take("Reading data file...");
  run.TakeIterations("Mcmc", 9);
  run.Take("Reading data file...");
  Watched unplanned{RunPlan()};
  unplanned.Take("Reading data file...");
  unplanned.TakeIterations("Mcmc", 2);
  EXPECT_EQ(unplanned.Bar().Activity(), "");
}

TEST(ProgressLineTest, ShowsShareTimeAndActivity) {
  Watched run(PlanOf({Planned(RunKind::kAnalysis, 0, 98)}));
  run.Take("Reading data file...");
  run.TakeIterations("Mcmc", 38);
  EXPECT_EQ(ProgressLine(run.Bar(), run.Now(), 80),
            "[########------------]  40 %  1:00 left  Analysis, iteration 38 of 98");
  EXPECT_EQ(ProgressLine(run.Bar(), run.Now(), 28), "[########------------]  40 %");
  Progress done(RunPlan(), 0);
  EXPECT_EQ(ProgressLine(done, 0, 80), "[--------------------]   0 %  ");
  done.Complete();
  EXPECT_EQ(ProgressLine(done, 0, 80), "[####################] 100 %");
}

TEST(DurationTextTest, GrowsWithTheTime) {
  EXPECT_EQ(DurationText(0), "0:00");
  EXPECT_EQ(DurationText(0.2), "0:01");
  EXPECT_EQ(DurationText(65), "1:05");
  EXPECT_EQ(DurationText(3599), "59:59");
  EXPECT_EQ(DurationText(3600), "1:00:00");
  EXPECT_EQ(DurationText(36'061), "10:01:01");
}

}  // namespace
}  // namespace Hovar
