// The values of a definition's elements: texts, numbers, the flag, seeds, the list of a batch.

#include <gtest/gtest.h>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

struct Kind {
  std::string text;
  std::vector<std::string> integers;
  std::vector<std::string> reals;
  std::vector<std::string> texts;
};

std::vector<Kind> Kinds() {
  return {{AnalysisText(),
           {"NumberOfPoaIndicators", "MaxIterations", "Thinning", "Burnin", "Steps"},
           {"Tolerance", "PriorPrecision"},
           {"Data", "Folder", "RegressionCoefficients", "McmcSubFolder", "LogFile",
            "UseGeneralizedEstimatingEquations"}},
          {PredictionText(),
           {"NumberOfPoaIndicators", "Thinning", "Burnin", "Steps"},
           {},
           {"Data", "RegressionCoefficients", "Folder", "IndividualPredictions",
            "HospitalPredictions", "LogFile"}},
          {ValidationText(),
           {"NumberOfPoaIndicators", "Thinning", "Burnin", "Steps"},
           {},
           {"Data", "RegressionCoefficients", "IndividualPredictions", "Folder", "CStatistics",
            "LogFile"}}};
}

/// The definition with another value in the first element of this name that holds one.
std::string WithValue(std::string text, const std::string& name, const std::string& value) {
  const std::size_t start = text.find("<" + name + ">") + name.size() + 2;
  return text.replace(start, text.find('<', start) - start, value);
}

void ExpectDefinitionError(const std::string& text, const std::string& line) {
  const TinyStudy study;
  study.Write("d.xml", text);
  ExpectError(RunHovar(study, {"d.xml"}), line);
  EXPECT_FALSE(study.Has("out"));
}

void ExpectRuns(const std::string& text) {
  const TinyStudy study;
  study.Write("d.xml", text);
  const ProcessResult result = RunHovar(study, {"d.xml"});
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.exitStatus, 0);
}

TEST(DefinitionNumberTest, AWrongIntegerIsRejected) {
  struct Row {
    const char* value;
    std::string error;
  };
  const std::vector<Row> rows = {
      // The number ends at the first byte that cannot go on with it; then the end tag is due.
      {"12abc", Mismatch("d.xml", "<", "a")},
      {"1.5", Mismatch("d.xml", "<", ".")},
      {"0x1", Mismatch("d.xml", "<", "x")},
      {"1 2", Mismatch("d.xml", "<", "2")},
      {"1e2", Mismatch("d.xml", "<", "e")},
      // No number stands there.
      {"", "IO Exception"},
      {" ", "IO Exception"},
      {"abc", "IO Exception"},
      {"-", "IO Exception"},
      {"+-1", "IO Exception"},
  };
  for (const Kind& kind : Kinds()) {
    for (const std::string& name : kind.integers) {
      for (const Row& row : rows) {
        SCOPED_TRACE(name + " " + row.value);
        ExpectDefinitionError(WithValue(kind.text, name, row.value), row.error);
      }
    }
  }
}

TEST(DefinitionNumberTest, AWrongRealIsRejected) {
  struct Row {
    const char* value;
    std::string error;
  };
  const std::vector<Row> rows = {
      {"12abc", Mismatch("d.xml", "<", "a")},
      {"1,5", Mismatch("d.xml", "<", ",")},
      {"1.5.2", Mismatch("d.xml", "<", ".")},
      {"", "IO Exception"},
      {"abc", "IO Exception"},
      {".", "IO Exception"},
      {"0x", "IO Exception"},
  };
  for (const char* name : {"Tolerance", "PriorPrecision"}) {
    for (const Row& row : rows) {
      SCOPED_TRACE(std::string(name) + " " + row.value);
      ExpectDefinitionError(WithValue(AnalysisText(), name, row.value), row.error);
    }
  }
}

TEST(DefinitionNumberTest, AFileThatEndsWhereANumberIsDueEndsTooEarly) {
  for (const Kind& kind : Kinds()) {
    std::vector<std::string> names = kind.integers;
    names.insert(names.end(), kind.reals.begin(), kind.reals.end());
    for (const std::string& name : names) {
      const std::string tag = "<" + name + ">";
      const std::string start = kind.text.substr(0, kind.text.find(tag) + tag.size());
      for (const char* rest : {"", " ", "\n\t", "12", "12 "}) {
        SCOPED_TRACE(name + rest);
        ExpectDefinitionError(start + rest, "Unexpected end of stream");
      }
    }
  }
}

TEST(DefinitionNumberTest, NumbersAreReadAsTheCLibraryReadsThem) {
  for (const char* one : {"1", " 1", "\r\n\t 1 ", "+1", "0001", "4294967297"}) {
    SCOPED_TRACE(one);
    ExpectRuns(WithValue(PredictionText(), "NumberOfPoaIndicators", one));
  }
  for (const char* real : {"1e-9", ".000000001", "+1E-9", "0x1p-30", " 1e-9 "}) {
    SCOPED_TRACE(real);
    ExpectRuns(WithValue(AnalysisText(), "Tolerance", real));
  }
  // An exponent without digits is ignored.
  ExpectRuns(WithValue(AnalysisText(), "PriorPrecision", "1e"));
}

