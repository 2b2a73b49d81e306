// `hovar --json` around whole runs: what the record of a run says.

#include <gtest/gtest.h>

#include "launcher_runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

/// An analysis that reaches the iteration limit in each fit, and in each of 2 + 3 iterations.
std::string WarningAnalysisText() {
  std::string text = ChainedAnalysisText(2, 3);
  for (int i = 0; i < 2; ++i) {
    text = Replaced(text, "<MaxIterations>50<", "<MaxIterations>1<");
  }
  return text;
}

TEST(RunRecordTest, TellsInputsSeedAndEnd) {
  const TinyStudy study;
  const ProcessResult result = RunLauncher(study, {"--json", "run.json", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 0);
  const std::string record = study.Read("run.json");
  ExpectHolds(record, "\"format\": \"hovar run record\"");
  ExpectHolds(record, "\"version\": \"" HOVAR_VERSION "\"");
  ExpectHolds(record, "\"exitStatus\": 0");
  ExpectHolds(record, "\"error\": null");
  ExpectHolds(record, "\"kind\": \"Analysis\"");
  // sha256sum data.csv
  ExpectHolds(record,
              "\"path\": \"data.csv\",\n        \"sha256\": "
              "\"04b8c93ce8e0a6429c98d0ed50cf883d4b1b78e407442221df90bbe13c5a5efd\"");
  ExpectHolds(record,
              "\"type\": \"Vector\",\n        \"elements\": [\n          \"3\",\n"
              "          \"5\"\n        ]");
  ExpectHolds(record, "\"warnings\": []");
  EXPECT_FALSE(HasTemporaryFile(study));
}

TEST(RunRecordTest, TellsWhatIsNotFitForInference) {
  const auto recordOf = [](const std::string& analysis) {
    const TinyStudy study;
    study.Write("data.csv", kClusteredData);
    study.Write("analysis.xml", analysis);
    study.Write("prediction.xml",
                Replaced(PredictionText(), ">coefficients.csv<", ">out/fitted.csv<"));
    study.Write("batch.xml", BatchText({"analysis.xml", "prediction.xml"}));
    EXPECT_EQ(RunLauncher(study, {"--json", "run.json", "batch.xml"}).exitStatus, 0);
    return study.Read("run.json");
  };
  const auto count = [](const std::string& text, const std::string& part) {
    int found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
      ++found;
    }
    return found;
  };
  const std::string independent = recordOf(ChainedAnalysisText(2, 3));
  EXPECT_EQ(count(independent, "\"generalizedEstimatingEquations\": false"), 2) << independent;
  EXPECT_EQ(count(independent, "\"notFitForInference\": null"), 2) << independent;
  const std::string drawn = recordOf(Clustered(ChainedAnalysisText(2, 3)));
  EXPECT_EQ(count(drawn, "\"generalizedEstimatingEquations\": true"), 2) << drawn;
  EXPECT_EQ(count(drawn,
                  "\"notFitForInference\": \"the fifth block, E[Y|X,P=0]-MCMC; where P is missing, "
                  "also E[P|YPXZ], the observed E[Y|P=0], and E[Y|X,P=0] with its C-statistic; "
                  "where an X is missing, also E[P|X], and E[Y|X] and E[Y|X,P=0] with their "
                  "C-statistics\""),
            2)
      << drawn;
  // The fifth block is made from the draws of the burn-in when there are no others.
  const std::string burnin = recordOf(Clustered(ChainedAnalysisText(3, 0)));
  EXPECT_EQ(count(burnin, "\"notFitForInference\": \"the fifth block"), 2) << burnin;
  // Without steps the Analysis keeps no draws; its fifth block serves for no Prediction all the
  // same.
  const std::string fixed = recordOf(Clustered(ChainedAnalysisText(0, 0)));
  EXPECT_EQ(count(fixed, "\"generalizedEstimatingEquations\": true"), 2) << fixed;
  EXPECT_EQ(count(fixed, "\"notFitForInference\": null"), 1) << fixed;
  EXPECT_EQ(count(fixed, "\"notFitForInference\": \"the fifth block"), 1) << fixed;
}

TEST(RunRecordTest, CoefficientsThatAreNotThereTellNothing) {
  const TinyStudy study;
  fs::remove(study.Path() / "coefficients.csv");
  EXPECT_EQ(RunLauncher(study, {"--json", "run.json", "prediction.xml"}).exitStatus, 1);
  ExpectHolds(study.Read("run.json"), "\"generalizedEstimatingEquations\": null");
  ExpectHolds(study.Read("run.json"), "\"notFitForInference\": null");
}

