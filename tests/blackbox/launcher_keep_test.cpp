// `hovar --keep`: earlier outputs are moved aside.

#include <gtest/gtest.h>

#include "launcher_runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

TEST(KeepTest, EarlierOutputsGetTheFirstFreeNumber) {
  const TinyStudy study;
  EXPECT_EQ(RunLauncher(study, {"prediction.xml"}).exitStatus, 0);
  study.Write("out/predicted.csv", "first");
  study.Write("out/predicted.csv.1", "older");
  study.Write("out/bystander.csv", "stays");
  const ProcessResult result = RunLauncher(study, {"--keep", "prediction.xml"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.error, Shown("hovar: kept out\\prediction.log as out\\prediction.log.1\n"
                                "hovar: kept out\\predicted.csv as out\\predicted.csv.2\n"
                                "hovar: kept out\\hospital.csv as out\\hospital.csv.1\n"));
  EXPECT_EQ(study.Read("out/predicted.csv.2"), "first");
  EXPECT_EQ(study.Read("out/predicted.csv.1"), "older");
  EXPECT_EQ(study.Read("out/bystander.csv"), "stays");
  EXPECT_EQ(study.Read("out/hospital.csv"), study.Read("out/hospital.csv.1"));
  EXPECT_EQ(RunLauncher(study, {"--keep", "prediction.xml"}).exitStatus, 0);
  EXPECT_TRUE(study.Has("out/predicted.csv.3"));
}

TEST(KeepTest, WithoutEarlierOutputsNothingIsSaid) {
  const TinyStudy study;
  const ProcessResult plain = RunLauncher(study, {"validation.xml"});
  fs::remove_all(study.Path() / "out");
  const ProcessResult result = RunLauncher(study, {"--keep", "validation.xml"});
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.output, plain.output);
}

TEST(KeepTest, ARecordAndTheOutputOfTheBarAreKeptToo) {
  const TinyStudy study;
  const std::vector<std::string> arguments{"--keep", "--json", "run.json", "--progress",
                                           "analysis.xml"};
  EXPECT_EQ(RunLauncher(study, arguments).exitStatus, 0);
  const std::string record = study.Read("run.json");
  EXPECT_EQ(RunLauncher(study, arguments).exitStatus, 0);
  EXPECT_EQ(study.Read("run.json.1"), record);
  EXPECT_TRUE(study.Has("out/analysis.log.output.txt.1"));
  EXPECT_TRUE(study.Has("out/mcmc/Chain.csv.1"));
}

TEST(KeepTest, WhatABatchMakesForItselfMayBeThere) {
  const TinyStudy study;
  study.Write("prediction.xml",
              Replaced(PredictionText(), ">coefficients.csv<", ">out/fitted.csv<"));
  study.Write("batch.xml", BatchText({"analysis.xml", "prediction.xml"}));
  EXPECT_EQ(RunLauncher(study, {"--keep", "batch.xml"}).exitStatus, 0);
  EXPECT_EQ(RunLauncher(study, {"--keep", "batch.xml"}).exitStatus, 0);
  EXPECT_TRUE(study.Has("out/fitted.csv.1"));
}

TEST(KeepTest, AnInputIsNotMovedAside) {
  const TinyStudy study;
  study.Write("analysis.xml",
              Replaced(Replaced(AnalysisText(), ">out<", ">.<"), ">analysis.log<", ">data.csv<"));
  const std::string data = study.Read("data.csv");
  const ProcessResult result = RunLauncher(study, {"--keep", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error,
            "hovar: --keep would move data.csv aside, which is an input too; nothing "
            "was run\n");
  EXPECT_EQ(study.Read("data.csv"), data);
}

}  // namespace
}  // namespace Testing
