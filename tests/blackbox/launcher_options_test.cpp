// The launcher's --json, --keep and --progress around whole runs.

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
  EXPECT_EQ(FilesBelow(study).count("run.json.output.part"), 0U);
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
  for (const char* file : {"none/run.json", "."}) {
    const ProcessResult result = RunLauncher(study, {"--json", file, "analysis.xml"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "hovar: cannot write " + std::string(file) + "\n");
    EXPECT_FALSE(study.Has("out"));
  }
}

TEST(RunRecordTest, FilesOfTheRunAreNotOverwritten) {
  const TinyStudy study;
  study.Write("batch.xml", BatchText({"analysis.xml", "prediction.xml"}));
  EXPECT_EQ(RunLauncher(study, {"batch.xml"}).exitStatus, 0);
  for (const char* file : {"batch.xml", "./prediction.xml", "data.csv", "coefficients.csv",
                           "out/fitted.csv", "out/mcmc/Chain.csv"}) {
    const std::string before = study.Read(file);
    const ProcessResult result = RunLauncher(study, {"--json", file, "batch.xml"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "hovar: the record cannot be written to " + std::string(file) +
                                ", a file of the run itself\n");
    EXPECT_EQ(study.Read(file), before);
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
  EXPECT_FALSE(study.Has("r.json.part"));
}

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

TEST(ProgressTest, TheBarReachesTheEndAndTheLinesAreInTheFile) {
  const TinyStudy study;
  study.Write("batch.xml", BatchText({"analysis.xml", "prediction.xml", "validation.xml"}));
  const std::pair<const char*, const char*> rows[] = {{"analysis.xml", "analysis.log"},
                                                      {"prediction.xml", "prediction.log"},
                                                      {"validation.xml", "validation.log"},
                                                      {"batch.xml", "analysis.log"}};
  for (const auto& [definition, log] : rows) {
    SCOPED_TRACE(definition);
    fs::remove_all(study.Path() / "out");
    const ProcessResult plain = RunLauncher(study, {definition});
    std::map<std::string, std::string> files;
    for (const std::string& file : FilesBelow(study)) {
      files[file] = study.Read(file);
    }
    fs::remove_all(study.Path() / "out");
    const ProcessResult result = RunLauncher(study, {"--progress", definition});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "");
    const std::string capture = "out/" + std::string(log) + ".output.txt";
    EXPECT_TRUE(
        result.error.ends_with("[####################] 100 %\n"
                               "hovar: done, 0 warnings; output in " +
                               Shown("out\\") + std::string(log) + ".output.txt\n"))
        << result.error;
    EXPECT_EQ(WithoutSeconds(study.Read(capture)), WithoutSeconds(plain.output));
    for (const auto& [file, content] : files) {
      EXPECT_EQ(study.Read(file), content) << file;
    }
    EXPECT_EQ(FilesBelow(study).size(), files.size() + 1);
  }
}

TEST(ProgressTest, WithoutAFileForTheLinesNothingIsRun) {
  const TinyStudy study;
  study.Write("out/analysis.log.output.txt/inside", "");
  const ProcessResult result = RunLauncher(study, {"--progress", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.error, "hovar: cannot write " + Shown("out\\analysis.log.output.txt") + "\n");
  EXPECT_FALSE(study.Has("out/fitted.csv"));
}

TEST(ProgressTest, AnErrorIsShown) {
  const TinyStudy study;
  fs::remove(study.Path() / "data.csv");
  const ProcessResult result = RunLauncher(study, {"--progress", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error, "Error: " + CannotOpen("data.csv") +
                              "\nhovar: not done, 0 warnings; output in " +
                              Shown("out\\analysis.log.output.txt") + "\n");
  EXPECT_EQ(study.Read("out/analysis.log.output.txt"),
            kBanner + ("Error: " + CannotOpen("data.csv")) + "\n" + kPrompt);
}

TEST(ProgressTest, WithoutALogTheLinesStandBesideTheDefinition) {
  const TinyStudy study;
  study.Write("broken.xml", "<Analysis>\n");
  EXPECT_EQ(RunLauncher(study, {"--progress", "broken.xml"}).exitStatus, 1);
  ExpectHolds(study.Read("broken.xml.output.txt"), "Error: ");
  study.Write("deep.xml", Replaced(AnalysisText(), ">out<", ">none/out<"));
  const ProcessResult result = RunLauncher(study, {"--progress", "deep.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  ExpectHolds(result.error, "Error: " + CannotOpen("none/out\\analysis.log") + "\n");
  EXPECT_TRUE(study.Has("deep.xml.output.txt"));
}

TEST(ProgressTest, ALongRunTellsItsTimeLeft) {
  const TinyStudy study;
  study.Write("analysis.xml", ChainedAnalysisText(20'000, 20'000));
  const ProcessResult result = RunLauncher(study, {"--progress", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 0);
  ExpectHolds(result.error, " left  Analysis, ");
  ExpectHolds(result.error, " of 20000\n");
  ExpectLacks(result.error, "\x1b");  // no terminal, no control
}

}  // namespace
}  // namespace Testing