TEST(RunRecordTest, TheRunIsThatOfThePlainCommand) {
  const TinyStudy plain;
  const TinyStudy recorded;
  for (const TinyStudy* study : {&plain, &recorded}) {
    study->Write("batch.xml", BatchText({"analysis.xml", "prediction.xml", "validation.xml"}));
    study->Write("analysis.xml", WarningAnalysisText());
  }
  const ProcessResult expected = RunLauncher(plain, {"batch.xml"});
  const ProcessResult result = RunLauncher(recorded, {"--json", "run.json", "batch.xml"});
  EXPECT_EQ(WithoutSeconds(result.output), WithoutSeconds(expected.output));
  EXPECT_EQ(result.error, expected.error);
  EXPECT_EQ(result.exitStatus, 0);
  std::set<std::string> files = FilesBelow(recorded);
  EXPECT_EQ(files.erase("run.json"), 1U);
  EXPECT_EQ(files, FilesBelow(plain));
  for (const std::string& file : files) {
    EXPECT_EQ(recorded.Read(file), plain.Read(file)) << file;
  }
}

TEST(RunRecordTest, WarningsStandWithTheirFitAndIterations) {
  const TinyStudy study;
  study.Write("analysis.xml", WarningAnalysisText());
  EXPECT_EQ(RunLauncher(study, {"--json", "run.json", "analysis.xml"}).exitStatus, 0);
  const std::string record = study.Read("run.json");
  for (const char* fit : {"[P|X]", "[Y|X,P=0]"}) {
    ExpectHolds(record,
                "\"text\": \"Warning: Maximum number of iterations reached\",\n"
                "          \"reason\": null,\n          \"fit\": \"" +
                    std::string(fit) + "\",\n          \"count\": 1\n");
  }
  ExpectHolds(record,
              "\"fit\": \"[Y|X,P=0,MCMC]\",\n          \"count\": 5,\n"
              "          \"iterations\": {\n            \"burnin\": 2,\n"
              "            \"main\": 3,\n            \"firstBurnin\": 1,\n"
              "            \"firstMain\": 1\n");
}

constexpr const char* kChanged = " changed during the run; the record has its hash from before\n";

