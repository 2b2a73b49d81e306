// `hovar --check` on batches: what one run writes is another one's input, or in its way.

#include <gtest/gtest.h>

#include <filesystem>

#include "check_runs.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

TEST(CheckBatchTest, Batches) {
  const std::string predict = Replaced(PredictionText(), "coefficients.csv", "out\\fitted.csv");
  const std::string validate =
      Replaced(Replaced(ValidationText(), "coefficients.csv", "out/fitted.csv"), "individual.csv",
               "out/predicted.csv");
  const std::vector<std::pair<std::string, std::string>> chain = {{"predict.xml", predict},
                                                                  {"validate.xml", validate}};
  const std::string bad = Replaced(PredictionText(), "<Data>", "<data>");
  ExpectRows({
      {"each uses what the one before wrote",
       BatchText({"analysis.xml", "predict.xml", "validate.xml"}), chain, ""},
      {"in the wrong order", BatchText({"predict.xml", "analysis.xml"}), chain, "predict.xml:5:25"},
      {"nested",
       BatchText({"b.xml", "b.xml"}),
       {{"b.xml", BatchText({"c.xml", "validation.xml"})},
        {"c.xml", BatchText({"prediction.xml"})}},
       ""},
      {"a fault in the last one",
       BatchText({"validation.xml", "bad.xml"}),
       {{"bad.xml", bad}},
       "bad.xml:3:1"},
      {"a folder that the first one makes",
       BatchText({"prediction.xml", "deep.xml"}),
       {{"deep.xml", Replaced(PredictionText(), "<Folder>out<", "<Folder>out/deep<")}},
       ""},
      {"a folder that the last one makes",
       BatchText({"deep.xml", "prediction.xml"}),
       {{"deep.xml", Replaced(PredictionText(), "<Folder>out<", "<Folder>out/deep<")}},
       "deep.xml:8:9"},
      {"a log as input",
       BatchText({"prediction.xml", "p.xml"}),
       {{"p.xml", Replaced(PredictionText(), "coefficients.csv", "out/prediction.log")}},
       "p.xml:5:25"},
      {"a definition that was overwritten",
       BatchText({"p.xml", "analysis.xml"}),
       {{"p.xml", Replaced(Replaced(PredictionText(), "<Folder>out<", "<Folder>.<"),
                           "predicted.csv", "analysis.xml")}},
       "d.xml:4:13"},
      {"the same run twice", BatchText({"analysis.xml", "analysis.xml"}), {}, ""},
  });
}

TEST(CheckBatchTest, RunsOfABatchThatMeet) {
  ExpectWarnings({
      {BatchText({"prediction.xml", "v.xml"}),
       {{"v.xml", Replaced(ValidationText(), "validation.log", "prediction.log")}},
       "v.xml:11:10",
       Shown("The log file \"out\\prediction.log\" is also") +
           " the log file of "
           "\"prediction.xml\", which goes on writing at its old place in it."},
      {BatchText({"prediction.xml", "v.xml"}),
       {{"v.xml", Replaced(ValidationText(), "cstatistics.csv", "predicted.csv")}},
       "v.xml:10:14",
       "is also the file of individual predictions of \"prediction.xml\", which would be "
       "overwritten."},
      {BatchText({"prediction.xml", "v.xml"}),
       {{"v.xml", Replaced(ValidationText(), "individual.csv", "out/predicted.csv")},
        {"out/predicted.csv", "from an earlier batch"}},
       "prediction.xml:9:24",
       "exists and would be overwritten"},
  });
  const TinyStudy study;
  study.Write("d.xml", BatchText({"validation.xml", "validation.xml"}));
  EXPECT_NE(CheckDefinition(study).output.find("validation.xml:11:10: warning: The log file \"" +
                                               Shown("out\\validation.log") +
                                               "\" is also the "
                                               "log file of \"validation.xml\", which"),
            std::string::npos);
  // What another kind of file would be read as cannot be known in advance.
  study.Write("d.xml", BatchText({"prediction.xml", "p.xml"}));
  study.Write("p.xml", Replaced(Replaced(PredictionText(), "coefficients.csv", "out/hospital.csv"),
                                "<Folder>out<", "<Folder>two<"));
  const ProcessResult check = CheckDefinition(study);
  EXPECT_TRUE(
      check.output.starts_with("p.xml:5:25: warning: The coefficient file "
                               "\"out/hospital.csv\" is written before by "
                               "\"prediction.xml\" as its file of hospital predictions."))
      << check.output;
}

}  // namespace
}  // namespace Testing
