// Batches: order, nesting, what stays after an error, and who gets the log.

#include <gtest/gtest.h>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

const std::string kAnalysisProgress = std::string(kTinyReading) + kTinyElimination + kTinyFits;
const std::string kPredictionProgress = std::string(kTinyReading) +
                                        "Calculating individual predictions\n"
                                        "Calculating hospital-aggregated predictions\n";
const std::string kValidationProgress = std::string(kTinyReading) + "Y|Z\nY|X\nP|X\nP|YPZX\n0/1\n";

ProcessResult RunBatch(const TinyStudy& study, const std::vector<std::string>& definitions) {
  study.Write("batch.xml", BatchText(definitions));
  return RunHovar(study, {"batch.xml"});
}

TEST(BatchTest, RunsItsDefinitionsInTheirOrder) {
  const TinyStudy study;
  ExpectSuccess(RunBatch(study, {"validation.xml", "analysis.xml", "prediction.xml"}),
                kValidationProgress + kAnalysisProgress + kPredictionProgress);
  const TinyStudy other;
  ExpectSuccess(RunBatch(other, {"prediction.xml", "validation.xml", "prediction.xml"}),
                kPredictionProgress + kValidationProgress + kPredictionProgress);
}

TEST(BatchTest, ADefinitionMayUseWhatAnEarlierOneWrote) {
  const TinyStudy study;
  study.Write("predict.xml", Replaced(PredictionText(), "coefficients.csv", "out\\fitted.csv"));
  study.Write("validate.xml",
              Replaced(Replaced(ValidationText(), "coefficients.csv", "out\\fitted.csv"),
                       "individual.csv", "out/predicted.csv"));
  ExpectSuccess(RunBatch(study, {"analysis.xml", "predict.xml", "validate.xml"}),
                kAnalysisProgress + kPredictionProgress + kValidationProgress);
  // All predictions from intercepts alone are equal, but for E[P|YPXZ] on complete records.
  EXPECT_EQ(study.Read("out/cstatistics.csv"),
            "Estimate,C-Statistics\nE[Y|Z],0.5\nE[Y|X],0.5\n\"E[Y|X,P=0]\",0.5\n"
            "\"E[Y|X,P=0]-MCMC\",0.5\nE[P|X],0.5\nE[P|YPXZ],1\n");
}

TEST(BatchTest, AnEmptyListRunsNothing) {
  const ScratchFolder folder;
  folder.Write("batch.xml", BatchText({}));
  ExpectSuccess(RunHovar(folder, {"batch.xml"}), "");
  EXPECT_EQ(FilesBelow(folder), std::set<std::string>{"batch.xml"});
}

TEST(BatchTest, MayHoldBatches) {
  const TinyStudy study;
  study.Write("empty.xml", BatchText({}));
  study.Write("inner.xml", BatchText({"empty.xml", "prediction.xml"}));
  study.Write("middle.xml", BatchText({"inner.xml", "validation.xml", "inner.xml"}));
  ExpectSuccess(
      RunBatch(study, {"middle.xml", "analysis.xml", "empty.xml"}),
      kPredictionProgress + kValidationProgress + kPredictionProgress + kAnalysisProgress);
}

TEST(BatchTest, MayBeNestedAThousandLevelsDeep) {
  const TinyStudy study;
  constexpr int kLevels = 1000;
  for (int level = 1; level < kLevels; ++level) {
    study.Write(std::to_string(level) + ".xml", BatchText({std::to_string(level + 1) + ".xml"}));
  }
  study.Write(std::to_string(kLevels) + ".xml", BatchText({"prediction.xml"}));
  ExpectSuccess(RunBatch(study, {"1.xml", "prediction.xml"}),
                kPredictionProgress + kPredictionProgress);
}

TEST(BatchTest, AMissingDefinitionEndsItAfterTheEarlierOnesAreComplete) {
  const TinyStudy study;
  ExpectError(RunBatch(study, {"analysis.xml", "none.xml", "prediction.xml"}),
              CannotOpen("none.xml"), kAnalysisProgress);
  EXPECT_EQ(study.Read("out/fitted.csv"), std::string(kCoefficientHeader) + kTinyCoefficients);
  EXPECT_EQ(study.Read("out/analysis.log"), std::string(kTinyReadingLog) + kTinyElimination);
  EXPECT_FALSE(study.Has("out/prediction.log"));
}