TEST(DefinitionTextTest, ANulByteIsRejected) {
  for (const Kind& kind : Kinds()) {
    for (const std::string& name : kind.texts) {
      for (const std::string& value : {std::string("a\0b", 3), std::string("\0", 1)}) {
        SCOPED_TRACE(name);
        ExpectDefinitionError(WithValue(kind.text, name, value), "Invalid input string");
      }
    }
  }
  ExpectDefinitionError(Replaced(BatchText({"#"}), "#", std::string("a\0", 2)),
                        "Invalid input string");
}

TEST(DefinitionTextTest, ANulByteInARequiredNameIsRejected) {
  ExpectDefinitionError(Replaced(PredictionText(), "<Data>", std::string("<Da\0a>", 6)),
                        "Invalid argument");
}

TEST(DefinitionTextTest, TextsAreTakenAsTheyStand) {
  for (const char* name : {" data.csv", "data.csv\t", "\ndata.csv", "data.csv\r", "a&amp;b.csv",
                           "> data.csv", "\"data.csv\""}) {
    SCOPED_TRACE(name);
    const TinyStudy study;
    study.Write("d.xml", WithValue(PredictionText(), "Data", name));
    ExpectError(RunHovar(study, {"d.xml"}), CannotOpen(name));
  }
}

TEST(DefinitionFlagTest, OnlyTrueAndFalseAreFlags) {
  for (const char* value : {"True", "FALSE", "1", "0", "yes", "", " true", "true ", "\ntrue", "tru",
                            "truee", "falsetrue", "false\r"}) {
    SCOPED_TRACE(value);
    ExpectDefinitionError(WithValue(AnalysisText(), "UseGeneralizedEstimatingEquations", value),
                          "Invalid value in \"UseGeneralizedEstimatingEquations\" tag");
  }
}

TEST(DefinitionFlagTest, TrueChoosesGeneralizedEstimatingEquations) {
  // Records of one hospital resemble each other, so the working correlation is positive.
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA\n"
              "a,A,1,1\nb,A,1,1\nc,A,1,0\nd,A,0,0\n"
              "e,B,0,0\nf,B,0,0\ng,B,0,0\nh,B,1,0\n"
              "i,C,1,1\nj,C,1,0\nk,C,1,0\nl,C,1,0\n"
              "m,D,0,0\nn,D,0,0\no,D,0,0\np,D,0,0\n");
  study.Write("d.xml", WithValue(AnalysisText(), "UseGeneralizedEstimatingEquations", "true"));
  const ProcessResult result = RunHovar(study, {"d.xml"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_NE(result.output.find("\nRegression analysis GEE:\n"), std::string::npos);
  EXPECT_NE(result.output.find("\nMCMC Analysis GEE:\n"), std::string::npos);
}

std::string WithSeed(const std::string& seed) {
  const std::string text = PredictionText();
  const std::size_t start = text.find("<Seed xsi");
  return std::string(text).replace(start, text.find("<Thinning>") - start, seed);
}

std::string VectorSeed(const std::string& first, const std::string& second) {
  return "<Seed xsi:type=\"Vector\"><Seed><Element>" + first + "</Element><Element>" + second +
         "</Element></Seed></Seed>";
}

TEST(DefinitionSeedTest, AWrongSeedIsRejected) {
  const std::string invalid = "Invalid RandomGenerator XML input";
  const std::string missing = "Attribute not found in XML tag";
  const std::string ended = "Unexpected end of stream";
  struct Row {
    std::string seed;
    std::string error;
  };
  const std::vector<Row> rows = {
      {"<Seed />", missing},
      {"<Seed>", missing},
      {"<Seed type=\"Randomize\" />", missing},
      {"<Seed xsi:Type=\"Randomize\" />", missing},
      {"<Seed/>", invalid},  // its name is "Seed/"
      {"<Sead xsi:type=\"Randomize\" />", invalid},
      {"<seed xsi:type=\"Randomize\" />", invalid},
      {"<Seed xsi:type=\"randomize\" />", invalid},
      {"<Seed xsi:type=\"Clock\" />", invalid},
      {"<Seed xsi:type=\"\" />", invalid},
      {"<Seed xsi:type=\"Randomize\"></Seed>", invalid},
      {"<Seed xsi:type=\"Vector\" />", invalid},
      {"<?Seed xsi:type=\"Randomize\" ?>", invalid},
      {"", invalid},  // the next element is Thinning
      {"<Seed xsi:type=\"Randomize\" xsi:type=\"Vector\" />",
       "Duplicate attributes not allowed in XML tag"},
      {"<Seed xsi:type='Randomize' />", Mismatch("d.xml", "\"", "'")},
      {"<Seed xsi:type=\"Vector\"><Seed a=\"1\">", Mismatch("d.xml", ">", "a")},
      {"<Seed xsi:type=\"Vector\"><Element>3</Element>", Mismatch("d.xml", "Seed", "Elem")},
      {"<Seed xsi:type=\"Vector\"><Seed><Element>3</Element></Seed></Seed>",
       Mismatch("d.xml", "Element", "/Seed><")},
      {VectorSeed("3", "5</Element><Element>7"), Mismatch("d.xml", "/", "E")},
      {VectorSeed("abc", "5"), ended},
      {VectorSeed("", "5"), ended},
      {VectorSeed("3", "x"), ended},
      {VectorSeed("3", "<!-- 5 -->"), ended},
      {VectorSeed("3x", "5"), Mismatch("d.xml", "<", "x")},
      {VectorSeed("3", "5.5"), Mismatch("d.xml", "<", ".")},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.seed);
    ExpectDefinitionError(WithSeed(row.seed), row.error);
  }
}

