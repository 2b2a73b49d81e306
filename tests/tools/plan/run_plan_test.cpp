#include "tools/plan/run_plan.h"

#include <gtest/gtest.h>

#include "blackbox/runs.h"
#include "blackbox/tiny_study.h"

namespace Hovar {
namespace {

using Testing::BatchText;
using Testing::Replaced;
using Testing::ScratchFolder;
using Strings = std::vector<std::string>;

TEST(RunPlanTest, EachKindHasItsFiles) {
  const Testing::TinyStudy study;
  const RunPlan analysis = MakeRunPlan(study.File("analysis.xml"));
  ASSERT_EQ(analysis.runs.size(), 1U);
  EXPECT_EQ(analysis.kind, RunKind::kAnalysis);
  EXPECT_EQ(analysis.runs[0].inputs, (Strings{"data.csv"}));
  EXPECT_EQ(analysis.runs[0].outputs, (Strings{"out\\analysis.log", "out\\mcmc\\Summary.csv",
                                               "out\\mcmc\\Chain.csv", "out\\fitted.csv"}));
  EXPECT_EQ(analysis.runs[0].seedType, "Vector");
  EXPECT_EQ(analysis.runs[0].seedWords, (Strings{"3", "5"}));
  const RunPlan prediction = MakeRunPlan(study.File("prediction.xml"));
  ASSERT_EQ(prediction.runs.size(), 1U);
  EXPECT_EQ(prediction.runs[0].inputs, (Strings{"data.csv", "coefficients.csv"}));
  EXPECT_EQ(prediction.runs[0].outputs,
            (Strings{"out\\prediction.log", "out\\predicted.csv", "out\\hospital.csv"}));
  const RunPlan validation = MakeRunPlan(study.File("validation.xml"));
  ASSERT_EQ(validation.runs.size(), 1U);
  EXPECT_EQ(validation.runs[0].inputs, (Strings{"data.csv", "coefficients.csv", "individual.csv"}));
  EXPECT_EQ(validation.runs[0].outputs, (Strings{"out\\validation.log", "out\\cstatistics.csv"}));
}

TEST(RunPlanTest, BatchesAreFollowed) {
  const Testing::TinyStudy study;
  study.Write("inner.xml", BatchText({study.File("prediction.xml"), study.File("none.xml")}));
  const RunPlan plan = MakeRunPlan(
      study.Write("batch.xml", BatchText({study.File("analysis.xml"), study.File("inner.xml"),
                                          study.File("analysis.xml")})));
  EXPECT_EQ(plan.kind, RunKind::kBatch);
  ASSERT_EQ(plan.runs.size(), 3U);
  EXPECT_EQ(plan.runs[0].kind, RunKind::kAnalysis);
  EXPECT_EQ(plan.runs[1].kind, RunKind::kPrediction);
  EXPECT_EQ(plan.runs[2].definition, study.File("analysis.xml"));
}

TEST(RunPlanTest, ACircleOfBatchesEnds) {
  const Testing::TinyStudy study;
  study.Write("one.xml", BatchText({study.File("analysis.xml"), study.File("two.xml")}));
  study.Write("two.xml", BatchText({study.File("one.xml")}));
  EXPECT_EQ(MakeRunPlan(study.File("one.xml")).runs.size(), 1U);
}

TEST(RunPlanTest, BatchesThatGrowWithoutEndAreGivenUp) {
  // Each of 30 files names the next one twice: a thousand million runs.
  const Testing::TinyStudy study;
  for (int i = 0; i < 30; ++i) {
    const std::string next = study.File("b" + std::to_string(i + 1) + ".xml");
    study.Write("b" + std::to_string(i) + ".xml", BatchText({next, next}));
  }
  study.Write("b30.xml", Testing::AnalysisText());
  EXPECT_LE(MakeRunPlan(study.File("b0.xml")).runs.size(), 10'000U);
}

TEST(RunPlanTest, WhatCannotBeReadPlansNothing) {
  const ScratchFolder folder;
  EXPECT_TRUE(MakeRunPlan(folder.File("none.xml")).runs.empty());
  EXPECT_TRUE(MakeRunPlan(folder.Path().string()).runs.empty());
  EXPECT_TRUE(MakeRunPlan(folder.Write("other.xml", "<Study></Study>")).runs.empty());
  const std::string cut = Replaced(Testing::AnalysisText(), "</Analysis>", "");
  EXPECT_TRUE(MakeRunPlan(folder.Write("cut.xml", cut)).runs.empty());
}

TEST(RunPlanTest, PassesAreNotNegative) {
  const ScratchFolder folder;
  std::string text = Replaced(Testing::AnalysisText(), "<Burnin>0<", "<Burnin>-4<");
  text = Replaced(text, "<Steps>0<", "<Steps> 25<");
  const RunPlan plan = MakeRunPlan(folder.Write("a.xml", text));
  ASSERT_EQ(plan.runs.size(), 1U);
  EXPECT_EQ(plan.runs[0].burnin, 0);
  EXPECT_EQ(plan.runs[0].steps, 25);
}

}  // namespace
}  // namespace Hovar