TEST(RunRecordTest, FilesThatStayAreNotSaidToHaveChanged) {
  const TinyStudy study;
  study.Write("batch.xml", BatchText({"analysis.xml", "prediction.xml"}));
  const ProcessResult result = RunLauncher(study, {"--json", "run.json", "batch.xml"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(study.Read("run.json").find("changed"), std::string::npos);
}

// Two runs change files by themselves: their logs have the names of a definition and of data.
TEST(RunRecordTest, TellsWhichFilesHaveChanged) {
  const TinyStudy study;
  study.Write("other.csv", kTinyData);
  study.Write("first.xml", Replaced(AnalysisText(), ">analysis.log<", ">../first.xml<"));
  study.Write("second.xml",
              Replaced(Replaced(PredictionText(), ">prediction.log<", ">../other.csv<"),
                       ">data.csv<", ">other.csv<"));
  study.Write("third.xml", Replaced(AnalysisText(), ">analysis.log<", ">third.log<"));
  study.Write("batch.xml", BatchText({"third.xml", "first.xml", "second.xml"}));
  const ProcessResult result = RunLauncher(study, {"--json", "run.json", "batch.xml"});
  EXPECT_EQ(result.exitStatus, 1);  // the second one reads its own log
  EXPECT_TRUE(result.error.ends_with(std::string("hovar: first.xml") + kChanged +
                                     "hovar: other.csv" + kChanged))
      << result.error;
  const std::string record = study.Read("run.json");
  const auto entry = [&record](const std::string& path) {
    const std::size_t start = record.find("\"path\": \"" + path + '"');
    return record.substr(start, record.find('}', start) - start);
  };
  const std::string change = ",\n        \"changedDuringRun\": true\n";
  ExpectHolds(entry("first.xml"), change);
  ExpectHolds(entry("other.csv"), change);
  for (const char* path : {"batch.xml", "third.xml", "second.xml", "data.csv"}) {
    EXPECT_EQ(entry(path).find("changed"), std::string::npos) << entry(path);
  }
  // sha256sum data.csv, which other.csv was a copy of
  ExpectHolds(entry("other.csv"),
              "\"04b8c93ce8e0a6429c98d0ed50cf883d4b1b78e407442221df90bbe13c5a5efd\"");
}

TEST(RunRecordTest, ABatchListsItsDefinitions) {
  const TinyStudy study;
  study.Write("batch.xml", BatchText({"analysis.xml", "prediction.xml"}));
  EXPECT_EQ(RunLauncher(study, {"--json", "run.json", "batch.xml"}).exitStatus, 0);
  const std::string record = study.Read("run.json");
  ExpectHolds(record, "\"kind\": \"Batch\"");
  for (const char* name : {"batch.xml", "analysis.xml", "prediction.xml"}) {
    ExpectHolds(record, "\"path\": \"" + std::string(name) + "\"");
  }
  ExpectHolds(record, "\"kind\": \"Prediction\"");
}

TEST(RunRecordTest, AFailedRunIsRecordedToo) {
  const TinyStudy study;
  fs::remove(study.Path() / "data.csv");
  const ProcessResult result = RunLauncher(study, {"--json", "run.json", "analysis.xml"});
  ExpectError(result, CannotOpen("data.csv"));
  const std::string record = study.Read("run.json");
  ExpectHolds(record, "\"exitStatus\": 1");
  ExpectHolds(record, "\"error\": \"Error: File \\\"data.csv\\\" can not be opened\"");
  ExpectHolds(record, "\"path\": \"data.csv\",\n        \"sha256\": null");
  ExpectError(RunLauncher(study, {"--json", "run.json", "none.xml"}), CannotOpen("none.xml"));
  ExpectHolds(study.Read("run.json"), "\"runs\": []");
}

TEST(RunRecordTest, BytesThatAreNoTextAreKept) {
  const TinyStudy study;
  fs::copy_file(study.Path() / "data.csv", study.Path() / "d\xFF.csv");
  study.Write("analysis.xml", Replaced(AnalysisText(), "data.csv", "d\xFF.csv"));
  EXPECT_EQ(RunLauncher(study, {"--json", "run.json", "analysis.xml"}).exitStatus, 0);
  // printf 'd\377.csv' | base64
  ExpectHolds(study.Read("run.json"),
              "\"path\": \"d\\ufffd.csv\",\n        \"pathBase64\": \"ZP8uY3N2\"");
}

TEST(RunRecordTest, ARecordThatCannotBeWrittenStopsTheRunBeforeItBegins) {
  const TinyStudy study;
  for (const auto& [file, reason] :
       {std::pair<std::string, std::string>{"none/run.json", "its folder does not exist"},
        {".", "it is a folder"}}) {
    const ProcessResult result = RunLauncher(study, {"--json", file, "analysis.xml"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "hovar: cannot write " + file + ": " + reason + "\n");
    EXPECT_FALSE(study.Has("out"));
  }
}

TEST(RunRecordTest, FilesThatTheRunWillWriteAreKnownByEverySpelling) {
  const TinyStudy study;
  for (const char* file : {"out/analysis.log", "./out\\analysis.log", "out/../out/analysis.log"}) {
    const ProcessResult result = RunLauncher(study, {"--json", file, "analysis.xml"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "hovar: the record cannot be written to " + std::string(file) +
                                ", a file of the run itself\n");
    EXPECT_FALSE(study.Has("out/analysis.log"));
  }
}

TEST(RunRecordTest, OutputThatCannotBeWrittenStopsTheProgram) {
  const TinyStudy study;
  study.Write("long.xml", LongAnalysisText());
  Command command = LauncherIn(study, {"--json", "run.json", "long.xml"});
  for (const Output output : {Output::kFull, Output::kBroken}) {
    command.output = output;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    EXPECT_EQ(result.error, "hovar: cannot write to standard output\n");
  }
}

TEST(RunRecordTest, AMissingProgramIsNamed) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = CopyTreeTo(place.Path());
  fs::remove(place.Path() / ProgramFile());
  const ProcessResult result = RunLauncher(study, {"--json", "r.json", "analysis.xml"}, launcher);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.error, "hovar: cannot start " +
                              (fs::canonical(place.Path()) / ProgramFile()).generic_string() +
                              "\n");
  EXPECT_FALSE(study.Has("r.json"));
}

TEST(RunRecordTest, AChainWithoutBurninWarnsInItsMainPhaseAlone) {
  const TinyStudy study;
  study.Write("analysis.xml", Replaced(WarningAnalysisText(), "<Burnin>2<", "<Burnin>0<"));
  EXPECT_EQ(RunLauncher(study, {"--json", "run.json", "analysis.xml"}).exitStatus, 0);
  ExpectHolds(study.Read("run.json"),
              "\"count\": 3,\n          \"iterations\": {\n            \"burnin\": 0,\n"
              "            \"main\": 3,\n            \"firstBurnin\": null,\n"
              "            \"firstMain\": 1\n");
}

TEST(RunRecordTest, RecordsThatWereWarnedOfAreListed) {
  const TinyStudy study;
  study.Write("data.csv",
              Replaced(Replaced(kTinyData, "c,A,0,0", "c,A,0,1"), "f,B,0,0", "f,B,0,1"));
  EXPECT_EQ(RunLauncher(study, {"--json", "run.json", "prediction.xml"}).exitStatus, 0);
  ExpectHolds(study.Read("run.json"), "\"count\": 2,\n          \"records\": [2, 5]");
}

}  // namespace
}  // namespace Testing