TEST(BatchTest, ABadDefinitionEndsItAfterTheEarlierOnesAreComplete) {
  struct Row {
    std::string text;
    std::string error;
  };
  for (const Row& row :
       {Row{"<Study>", "Invalid definition file"}, Row{"<prediction>", "Invalid definition file"},
        Row{"", "Unexpected end of stream"},
        Row{"<Prediction><Output>", Mismatch("bad.xml", "Input", "Outpu")},
        Row{BatchText({"none.xml"}), CannotOpen("none.xml")},
        Row{"<Batch><Simulations><x>", "Invalid XML simulation"}}) {
    SCOPED_TRACE(row.text);
    const TinyStudy study;
    study.Write("bad.xml", row.text);
    ExpectError(RunBatch(study, {"validation.xml", "bad.xml", "prediction.xml"}), row.error,
                kValidationProgress);
    EXPECT_EQ(study.Read("out/cstatistics.csv"), kTinyStatistics);
    EXPECT_FALSE(study.Has("out/prediction.log"));
  }
}

TEST(BatchTest, ARunThatFailsEndsItAndItsInnerBatch) {
  const TinyStudy study;
  study.Write("bad.xml", Replaced(PredictionText(), "data.csv", "none.csv"));
  study.Write("inner.xml", BatchText({"validation.xml", "bad.xml", "analysis.xml"}));
  ExpectError(RunBatch(study, {"inner.xml", "analysis.xml"}), CannotOpen("none.csv"),
              kValidationProgress);
  EXPECT_FALSE(study.Has("out/analysis.log"));
}

TEST(BatchTest, ItsOwnListIsReadToTheEndBeforeAnythingRuns) {
  const TinyStudy study;
  study.Write("batch.xml", Replaced(BatchText({"analysis.xml"}), "</Batch>", "</Batches>"));
  ExpectError(RunHovar(study, {"batch.xml"}), Mismatch("batch.xml", ">", "e"));
  EXPECT_FALSE(study.Has("out"));
}

TEST(BatchTest, NamesInTheListAreTakenAsTheyStand) {
  const TinyStudy study;
  for (const char* name : {"", " prediction.xml", "prediction.xml\t", "a&amp;b.xml"}) {
    SCOPED_TRACE(name);
    ExpectError(RunBatch(study, {name}), CannotOpen(name));
  }
}

TEST(BatchTest, PathsAreTakenFromTheWorkingFolderNotFromTheBatch) {
  const TinyStudy study;
  study.Write("sub/batch.xml", BatchText({"prediction.xml"}));
  ExpectSuccess(RunHovar(study, {"sub/batch.xml"}), kPredictionProgress);
}

TEST(BatchTest, LogFilesOfEarlierRunsReceiveTheLinesOfLaterOnes) {
  const TinyStudy study;
  study.Write("inner.xml", BatchText({"prediction.xml"}));
  EXPECT_EQ(RunBatch(study, {"analysis.xml", "inner.xml", "validation.xml"}).exitStatus, 0);
  const std::string reading = kTinyReadingLog;
  EXPECT_EQ(study.Read("out/analysis.log"), reading + kTinyElimination + reading + reading);
  EXPECT_EQ(study.Read("out/prediction.log"), reading + reading);
  EXPECT_EQ(study.Read("out/validation.log"), reading);
}

TEST(BatchTest, LogFilesReceiveLaterLinesUpToAnError) {
  const TinyStudy study;
  study.Write("bad.xml", Replaced(ValidationText(), "individual.csv", "none.csv"));
  EXPECT_EQ(RunBatch(study, {"prediction.xml", "bad.xml"}).exitStatus, 1);
  const std::string reading = kTinyReadingLog;
  EXPECT_EQ(study.Read("out/prediction.log"), reading + reading);
  EXPECT_EQ(study.Read("out/validation.log"), reading);
}

}  // namespace
}  // namespace Testing