TEST(DefinitionSeedTest, ASeedIsTakenFromTheClockOrFromTwoWords) {
  for (const std::string& seed :
       {std::string("<Seed xsi:type=\"Randomize\" />"),
        std::string("<Seed xsi:type=\"Randomize\"/>"),
        std::string("<Seed a=\"b\" xsi:type = \"Randomize\"\n/>"), VectorSeed("0", "0"),
        VectorSeed(" 3", "\n4294967295 "), VectorSeed("-1", "+5")}) {
    SCOPED_TRACE(seed);
    ExpectRuns(WithSeed(seed));
  }
}

/// A chain of the tiny study with this seed.
std::string ChainWithSeed(const std::string& first, const std::string& second) {
  const TinyStudy study;
  std::string text = AnalysisText();
  text = Replaced(text, "<Element>3<", "<Element>" + first + "<");
  text = Replaced(text, "<Element>5<", "<Element>" + second + "<");
  study.Write("d.xml", Replaced(text, "<Steps>0<", "<Steps>3<"));
  EXPECT_EQ(RunHovar(study, {"d.xml"}).exitStatus, 0);
  return study.Read("out/mcmc/Chain.csv");
}

TEST(DefinitionSeedTest, AWordOfZeroIsTakenAsOne) {
  EXPECT_EQ(ChainWithSeed("0", "0"), ChainWithSeed("1", "1"));
  EXPECT_EQ(ChainWithSeed("0", "7"), ChainWithSeed("1", "7"));
  EXPECT_NE(ChainWithSeed("7", "0"), ChainWithSeed("0", "7"));
  EXPECT_NE(ChainWithSeed("2", "1"), ChainWithSeed("1", "1"));
}

TEST(DefinitionSeedTest, WordsAreUnsigned) {
  EXPECT_EQ(ChainWithSeed("-1", "5"), ChainWithSeed("4294967295", "5"));
}

TEST(DefinitionListTest, OnlySimulationsMayStandInTheListOfABatch) {
  for (const char* entry :
       {"<Simulation />", "<Simulation/>", "<Simulations>", "<simulation>x</simulation>",
        "<Definition>x</Definition>", "<?xml version=\"1.0\"?>", "</Simulation>", "</Batch>"}) {
    SCOPED_TRACE(entry);
    ExpectDefinitionError(Replaced(BatchText({"prediction.xml"}), "</Simulations>",
                                   std::string(entry) + "</Simulations>"),
                          "Invalid XML simulation");
  }
}

TEST(DefinitionListTest, AWrongListOfABatchIsRejected) {
  const std::string start = "<Batch><Simulations>";
  ExpectDefinitionError(start + "x</Simulations></Batch>", Mismatch("d.xml", "<", "x"));
  ExpectDefinitionError(start + "<Simulation>a</Simulatio></Simulations></Batch>",
                        Mismatch("d.xml", "Simulation", "Simulatio>"));
  ExpectDefinitionError(start + "<Simulation>a<Simulation>", Mismatch("d.xml", "/", "S"));
  ExpectDefinitionError(start + "<Simulation>a</Simulation>", "Unexpected end of stream");
  ExpectDefinitionError(start + "</Simulations></Batches>", Mismatch("d.xml", ">", "e"));
  ExpectDefinitionError("<Batch><Simulations /></Batch>", Mismatch("d.xml", ">", "/"));
  ExpectDefinitionError("<Batch><Simulation>a</Simulation></Batch>",
                        Mismatch("d.xml", "Simulations", "Simulation>"));
}

TEST(DefinitionListTest, AttributesOfASimulationMeanNothing) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(BatchText({"prediction.xml"}), "<Simulation>",
                                "<!-- first --><Simulation name=\"first\">"));
  EXPECT_EQ(RunHovar(study, {"d.xml"}).exitStatus, 0);
  EXPECT_TRUE(study.Has("out/predicted.csv"));
}

}  // namespace
}  // namespace Testing
