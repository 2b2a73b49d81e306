// `hovar --check` beside the program: over one table of good and bad files both must come to the
// same verdict, and the check must name the place. A place is the line and the column that an
// editor would show, worked out by hand from the texts of the tiny study, one element a line.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "check_runs.h"
#include "foundation/io/platform/platform.h"
#include "support/definition_tags.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;
namespace Platform = Vell::IO::Platform;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

TEST(CheckAgreementTest, GoodDefinitionsOfAllKinds) {
  ExpectRows({
      {"analysis", AnalysisText(), {}, ""},
      {"prediction", PredictionText(), {}, ""},
      {"validation", ValidationText(), {}, ""},
      {"empty batch", BatchText({}), {}, ""},
      {"batch", BatchText({"analysis.xml", "prediction.xml", "validation.xml"}), {}, ""},
      {"declaration", "<?xml version=\"1.0\"?>\n" + AnalysisText(), {}, ""},
      {"carriage returns", Replaced(AnalysisText(), "<Input>\n", "<Input>\r\n"), {}, ""},
  });
}

TEST(CheckAgreementTest, AttributesOfTheRootMeanNothing) {
  for (const std::string& text :
       {AnalysisText(), PredictionText(), ValidationText(), BatchText({"prediction.xml"})}) {
    const std::string schema =
        " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "xsi:noNamespaceSchemaLocation=\"../../share/hovar/hovar-definition.xsd\">";
    ExpectRows({{"schema", Replaced(text, ">", schema), {}, ""}});
  }
}

TEST(CheckAgreementTest, Grammar) {
  const std::string analysis = AnalysisText();
  const std::string batch = BatchText({"prediction.xml"});
  ExpectRows({
      {"byte order mark", "\xEF\xBB\xBF" + analysis, {}, "d.xml:1:1"},
      {"empty", "", {}, "d.xml:1:1"},
      {"no XML", "Key,Hospital\n", {}, "d.xml:1:1"},
      {"a declaration alone", "<?xml version=\"1.0\"?>\n", {}, "d.xml:2:1"},
      Changed(analysis, "<Analysis>", "<analysis>", "d.xml:1:1"),
      Changed(analysis, "<Analysis>", "<Analysis a='b'>", "d.xml:1:13"),
      Changed(analysis, "<Analysis>", "<Analysis a>", "d.xml:1:1"),
      Changed(analysis, "<Analysis>", "<Analysis a=\"1\" a=\"2\">", "d.xml:1:1"),
      Changed(analysis, "<Analysis>", "<Analysis /x>", "d.xml:1:1"),
      Changed(analysis, "<Analysis>", "<Analysis ?>", "d.xml:1:11"),
      Changed(analysis, "<Analysis>", "<>", "d.xml:1:1"),
      Changed(analysis, "<Analysis>", "</ x>", "d.xml:1:4"),
      Changed(analysis, "<Analysis>", "< x>", "d.xml:1:1"),
      {"an end without >", "<?xml version=\"1.0\"?x>\n" + analysis, {}, "d.xml:1:21"},
      {"an end without ?", "<?xml version=\"1.0\">\n" + analysis, {}, "d.xml:1:20"},
      {"a declaration without a blank",
       "<?foo?>\n" + analysis,
       {},
       "d.xml:1:6: error: A blank is required between the name of a declaration and ?>. Add one."},
      {"a declaration with a blank", "<?foo ?>\n" + analysis, {}, ""},
      Changed(analysis, "</Analysis>", "</Analyses>", "d.xml:39:1"),
      Changed(analysis, "</Analysis>", "", "d.xml:40:1"),
      Changed(analysis, "<Data>", "<data>", "d.xml:3:1"),
      Changed(analysis, "<Data>", "<DataFile>", "d.xml:3:1"),
      Changed(analysis, "<Data>", "<DataFile/>", "d.xml:3:1"),
      Changed(analysis, "<Data>", "<Data a=\"b\">", "d.xml:3:7"),
      Changed(analysis, "<Data>data.csv</Data>", "<Data/>", "d.xml:3:1"),
      Changed(analysis, "<Data>data.csv</Data>", "<Data />", "d.xml:3:1"),
      Changed(analysis, "<Data>data.csv</Data>\n", "", "d.xml:3:1"),
      Changed(analysis, "</Data>", "", "d.xml:4:1"),
      Changed(analysis, "</Data>", "</Date>", "d.xml:3:15"),
      Changed(analysis, "<Data>", "<Title>x</Title>\n<Data>", "d.xml:3:1"),
      Changed(analysis, "<Input>\n", "<Input>\n  text\n", "d.xml:3:3"),
      Changed(analysis, "<Input>\n", "<Input><!-- fine -->\n"),
      Changed(analysis, "<Input>", "<Input <!-- no -->>", "d.xml:2:8"),
      Changed(analysis, ">1<", ">many<", "d.xml:4:24"),
      Changed(analysis, ">1<", "><", "d.xml:4:24"),
      Changed(analysis, ">1<", ">1.5<", "d.xml:4:24"),
      Changed(analysis, ">1<", ">1e3<", "d.xml:4:24"),
      Changed(analysis, ">1<", "> 1 <"),
      Changed(analysis, ">1<", ">\n x<", "d.xml:5:2"),
      Changed(analysis, ">1e-9<", ">1,5<", "d.xml:15:12"),
      Changed(analysis, ">1e-9<", ">small<", "d.xml:15:12"),
      Changed(analysis, ">false<", ">False<", "d.xml:13:36"),
      Changed(analysis, ">false<", "> false<", "d.xml:13:36"),
      Changed(analysis, ">false<", "><", "d.xml:13:36"),
      Changed(analysis, "xsi:type=\"Vector\"", "xsi:type=\"Other\"", "d.xml:29:1"),
      Changed(analysis, " xsi:type=\"Vector\"", "", "d.xml:29:1"),
      Changed(analysis, "<Seed xsi:type=\"Vector\">", "<Seed xsi:type=\"Vector\" />", "d.xml:29:1"),
      Changed(analysis, "<Element>3</Element>", "<Element>x</Element>", "d.xml:31:10"),
      Changed(analysis, "<Element>3</Element>", "<Element>3x</Element>", "d.xml:31:10"),
      Changed(analysis, "<Element>3</Element>\n", "", "d.xml:32:1"),
      {"the file ends in a number",
       analysis.substr(0, analysis.find("0</Steps>") + 1),
       {},
       "d.xml:37:9"},
      {"text behind the root", analysis + "text", {}, ""},
      {"a document type", "<!DOCTYPE Analysis>\n" + analysis, {}, "d.xml:1:1"},
      Changed(analysis, "<Data>", "<?xml version=\"1.0\"?><Data>", "d.xml:3:1"),
      {"NUL in a name", Replaced(analysis, "<Data>", std::string("<D\0ta>", 6)), {}, "d.xml:3:3"},
      {"NUL in an attribute",
       Replaced(analysis, "<Analysis>", std::string("<Analysis \0=", 12)),
       {},
       "d.xml:1:11"},
      {"an end tag as the root", "</Analysis>" + analysis.substr(10), {}, ""},
      {"NUL in a text", Replaced(analysis, "data.csv", std::string("da\0ta", 5)), {}, "d.xml:3:9"},
      {"no Mcmc", Replaced(PredictionText(), "<Mcmc>", "</Prediction>"), {}, "d.xml:13:1"},
      Changed(batch, "<Simulations>", "<Simulation>", "d.xml:2:1"),
      Changed(batch, "<Simulation>", "<Run>", "d.xml:3:1"),
      Changed(batch, "<Simulation>prediction.xml</Simulation>", "<Simulation />", "d.xml:3:1"),
      Changed(batch, "</Simulation>", "", "d.xml:4:1"),
      Changed(batch, "<Simulation>", "<Simulation a=\"b\">"),
  });
}

TEST(CheckAgreementTest, InputFilesOfADefinition) {
  ExpectRows({
      Changed(AnalysisText(), "data.csv", "missing.csv", "d.xml:3:7"),
      Changed(AnalysisText(), ">data.csv", "> data.csv", "d.xml:3:7"),
      Changed(AnalysisText(), ">data.csv<", "><", "d.xml:3:7"),
      Changed(AnalysisText(), "data.csv", ".", "d.xml:3:7"),
      Changed(AnalysisText(), "data.csv", "/dev/null", "d.xml:3:7"),
      Changed(AnalysisText(), "data.csv", "./data.csv"),
      Changed(AnalysisText(), "data.csv", ".\\data.csv"),
      Changed(PredictionText(), "coefficients.csv", "missing.csv", "d.xml:5:25"),
      Changed(PredictionText(), "coefficients.csv", ".", "d.xml:5:25"),
      Changed(ValidationText(), "individual.csv", "missing.csv", "d.xml:6:24"),
      Changed(BatchText({"prediction.xml"}), "prediction.xml", "missing.xml", "d.xml:3:13"),
      Changed(BatchText({"prediction.xml"}), "prediction.xml", ".", "d.xml:3:13"),
      Changed(BatchText({"prediction.xml"}), "prediction.xml", " prediction.xml", "d.xml:3:13"),
      Changed(BatchText({"prediction.xml"}), "prediction.xml", "data.csv", "data.csv:1:1"),
  });
  const ScratchFolder empty;
  EXPECT_TRUE(ExpectAgreement(empty).starts_with("d.xml:1:1: error: ")) << "no definition";
  fs::create_directory(empty.Path() / "d.xml");
  EXPECT_TRUE(ExpectAgreement(empty).starts_with("d.xml:1:1: error: ")) << "a folder";
}

TEST(CheckAgreementTest, OutputFoldersAndFiles) {
  ExpectRows({
      Changed(AnalysisText(), "<Folder>out<", "<Folder>a/b<", "d.xml:7:9"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>a\\b<", "d.xml:7:9"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>data.csv<", "d.xml:7:9"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>out/<"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>out/.<", "d.xml:7:9"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>.<"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>a..b<"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>a/b/../c<", "d.xml:7:9"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>" + std::string(300, 'x') + "<",
              "d.xml:7:9"),
      {"there", Replaced(AnalysisText(), "<Folder>out<", "<Folder>a\\b<"), {{"a/x", ""}}, ""},
      Changed(AnalysisText(), ">analysis.log<", ">logs/a.log<", "d.xml:10:10"),
      Changed(AnalysisText(), ">analysis.log<", "><", "d.xml:10:10"),
      Changed(AnalysisText(), ">analysis.log<", ">..<", "d.xml:10:10"),
      Changed(AnalysisText(), ">analysis.log<", ">../a.log<"),
      Changed(AnalysisText(), ">analysis.log<", ">" + std::string(256, 'x') + "<", "d.xml:10:10"),
      Changed(AnalysisText(), ">mcmc<", ">a/b<", "d.xml:9:16"),
      Changed(AnalysisText(), ">mcmc<", "><"),
      Changed(AnalysisText(), ">mcmc<", ">..<"),
      Changed(AnalysisText(), ">mcmc<", ">analysis.log<", "d.xml:9:16"),
      Changed(AnalysisText(), ">fitted.csv<", ">mcmc<", "d.xml:8:25"),
      Changed(AnalysisText(), ">fitted.csv<", ">mcmc/Chain.csv<"),
      Changed(AnalysisText(), ">fitted.csv<", ">analysis.log<"),
      {"a file as the chain's folder", AnalysisText(), {{"out/mcmc", ""}}, "d.xml:9:16"},
      {"a folder as the chain", AnalysisText(), {{"out/mcmc/Chain.csv/x", ""}}, "d.xml:9:16"},
      {"a folder as the log", AnalysisText(), {{"out/analysis.log/x", ""}}, "d.xml:10:10"},
      {"a folder as an output", PredictionText(), {{"out/hospital.csv/x", ""}}, "d.xml:10:22"},
      {"a folder as an output", ValidationText(), {{"out/cstatistics.csv/x", ""}}, "d.xml:10:14"},
      {"a file as the folder", ValidationText(), {{"out", ""}}, "d.xml:9:9"},
      {"earlier files", AnalysisText(), {{"out/mcmc/Chain.csv", "x"}, {"out/fitted.csv", "x"}}, ""},
  });
}

TEST(CheckAgreementTest, AFolderThroughTheOneAbove) {
  const TinyStudy study;
  const std::string here = study.Path().filename().string();
  study.Write("d.xml", Replaced(QuietAnalysis(), "<Folder>out<", "<Folder>../" + here + "/out<"));
  EXPECT_EQ(ExpectAgreement(study), "0 errors, 0 warnings\n");
  EXPECT_TRUE(study.Has("out/fitted.csv"));
}

TEST(CheckAgreementTest, OutputsThatAreInputs) {
  const auto in = [](const std::string& text, const std::string& from, const std::string& to) {
    return Replaced(Replaced(text, "<Folder>out<", "<Folder>.<"), from, to);
  };
  ExpectRows({
      {"log and data", in(AnalysisText(), ">analysis.log<", ">data.csv<"), {}, "d.xml:10:10"},
      {"log and no data", in(AnalysisText(), "data.csv", "analysis.log"), {}, "d.xml:3:7"},
      {"log and coefficients",
       in(PredictionText(), ">prediction.log<", ">coefficients.csv<"),
       {},
       "d.xml:11:10"},
      {"log and predictions",
       in(ValidationText(), ">validation.log<", ">individual.csv<"),
       {},
       "d.xml:11:10"},
      {"log and definition", in(AnalysisText(), ">analysis.log<", ">d.xml<"), {}, ""},
      {"coefficients and data", in(AnalysisText(), ">fitted.csv<", ">data.csv<"), {}, ""},
      {"predictions and data", in(PredictionText(), ">predicted.csv<", ">data.csv<"), {}, ""},
      {"statistics and predictions",
       in(ValidationText(), ">cstatistics.csv<", ">individual.csv<"),
       {},
       ""},
  });
}

TEST(CheckAgreementTest, ShapeOfTheDataFile) {
  const std::string first = "a,A,1,0,1,1\n";
  ExpectRows({
      Data("good", "1", kHeader + first),
      Data("a field less", "1", kHeader + "a,A,1,0,1\n", "data.csv:2:10"),
      Data("a field more", "1", kHeader + first + "b,A,1,0,1,1,\n", "data.csv:3:13"),
      Data("a blank line", "1", kHeader + first + "\n", "data.csv:3:1"),
      Data("a blank line between", "1", kHeader + "\n" + first, "data.csv:2:1"),
      Data("a header of its own size", "1", "Key\n" + first, "data.csv:2:3"),
      Data("an indicator more", "2", kHeader + first, "d.xml:4:24"),
      Data("an indicator less", "0", kHeader + first, "d.xml:4:24"),
      Data("negative", "-1", kHeader + first,
           "d.xml:4:24: error: The number of POA indicators is -1. Write 0 or more."),
      Data("negative and even", "-2", kHeader + first,
           "d.xml:4:24: error: The number of POA indicators is -2. Write 0 or more."),
      Data("far too many", "2147483647", kHeader + first, "d.xml:4:24"),
      Data("two too many", "4", kHeader + first, "d.xml:4:24"),
      Data("empty", "1", "", "data.csv:1:1"),
      Data("no line end", "1", "Key,Hospital,Y,POA,Z,X", "data.csv:1:23"),
      Data("a header alone", "1", kHeader),
      Data("last line feed missing", "1", kHeader + first + "b,A,1,0,1,1", "data.csv:3:12"),
      Data("a blank at the end", "1", kHeader + first + " ", "data.csv:3:2"),
      Data("two fields", "1", "Key,Hospital\n", "d.xml:4:24"),
      Data("a line feed alone", "1", "\n", "d.xml:4:24"),
      Data("a header without its first names", "1", ",,,,Z,X\n" + first),
      Data("a quoted header over two lines", "1", "\"Key\n\",Hospital,Y,POA,Z,X\n" + first,
           "data.csv:1:1"),
      Data("a comma in the header", "1", "Key,Hospital,\"Y, or N\",POA,Z,X\n" + first,
           "data.csv:1:14"),
      Data("a comma in a name", "1", Replaced(kHeader, "Z,X", "Z,\"X, Y\""),
           "coefficients.csv:1:1"),
      Data("a quoted header without its end", "1", "\"Key\n\",Hospital,Y,POA,Z,X", "data.csv:2:21"),
      Data("carriage returns", "1", "Key,Hospital,Y,POA,Z,Q,X,Q\r\na,A,1,0,1,1,0,0\r\n"),
      Data("byte order mark", "1", "\xEF\xBB\xBF" + kHeader + first),
      Data("byte order mark before a quote", "1",
           "\xEF\xBB\xBF\"Key\",Hospital,Y,POA,Z,X\n" + first, "data.csv:1:2"),
  });
}

TEST(CheckAgreementTest, ANegativeNumberOfIndicatorsWithMoreCellsThan31BitsCount) {
  // 2200 * 1,000,001 cells.
  std::string data = "Key,Hospital,Y\n";
  for (int i = 0; i < 2200; ++i) {
    data += "k,A,1\n";
  }
  ExpectRows({Data("negative", "-2000000", data, "d.xml:4:24")});
}

TEST(CheckAgreementTest, CellsOfTheDataFile) {
  const std::string first = kHeader + "a,A,1,0,1,1\n";
  ExpectRows({
      Data("Y 2", "1", first + "b,A,2,0,1,1\n", "data.csv:3:5"),
      Data("Y empty", "1", first + "b,A,,0,1,1\n", "data.csv:3:5"),
      Data("Y text", "1", first + "b,A,yes,0,1,1\n", "data.csv:3:5"),
      Data("Y quoted", "1", first + "b,A,\"1\",0,1,1\n", "data.csv:3:5"),
      Data("POA 2", "1", first + "b,A,1,2,1,1\n", "data.csv:3:7"),
      Data("POA text", "1", first + "b,A,1,NA,1,1\n", "data.csv:3:7"),
      Data("POA empty", "1", first + "b,A,1,,1,1\n"),
      Data("Z empty", "1", first + "b,A,1,0,,1\n", "data.csv:3:9"),
      Data("Z -1", "1", first + "b,A,1,0,-1,1\n", "data.csv:3:9"),
      Data("Z -", "1", first + "b,A,1,0,-,1\n", "data.csv:3:9"),
      Data("X 10", "1", first + "b,A,1,0,1,10\n", "data.csv:3:11"),
      Data("X text", "1", first + "b,A,1,0,1,x\n", "data.csv:3:11"),
      Data("X empty", "1", first + "b,A,1,0,1,\n"),
      Data("text behind numbers", "1", first + "b,A,1 yes,0\t,1.5,1abc\n"),
      Data("beyond ASCII", "1", first + "b,Z\xC3\xBCrich,7,0,1,1\n", "data.csv:3:10"),
      Data("hospital like a broken nan", "1", first + "b,North,2,0,1,1\n", "data.csv:3:9"),
      Data("hospital like a broken inf", "1", first + "b,Isala,,0,1,1\n", "data.csv:3:9"),
      Data("Y nan", "1", first + "b,A,nan,0,1,1\n", "data.csv:3:5"),
      Data("Z Na", "1", first + "b,A,1,0,Na,1\n", "data.csv:3:9"),
      Data("Y 2 without a name", "1", "Key,Hospital,,POA,Z,X\nb,A,2,0,1,1\n", "data.csv:2:5"),
      Data("hospital over two lines", "1", first + "b,\"Q\nR\",7,0,1,1\n", "data.csv:4:4"),
      Data("quoted hospital", "1", first + "b,\"Q, R\",7,0,1,1\n", "data.csv:3:10"),
      Data("grouping", "1", first + "b,B,1,0,1,1\nc,A,1,0,1,1\n", "data.csv:4:3"),
      Data("grouping with quotes", "1", first + "b,B,1,0,1,1\nc,\"A\",1,0,1,1\n", "data.csv:4:3"),
      Data("quoted or not", "1", first + "b,\"A\",1,0,1,1\n"),
      Data("a quote within", "1", first + "a\"b,A,1,0,1,1\n", "data.csv:3:2"),
      Data("a quote not closed", "1", first + "b,\"A,1,0,1,1\n", "data.csv:3:3"),
      Data("text behind a quote", "1", first + "b,\"A\"x,1,0,1,1\n", "data.csv:3:6"),
      Data("a comma in a key", "1", first + "\"a,b\",A,1,0,1,1\n", "data.csv:3:5"),
      Data("NUL", "1", first + std::string("\0,A,1,0,1,1\n", 12), "data.csv:3:1"),
  });
}

TEST(CheckAgreementTest, QuotesWithinAFieldAndWhatHelps) {
  const std::string first = "a,A,1,0,1,1\n";
  const std::string within =
      ": error: A double quote stands within a field that does not begin with one. Remove it, or "
      "put quotes round the whole field and write each one inside twice.";
  const std::string quoted = "b,\"B\",1,0,1,1\n";
  const std::string name = Replaced(kHeader, "Z,X", "Z,X\"a");
  ExpectRows({
      Data("in the header", "1", name + first + quoted, "data.csv:1:23" + within),
      Data("in a key", "1", kHeader + first + "k\"5,A,1,0,1,1\n" + quoted, "data.csv:3:2" + within),
      Data("not closed", "1", kHeader + first + "b,\"A,1,0,1,1\n",
           "data.csv:3:3: error: A double quote is opened here and never closed. Close it, or "
           "remove it."),
      Data("a key as advised", "1", kHeader + first + "\"k\"\"5\",A,1,0,1,1\n" + quoted),
      Data("a leading name as advised", "1", Replaced(kHeader, "Key", "\"K\"\"y\"") + first),
  });
}

TEST(CheckAgreementTest, KeysWithCommasThatLookLikeOtherRecords) {
  // The program passes over `"x`, takes the quote behind the comma for the beginning of the
  // hospital's ID, and the one in the next line for its end: the hospitals are `,A,1` and a line
  // feed, then A.
  const std::string pair = "\"x,\",A,1\n\",1,0\",A,0\n";
  const std::string longer = "\"x,\",A,1\n\",1,0,C,1,2\",A,0\n";
  const auto row = [](const std::string& data, const std::string& error) {
    Row made = Data(data, "0", "Key,Hospital,Y\n" + data, error);
    made.files[1].second = std::string(kCoefficientHeader) + kModelRow;
    return made;
  };
  ExpectRows({
      row(pair, ""), row(pair + pair, "data.csv:2:1"),  // not grouped by hospital
      row(longer, "data.csv:2:1"),                      // bytes behind the last record
      row("a,A,1\n" + longer, "data.csv:3:1"),          // the same
  });
}

TEST(CheckAgreementTest, EmptyOutcomesAtTheEndOfALine) {
  const auto row = [](const std::string& data, const std::string& error) {
    Row made = Data(data, "0", data, error);
    made.files[1].second = std::string(kCoefficientHeader) + kModelRow;
    return made;
  };
  ExpectRows({
      row("Key,Hospital,Y\na,A,1\nb,A,0\n", ""),
      row("Key,Hospital,Y\na,A,\nb,A,1\n", "data.csv:2:5"),
      row("Key,Hospital,Y\na,A,1\nb,A,\n", "data.csv:3:5"),
  });
}

TEST(CheckAgreementTest, DataThatAnAnalysisCannotUse) {
  ExpectRows({
      Fit("good", "a,A,1,0,1,1\nb,A,0,0,0,0\nc,A,1,0,0,1\nd,A,0,0,1,0\ne,A,1,1,1,1\n"),
      Fit("no complete record", "a,A,1,0,1,\nb,A,0,,0,0\n", "data.csv:1:1"),
      Fit("P is 1 everywhere", "a,A,1,1,1,1\nb,A,1,1,0,0\n", "data.csv:1:1"),
      Fit("no records", "", "data.csv:1:1"),
      Fit("X known with one Z", "a,A,1,0,1,1\nb,A,0,0,1,0\nc,A,1,0,0,\nd,A,0,0,1,1\n",
          "data.csv:1:1"),
      Fit("X known without Z alone", "a,A,1,0,0,1\nb,A,0,0,0,0\nc,A,1,0,1,\nd,A,0,0,0,1\n",
          "data.csv:1:1"),
      Changed(AnalysisText(), "<Tolerance>1e-9<", "<Tolerance>1<", "d.xml:15:12"),
      Changed(AnalysisText(), "<Tolerance>1e-9<", "<Tolerance>nan<", "d.xml:15:12"),
      Changed(AnalysisText(), "<Tolerance>1e-9<", "<Tolerance>inf<", "d.xml:15:12"),
      Changed(AnalysisText(), "<Tolerance>1e-9<", "<Tolerance>0<"),
      Changed(AnalysisText(), "<Tolerance>1e-9<", "<Tolerance>-1<"),
  });
}

/// Records of one variable: `count` times the cells in turn, behind a varying outcome.
std::string Records(int count, const std::vector<std::string>& cells) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    const auto turn = static_cast<std::size_t>(i);
    text += "k,A," + std::to_string(i / 4 % 2) + ",0," + cells[turn % cells.size()] + "\n";
  }
  return text;
}

TEST(CheckAgreementTest, ClassesThatAreFilledLateInALongFile) {
  const std::vector<std::string> withZ = {"1,1", "1,0"};
  const std::vector<std::string> withoutZ = {"0,1", "0,0", "0,0"};
  ExpectRows({
      Fit("all in the first records", Records(5000, {"1,1", "0,0", "0,1", "1,0"})),
      Fit("Z = 0 behind many", Records(5000, withZ) + Records(6, withoutZ)),
      Fit("Z = 1 behind many", Records(5000, withoutZ) + Records(6, withZ)),
      Fit("Z = 0 with unknown X", Records(5000, withZ) + Records(6, {"0,"}), "data.csv:1:1"),
      Fit("Z = 1 with unknown X", Records(5000, withoutZ) + Records(6, {"1,"}), "data.csv:1:1"),
  });
}

TEST(CheckAgreementTest, TwoVariablesOfOneName) {
  // The X of one is 0 everywhere, so that it is removed, and the Z of the other is 1 wherever its X
  // is known, so that it has no [X|Z] table. The two stand in both orders.
  const auto fit = [](const std::string& data) {
    Row row = Fit(data, "", "data.csv:1:1");
    row.files[0].second = "Key,Hospital,Y,POA,Z,Z,X,X\n" + data;
    return row;
  };
  ExpectRows({
      fit("a,A,1,0,1,1,0,1\nb,A,0,0,0,1,0,0\nc,A,1,0,1,0,0,\nd,A,0,0,0,1,0,1\ne,A,1,0,0,1,0,0\n"),
      fit("a,A,1,0,1,1,1,0\nb,A,0,0,1,0,0,0\nc,A,1,0,0,1,,0\nd,A,0,0,1,0,1,0\ne,A,1,0,1,0,0,0\n"),
  });
}

TEST(CheckAgreementTest, ATrickyTolerance) {
  // The counts of the intercept and of Z, (40 4 3; 4 4 0; 3 0 3), have the singular values 0.065
  // and 0.0904 times the largest; without the second Z the ratio is 0.08806. A tolerance between
  // the two removes one column and is then not met.
  std::string data = "Key,Hospital,Y,POA,Z1,Z2,X1,X2\n";
  for (int i = 0; i < 40; ++i) {
    data += "k,A," + std::to_string(i % 2) + ",0," +
            (i < 4   ? "1,0,"
             : i < 7 ? "0,1,"
                     : "0,0,") +
            std::to_string(i % 2) + "," + std::to_string(i / 2 % 2) + "\n";
  }
  Row row = Changed(AnalysisText(), "<Tolerance>1e-9<", "<Tolerance>0.09<", "d.xml:15:12");
  row.files = {{"data.csv", data}};
  ExpectRows({row});
}

TEST(CheckAgreementTest, MoreVariablesThanColumnEliminationCounts) {
  // With the intercept, 46341 and 65536 variables: numbers of which the square is beyond 31 bits.
  for (const int variables : {46340, 65535}) {
    std::string header = "Key,Hospital,Y";
    std::string record = "k,A,1";
    for (int field = 0; field < 2 * variables; ++field) {
      header += "," + std::to_string(field);
      record += ",1";
    }
    Row row = Changed(AnalysisText(), "Indicators>1<", "Indicators>0<", "data.csv:1:1");
    row.files = {{"data.csv", header + "\n" + record + "\n"}};
    ExpectRows({row});
  }
}

TEST(CheckAgreementTest, LengthOfAChain) {
  struct Chain {
    const char* thinning;
    const char* burnin;
    const char* steps;
    const char* place;  // in an analysis
  };
  for (const Chain& chain : {Chain{"0", "0", "0", "d.xml:35:11"},
                             {"0", "2", "3", "d.xml:35:11"},
                             {"-1", "0", "5", "d.xml:35:11"},
                             {"1", "-2", "-1", "d.xml:37:8"},
                             {"-2", "4", "0", "d.xml:35:11"},
                             {"1", "2", "-5", ""},
                             {"1", "-5", "2", ""},
                             {"-9", "2", "3", ""},
                             {"-1", "0", "0", ""},
                             {"9", "2", "3", ""},
                             {"3", "-2", "-1", ""}}) {
    ExpectRows(
        {{"chain",
          WithChain(AnalysisText(), chain.thinning, chain.burnin, chain.steps),
          {},
          chain.place},
         {"passes", WithChain(PredictionText(), chain.thinning, chain.burnin, chain.steps), {}, ""},
         {"passes",
          WithChain(ValidationText(), chain.thinning, chain.burnin, chain.steps),
          {},
          ""}});
  }
}

Row Model(const std::string& what, const std::string& coefficients, const std::string& error = "") {
  return {what, PredictionText(), {{"coefficients.csv", coefficients}}, error};
}

TEST(CheckAgreementTest, IdsWithCommasInPredictions) {
  // The reader takes every comma for a separator and stops lines behind the first one.
  const std::string error =
      ": error: A key or hospital ID holds a comma, which separates here in spite of the quotes: "
      "values would be taken from wrong columns. Use IDs without commas.";
  const auto row = [&error](const std::string& ids, const std::string& place) {
    std::string rows = "a,A,1,0.9,0.75,0,0,0,1,0.3,1\n";
    for (int i = 0; i < 3; ++i) {
      rows += ids + ",1,0.9,0.75,0,0,0,1,0.3,1\n";
    }
    rows += "e,B,1,0.9,0.75,0,0,0,1,0.3,1\nf,B,1,0.9,0.75,0,0,0,1,0.3,1\n";
    return Row{
        ids, ValidationText(), {{"individual.csv", kIndividualHeader + rows}}, place + error};
  };
  ExpectRows({
      row("b,\"H,x\"", "individual.csv:3:3"),
      row("\"b,c\",A", "individual.csv:3:1"),
      row("\"b\",\"H,x\"", "individual.csv:3:5"),
  });
}

TEST(CheckAgreementTest, CoefficientFiles) {
  const std::string header = kCoefficientHeader;
  const std::string prefix = header + "XIntercept,ZIntercept,,,,,";
  const std::string more = "X1,Z1,0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n";
  ExpectRows({
      Model("no estimate", prefix + ",,,0,,,0,,,0,,,0,,\n", "coefficients.csv:2:27"),
      Model("text", prefix + "x,,,0,,,0,,,0,,,0,,\n", "coefficients.csv:2:27"),
      Model("text further on", prefix + "0,,,0,,,NA,,,0,,,0,,\n", "coefficients.csv:2:35"),
      Model("last estimate", prefix + "0,,,0,,,0,,,0,,,,,\n", "coefficients.csv:2:43"),
      Model("NA, then text", prefix + "0,,NA,x,,,0,,,0,,,0,,\n", "coefficients.csv:2:33"),
      Model("half an infinity", prefix + "infi,,,0,,,0,,,0,,,0,,\n", "coefficients.csv:2:27"),
      Model("half a nan", prefix + "-na,,,0,,,0,,,0,,,0,,\n", "coefficients.csv:2:27"),
      Model("words", prefix + "nan,,,inf,,,-Infinity,,,0,,,0,,\n"),
      Model("a header without names", "x\nXIntercept,ZIntercept,,,,,x,,,0,,,0,,,0,,,0,,\n",
            "coefficients.csv:2:27"),
      Model("a sign", prefix + "0,,,0,,,0,,,0,,,-,,\n", "coefficients.csv:2:43"),
      Model("short row", prefix + "0,,,0,,,0,,\n", "coefficients.csv:2:38"),
      Model("standard errors", prefix + "0,x,,0,-1,nan,0,,,0,,,0,,NA\n"),
      Model("any header", "anything\n" + std::string(kModelRow)),
      Model("empty", "", "coefficients.csv:1:1"),
      Model("header alone", header),
      Model("no line end", header.substr(0, header.size() - 1), "coefficients.csv:1:1"),
      Model("more variables", header + kModelRow + more, "coefficients.csv:1:1"),
      Model("row without its end", header + kModelRow + more.substr(0, more.size() - 1)),
      Model("intercept without its end", prefix + "0,,,0,,,0,,,0,,,0,,"),
      Model("a quote", prefix + "0,,,0,,,0,,,0,,,0,\",\n", "coefficients.csv:2:45"),
      Model("no [X|Z]", header + kModelRow + "X1,Z1,0.5,,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n",
            "coefficients.csv:3:11"),
      {"one variable twice",
       PredictionText(),
       {{"data.csv", kHeader + "a,A,1,0,1,1\n"},
        {"coefficients.csv",
         header + kModelRow + Replaced(more, "X1,Z1", "X,Z") + Replaced(more, "X1,Z1", "X,Z")}},
       "coefficients.csv:1:1"},
      {"more variables, validation",
       ValidationText(),
       {{"coefficients.csv", header + kModelRow + more}},
       "coefficients.csv:1:1"},
      {"a table that is none",
       PredictionText(),
       {{"coefficients.csv", kTinyData}},
       "coefficients.csv:2:8"},
  });
}

TEST(CheckAgreementTest, IndividualPredictions) {
  const auto row = [](const std::string& what, const std::string& from, const std::string& to,
                      const std::string& error) {
    const std::string text = std::string(kIndividualHeader) + kIndividualRows;
    return Row{what, ValidationText(), {{"individual.csv", Replaced(text, from, to)}}, error};
  };
  const std::string header = kIndividualHeader;
  ExpectRows({
      row("text", "a,A,1,0.9", "a,A,1,x", "individual.csv:2:7"),
      row("empty", "a,A,1,0.9,0.75", "a,A,1,0.9,", "individual.csv:2:11"),
      row("last value", "0.3,1\nb", "0.3,e\nb", "individual.csv:2:28"),
      row("Y no", "a,A,1,0.9", "a,A,no,x", "individual.csv:2:8"),
      row("NA in a column that is not read", "0.75,0,0,0,1,0.3,1\nb", "0.75,NA,x,0,1,0.3,1\nb",
          "individual.csv:2:19"),
      row("blanks before nan", "a,A,1,0.9,0.75", "a,A,1,   nan,x", "individual.csv:2:14"),
      row("na", "a,A,1,0.9", "a,A,1,na", "individual.csv:2:7"),
      // The number is then looked for in the key of the next line.
      row("no last value and a number as key", "0.3,1\nb,A", "0.3,\n2,A", "individual.csv:2:28"),
      row("text, and no last value", "0.9,0.75,0,0,0,1,0.3,1\nb", "x,0.75,0,0,0,1,0.3,\nb",
          "individual.csv:2:7"),
      row("a blank as last value", "0.3,1\nb,A", "0.3, \n2,A", "individual.csv:2:28"),
      row("a short line", "a,A,1,0.9,0.75,0,0,0,1,0.3,1", "a,A,1,0.9,0.75,0",
          "individual.csv:2:17"),
      row("a comma in a key", "a,A,1", "\"a,b\",A,1", ""),
      row("unused columns", "a,A,1,0.9", "\"x \"\"y\"\"\",,7, 0.9 z", ""),
      row("one line less", "f,B,0,0.3,0.75,0,0.3,0.3,0,0.5,0\n", "", "individual.csv:7:1"),
      row("no last line feed", "0.5,0\n", "0.5,0", "individual.csv:7:33"),
      row("one line more", "0.5,0\n", "0.5,0\ng,C,1,0,0,0,0,0,0,0,0\n", ""),
      {"without data", Replaced(ValidationText(), "data.csv", "none.csv"), {}, "d.xml:3:7"},
      {"without coefficients",
       Replaced(ValidationText(), "coefficients.csv", "none.csv"),
       {},
       "d.xml:5:25"},
      {"none", ValidationText(), {{"individual.csv", ""}}, "individual.csv:1:1"},
      {"header alone", ValidationText(), {{"individual.csv", header}}, "individual.csv:2:1"},
  });
}

TEST(CheckAgreementTest, Batches) {
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

/// Every definition with one change at every tag, and cut at many places.
TEST(CheckAgreementTest, ChangedAndCutDefinitions) {
  const TinyStudy study;
  for (const std::string& text :
       {AnalysisText(), PredictionText(), ValidationText(), BatchText({"prediction.xml"})}) {
    std::vector<std::string> variants;
    for (const DefinitionTag& tag : NamedTags(text)) {
      std::string misspelt = text;
      misspelt[tag.NamePlace()] = 'Q';
      std::string missing = text;
      missing.erase(tag.place, tag.end - tag.place);
      std::string longer = text;
      longer.insert(tag.end - 1, "s");
      variants.insert(variants.end(), {misspelt, missing, longer});
    }
    for (std::size_t length = 0; length < text.size() - 1; length += 17) {
      variants.push_back(text.substr(0, length));
    }
    for (const std::string& variant : variants) {
      SCOPED_TRACE(variant);
      study.Write("d.xml", variant);
      EXPECT_TRUE(HasError(ExpectAgreement(study)));
    }
  }
}

TEST(CheckWarningTest, NothingToSay) {
  const TinyStudy study;
  study.Write("d.xml", QuietAnalysis());
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"d.xml"},
                                                    {"--strict", "d.xml"},
                                                    {"d.xml", "--strict"},
                                                    {"--strict", "prediction.xml"},
                                                    {"--strict", "validation.xml"}}) {
    const ProcessResult check = CheckDefinition(study, arguments);
    EXPECT_EQ(check.output, "0 errors, 0 warnings\n");
    EXPECT_EQ(check.exitStatus, 0);
  }
  for (const char* name : {"a&b.csv", "a;b&c.csv", "a b.csv"}) {
    study.Write("d.xml", Replaced(QuietAnalysis(), "fitted.csv", name));
    EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
  }
}

TEST(CheckWarningTest, Values) {
  ExpectWarnings({
      Surprising("<Tolerance>1e-9<", "<Tolerance>0<", "d.xml:15:12", "A tolerance is above 0"),
      Surprising("<Tolerance>1e-9<", "<Tolerance>-1<", "d.xml:15:12", "A tolerance is above 0"),
      Surprising("<Tolerance>1e-8<", "<Tolerance>0<", "d.xml:18:12", "A tolerance is above 0"),
      Surprising("<Tolerance>1e-8<", "<Tolerance>inf<", "d.xml:18:12", "A tolerance is above 0"),
      Surprising("<MaxIterations>50<", "<MaxIterations>0<", "d.xml:19:16", "does the same as 1"),
      Surprising("<MaxIterations>50<", "<MaxIterations>-3<", "d.xml:19:16", "does the same as 1"),
      Surprising("<PriorPrecision>0<", "<PriorPrecision>-0.01<", "d.xml:20:17",
                 "A precision is 0 or more"),
      Surprising("<PriorPrecision>0<", "<PriorPrecision>inf<", "d.xml:20:17",
                 "A precision is 0 or more"),
      Surprising("<PriorPrecision>0<", "<PriorPrecision>nan<", "d.xml:20:17",
                 "A precision is 0 or more"),
      Surprising("<Burnin>2<", "<Burnin>-2<", "d.xml:36:9", "The count -2 is negative"),
      Surprising("<Steps>4<", "<Steps>-4<", "d.xml:37:8", "The count -4 is negative"),
      Surprising("<Steps>4<", "<Steps>1<", "d.xml:37:8", "The chain keeps 1 draw, too few"),
      Surprising("<Thinning>1<", "<Thinning>3<", "d.xml:37:8", "The chain keeps 1 draw, too few"),
      Surprising("<Thinning>1<", "<Thinning>9<", "d.xml:37:8", "The chain keeps 0 draws, too few"),
      Surprising("<Burnin>2<", "<Burnin>4294967298<", "d.xml:36:9", "outside its range"),
      Surprising("<Burnin>2<", "<Burnin>-4294967294<", "d.xml:36:9", "outside its range"),
      Surprising("<Element>5<", "<Element>-5<", "d.xml:32:10", "outside its range"),
      Surprising("<Element>5<", "<Element>4294967296<", "d.xml:32:10", "outside its range"),
      Surprising("<Element>5<", "<Element>99999999999999999999<", "d.xml:32:10",
                 "outside its range"),
      {Replaced(PredictionText(), "<Thinning>1<", "<Thinning>-1<"),
       {},
       "d.xml:20:11",
       "The thinning -1 is negative"},
  });
  const std::string vector = QuietAnalysis();
  const std::size_t first = vector.find("<Seed ");
  const std::size_t last = vector.find("<Thinning>");
  ExpectWarnings(
      {{vector.substr(0, first) + "<Seed xsi:type=\"Randomize\" />\n" + vector.substr(last),
        {},
        "d.xml:29:1",
        "The seed is taken from the clock"}});
}

TEST(CheckWarningTest, Texts) {
  ExpectWarnings({
      Surprising(">fitted.csv<", "> fitted.csv<", "d.xml:8:25", "White space round the text"),
      Surprising(">fitted.csv<", ">fitted.csv <", "d.xml:8:25", "White space round the text"),
      Surprising(">fitted.csv<", ">a&amp;b.csv<", "d.xml:8:25", "Entities such as &amp;"),
  });
}

TEST(CheckWarningTest, TheRootOfTheFileSystem) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(QuietAnalysis(), "<Folder>out<", "<Folder><"));
  const ProcessResult check = CheckDefinition(study);
  EXPECT_TRUE(
      check.output.starts_with("d.xml:7:9: warning: The output folder is empty, which "
                               "means the root of the file system. Write a point"))
      << check.output;
}

TEST(CheckWarningTest, OutputsThatExist) {
  ExpectWarnings({
      {QuietAnalysis(),
       {{"out/analysis.log", ""}},
       "d.xml:10:10",
       Shown("The log file \"out\\analysis.log\" exists and would be overwritten.")},
      {QuietAnalysis(), {{"out/fitted.csv", ""}}, "d.xml:8:25", "exists and would be overwritten"},
      {QuietAnalysis(), {{"out/mcmc/Chain.csv", ""}}, "d.xml:9:16", "The chain "},
      {QuietAnalysis(), {{"out/mcmc/Summary.csv", ""}}, "d.xml:9:16", "The summary of the chain "},
      {PredictionText(), {{"out/predicted.csv", ""}}, "d.xml:9:24", "exists"},
      {PredictionText(), {{"out/hospital.csv", ""}}, "d.xml:10:22", "exists"},
      {ValidationText(), {{"out/cstatistics.csv", ""}}, "d.xml:10:14", "exists"},
  });
}

TEST(CheckWarningTest, NamesThatMeet) {
  const std::string here = Replaced(QuietAnalysis(), "<Folder>out<", "<Folder>.<");
  ExpectWarnings({
      Surprising(">fitted.csv<", ">analysis.log<", "d.xml:8:25",
                 "is also the log file of this run"),
      Surprising(">fitted.csv<", ">./mcmc\\Chain.csv<", "d.xml:8:25",
                 "is also the chain of this run"),
      Surprising(">fitted.csv<", ">Analysis.LOG<", "d.xml:8:25",
                 Shown("differs from \"out\\analysis.log\" in capital letters alone")),
  });
  const bool ignoresCase = fs::exists(TinyStudy().Path() / "DATA.CSV");
  const std::string relation = ignoresCase ? "is the data file of this run"
                                           : "differs from the data file in capital letters alone";
  // Those that exist are told as that too.
  for (const auto& [name, words] : std::map<std::string, std::string>{
           {"data.csv",
            Shown("d.xml:8:25: warning: The coefficient file \".\\data.csv\" is the data file "
                  "of this run, which would be overwritten.")},
           {"d.xml",
            Shown("d.xml:8:25: warning: The coefficient file \".\\d.xml\" is the definition file "
                  "of this run, which would be overwritten.")},
           {"Data.csv", relation}}) {
    const TinyStudy study;
    study.Write("d.xml", Replaced(here, ">fitted.csv<", ">" + name + "<"));
    const ProcessResult check = CheckDefinition(study);
    EXPECT_EQ(check.exitStatus, 0);
    EXPECT_NE(check.output.find(words), std::string::npos) << check.output;
  }
  const TinyStudy study;
  fs::create_hard_link(study.File("data.csv"), study.File("linked.csv"));
  study.Write("d.xml", Replaced(here, ">fitted.csv<", ">linked.csv<"));
  EXPECT_NE(CheckDefinition(study).output.find("is the data file of this run"), std::string::npos);
}

TEST(CheckWarningTest, CarriageReturnsWhereTheProgramKeepsThem) {
  const std::vector<Warning> rows = {
      {Replaced(QuietAnalysis(), "<Input>\n", "<Input>\r\n"), {}, "d.xml:2:8", "carriage return"},
      {PredictionText(),
       {{"data.csv", Replaced(kTinyData, "POA\n", "POA\r\n")}},
       "data.csv:1:19",
       "carriage return"},
  };
  if (Platform::TextLineEnds() == Platform::LineEnds::kLineFeeds) {
    ExpectWarnings(rows);
    return;
  }
  for (const Warning& row : rows) {
    const TinyStudy study;
    WriteFiles(study, row);
    EXPECT_EQ(CheckDefinition(study, {"--strict", "d.xml"}).output, "0 errors, 0 warnings\n");
    EXPECT_EQ(RunHovar(study, {"d.xml"}).exitStatus, 0);
  }
}

TEST(CheckWarningTest, TextsOfInputFiles) {
  const std::string header = kCoefficientHeader;
  const std::string two = "Key,Hospital,Y,POA,Z1,Z2,X1,X2\na,A,1,0,1,0,1,0\n";
  const auto row = [](const std::string& name) {
    return "X" + name + ",Z" + name + ",0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n";
  };
  std::string predictions = std::string(kIndividualHeader) + kIndividualRows;
  ExpectWarnings({
      {PredictionText(),
       {{"data.csv", std::string(kByteOrderMark) + kTinyData}},
       "data.csv:1:1",
       "byte order mark"},
      {PredictionText(),
       {{"coefficients.csv", std::string(kByteOrderMark) + header + kModelRow}},
       "coefficients.csv:1:1",
       "byte order mark"},
      {PredictionText(),
       {{"coefficients.csv", header + kModelRow + "X1,Z1,0"}},
       "coefficients.csv:3:8",
       "The last line does not end with a line feed, so its variable is "
       "lost."},
      {PredictionText(),
       {{"coefficients.csv", header}},
       "coefficients.csv:1:1",
       "No complete line stands behind the header"},
      {PredictionText(),
       {{"data.csv", two}, {"coefficients.csv", header + kModelRow + row("2") + row("1")}},
       "coefficients.csv:3:1",
       "The coefficients of \"X2\" would serve for \"X1\" of the data"},
      {PredictionText(),
       {{"data.csv", Replaced(two, "X1,X2", "X1,X1")},
        {"coefficients.csv", header + kModelRow + Replaced(row("2"), "X2", "X1") + row("1")}},
       "coefficients.csv:3:1",
       "The coefficients of \"Z2\" would serve for \"Z1\" of the data"},
      {PredictionText(),
       {{"data.csv", two}, {"coefficients.csv", header + row("1") + row("2")}},
       "coefficients.csv:2:1",
       "The row of the intercept is missing, so all models would predict without an intercept, and "
       "missing values of \"X1\" would count as 0."},
      {PredictionText(),
       {{"data.csv", Replaced(two, "X1,X2", "XIntercept,X2")},
        {"coefficients.csv", header + Replaced(row("1"), "X1", "XIntercept")}},
       "coefficients.csv:2:1",
       "The row of the intercept is missing"},
      {ValidationText(),
       {{"data.csv", "Key,Hospital,Y,POA,Z1,X1\na,A,1,0,1,\n"},
        {"coefficients.csv", header + row("1")},
        {"individual.csv", std::string(kIndividualHeader) + "a,A,1,0,0,0,0,0,0,0,0\n"}},
       "coefficients.csv:2:1",
       "The row of the intercept is missing"},
      {ValidationText(),
       {{"individual.csv", predictions + "g,C,1,0,0,0,0,0,0,0,0\n"}},
       "individual.csv:9:1",
       "The file has 7 complete lines for the 6 records of \"data.csv\""},
      {ValidationText(),
       {{"individual.csv", Replaced(predictions, "a,A,1", "\"a,b\",A,1")}},
       "individual.csv:2:1",
       "A key or hospital ID holds a comma"},
  });
}

TEST(CheckWarningTest, ManyNestedBatchesAreCheckedOnce) {
  // Each of 40 batches names the next one twice: 2 to the 40 runs of the last.
  const TinyStudy study;
  study.Write("d.xml", BatchText({"0.xml", "0.xml"}));
  for (int i = 0; i < 40; ++i) {
    const std::string next = std::to_string(i + 1) + ".xml";
    study.Write(std::to_string(i) + ".xml", BatchText({next, next}));
  }
  study.Write("40.xml", BatchText({}));
  EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
}

TEST(CheckWarningTest, RunsOfABatchThatMeet) {
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
  // What another kind of file would be read as cannot be told before.
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

TEST(CheckFindingTest, SentencesSayWhatToDo) {
  struct Exact {
    std::string definition;
    std::string data;
    std::string lines;
  };
  const std::string good = kTinyData;
  for (const Exact& row : std::vector<Exact>{
           {Replaced(QuietAnalysis(), "<LogFile>analysis.log</LogFile>\n", ""), good,
            "d.xml:10:1: error: <LogFile> is due here, but \"</Output>\" stands here. Every "
            "element "
            "is required, in a fixed order and nothing between.\n"},
           {Replaced(QuietAnalysis(), "<Steps>4<", "<Steps>12abc<"), good,
            "d.xml:37:8: error: The value \"12abc\" of <Steps> is no whole number. Write digits "
            "alone.\n"},
           {Replaced(QuietAnalysis(), "<Thinning>1<", "<Thinning>0<"), good,
            "d.xml:35:11: error: Every 0th step cannot be kept. Write 1 or more.\n"},
           {Replaced(QuietAnalysis(), "<Folder>out<", "<Folder>new/deep<"), good,
            "d.xml:7:9: error: The folder \"new/deep\" cannot be made: \"new\" is no folder. Make "
            "it "
            "first; only the last folder of a path is made.\n"},
           {QuietAnalysis(), Replaced(good, "c,A,0,0", "c,A,NA,0"),
            "data.csv:4:5: error: Field 3 (Y, \"Y\") holds \"NA\". Write 0 or 1; it may not be "
            "missing.\n"},
           {QuietAnalysis(), Replaced(good, "c,A,0,0", "c,A,0,2"),
            "data.csv:4:7: error: Field 4 (POA indicator, \"POA\") holds \"2\". Write 0 or 1, or "
            "leave it empty where it is missing.\n"},
           {QuietAnalysis(), Replaced(good, "c,A,0,0", "c,B,0,0") + "g,A,0,0\n",
            "data.csv:8:3: error: The hospital \"A\" comes again after another one. Sort the "
            "records "
            "by hospital.\n"},
           {Replaced(QuietAnalysis(), "Indicators>1<", "Indicators>2<"), good,
            "d.xml:4:24: error: The lines of \"data.csv\" have 4 fields; behind key, hospital, Y "
            "and "
            "2 POA indicators that leaves -1 for Z and X, which come in pairs. Correct the number "
            "of indicators.\n"},
           {Replaced(QuietAnalysis(), "<Steps>4<", "<Steps>\t x<"), good,
            "d.xml:37:10: error: The value \"x\" of <Steps> is no whole number. Write digits "
            "alone.\n"},
           {Replaced(QuietAnalysis(), "<Steps>4<", "<Steps>" + std::string(5000, '1') + "x<"), good,
            "d.xml:37:8: error: The value \"" + std::string(60, '1') +
                "...\" of <Steps> is no whole number. Write digits alone.\n"},
           {Replaced(QuietAnalysis(), "<Analysis>",
                     "<Analysis a=\"" + std::string(5000, 'x') + "\" a=\"\">"),
            good, "d.xml:1:1: error: An attribute is given twice. Remove one of the two.\n"},
           {Replaced(QuietAnalysis(), "<Analysis>", "<Analysis /x>"), good,
            "d.xml:1:1: error: The element \"<Analysis>\" is empty. Write a start tag, its content "
            "and an end tag.\n"},
           {Replaced(QuietAnalysis(), "<Data>", "<DataFile/>"), good,
            "d.xml:3:1: error: <Data> is due here, but \"<DataFile/>\" stands here. Every element "
            "is required, in a fixed order and nothing between.\n"},
           {"<?xml version=\"1.0\"?x>\n" + QuietAnalysis(), good,
            "d.xml:1:21: error: The declaration does not end with ?>. Close it.\n"},
           {"<?xml version=\"1.0\">\n" + QuietAnalysis(), good,
            "d.xml:1:20: error: The declaration does not end with ?>. Close it.\n"},
           {QuietAnalysis(), Replaced(Replaced(good, "Hospital,Y", "Hospital,"), "c,A,0", "c,A,2"),
            "data.csv:4:5: error: Field 3 (Y) holds \"2\". Write 0 or 1; it may not be missing.\n"},
           // Both are told: the check does not stop at the first one.
           {Replaced(Replaced(QuietAnalysis(), "<Thinning>1<", "<Thinning>0<"), "data.csv",
                     "none.csv"),
            good,
            "d.xml:3:7: error: The data file \"none.csv\" does not exist. Correct the name, or the "
            "folder that you start in: paths are taken from there.\n"
            "d.xml:35:11: error: Every 0th step cannot be kept. Write 1 or more.\n"}}) {
    const TinyStudy study;
    study.Write("d.xml", row.definition);
    study.Write("data.csv", row.data);
    const ProcessResult check = CheckDefinition(study);
    const auto count = std::count(row.lines.begin(), row.lines.end(), '\n');
    EXPECT_EQ(check.output, row.lines + std::to_string(count) +
                                (count == 1 ? " error" : " errors") + ", 0 warnings\n");
    EXPECT_EQ(check.exitStatus, 1);
  }
}

TEST(CheckFindingTest, AtMostFiveMissingVariablesAreNamed) {
  struct Missing {
    int first;
    int last;
    std::string sentence;
  };
  for (const Missing& missing :
       {Missing{
            1, 5,
            "The data have 1 variable of the 6 in the coefficient file; missing: \"X1\", \"X2\", "
            "\"X3\", \"X4\", \"X5\". Use"},
        Missing{
            2, 8,
            "The data have 1 variable of the 8 in the coefficient file; missing: \"X2\", \"X3\", "
            "\"X4\", \"X5\", \"X6\" and 2 more. Use"},
        // The same X with another Z is missing too, and twice the same is not.
        Missing{
            0, 0,
            "The data have 1 variable of the 2 in the coefficient file; missing: \"X\". Use"}}) {
    const TinyStudy study;
    study.Write("d.xml", PredictionText());
    study.Write("data.csv", kHeader + "a,A,1,0,1,1\n");
    const std::string values = ",0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n";
    std::string coefficients = std::string(kCoefficientHeader) + kModelRow + "X,Z" + values;
    for (int i = missing.first; i <= missing.last; ++i) {
      const std::string number = std::to_string(i);
      coefficients += (i == 0 ? "X,Z0" : "X" + number + ",Z" + number) + values;
    }
    study.Write("coefficients.csv", coefficients);
    const std::string output = CheckDefinition(study).output;
    EXPECT_NE(output.find(missing.sentence), std::string::npos) << output;
  }
}

TEST(CheckFindingTest, AFindingStaysOnItsLine) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(AnalysisText(), "data.csv", "a\nb\x01"));
  const std::string output = CheckDefinition(study).output;
  EXPECT_TRUE(output.starts_with("d.xml:3:7: error: The data file \"a\\nb\\x01\" does not exist."))
      << output;
}

TEST(CheckCommandTest, AWrongCommandLineIsAnError) {
  const TinyStudy study;
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                    {"--strict"},
                                                    {"--data"},
                                                    {"--all", "prediction.xml"},
                                                    {"prediction.xml", "analysis.xml"}}) {
    const ProcessResult result = RunProcess(CheckIn(study, arguments));
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.error.starts_with("hovar: ")) << result.error;
    EXPECT_EQ(result.exitStatus, 1);
  }
}

TEST(CheckCommandTest, OutputThatCannotBeWrittenIsAnError) {
  const TinyStudy study;
  for (const Output output : {Output::kFull, Output::kClosed, Output::kBroken}) {
    Command command = CheckIn(study, {"prediction.xml"});
    command.output = output;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    EXPECT_EQ(result.error, "hovar: cannot write to standard output\n");
  }
}

// Eight records. Missing: P in d and e, XA in b, XC in c; complete are a, f, g and h. ZC is 0
// everywhere; without its variable c is complete too. XB is 1 in b and c alone, of which b is not
// complete and c has P = 1.
constexpr char kDescribedData[] =
    "Key,Hospital,Y,POA,ZA,ZB,ZC,ZD,XA,XB,XC,XD\n"
    "a,H1,1,0,1,0,0,1,1,0,0,1\n"
    "b,H1,0,0,0,1,0,1,,1,0,1\n"
    "c,H1,1,1,1,1,0,0,1,1,,0\n"
    "d,H2,0,,0,0,0,1,0,0,0,1\n"
    "e,H2,1,,1,0,0,1,1,0,0,1\n"
    "f,H3,0,0,0,1,0,0,0,0,0,1\n"
    "g,H3,1,0,1,0,0,0,0,0,0,0\n"
    "h,H3,0,0,0,0,0,0,0,0,0,0\n";

// Y: 4 of 8. P: 1 of the 6 known. Z: 4, 3, 0 and 4 of 8. X: 3 of 7, 2 of 8, 0 of 7, 5 of 8. X where
// Z = 0: 0 of 3, 0 of 5, 0 of 7, 1 of 4; where Z = 1: 3 of 4, 2 of 3, none of none, 4 of 4.
constexpr char kDescription[] =
    "\"data.csv\": 8 records, 3 hospitals, 4 variables, 1 POA indicator\n"
    "  Y = 1: 4 (50.00 %)\n"
    "  P = 1: 1 (16.67 % of the known), missing: 2 (25.00 %)\n"
    "  complete records: 4 (50.00 %), with P = 0: 4\n"
    "  hospitals without a complete record: 1\n"
    "    \"H2\", 2 records\n"
    "  variables (Z, X): Z = 1; X = 1 of the known, where Z = 0, where Z = 1; X missing\n"
    "    \"ZA\", \"XA\": 50.00 %; 42.86 %, 0.00 %, 75.00 %; 12.50 %\n"
    "    \"ZB\", \"XB\": 37.50 %; 25.00 %, 0.00 %, 66.67 %; 0.00 %\n"
    "    \"ZC\", \"XC\": 0.00 %; 0.00 %, 0.00 %, -; 12.50 %\n"
    "    \"ZD\", \"XD\": 50.00 %; 62.50 %, 25.00 %, 100.00 %; 0.00 %\n";
constexpr char kDescribedRemoval[] =
    "  removed by column elimination:\n"
    "    \"ZB\", \"XB\": X is 0, or depends on other variables, in the complete records with P = "
    "0\n"
    "    \"ZC\", \"XC\": Z is 0 everywhere\n";
constexpr char kDescribedClasses[] =
    "  empty [X|Z] classes:\n"
    "    \"ZC\", \"XC\": no record with Z = 1 and a known X\n";

TEST(CheckDescriptionTest, FiguresWorkedByHand) {
  const TinyStudy study;
  study.Write("data.csv", kDescribedData);
  study.Write("d.xml", QuietAnalysis());
  ProcessResult check = CheckDefinition(study, {"--data", "d.xml"});
  // Of the four records with ZA = 0 three know XA, which is 0 in all of them.
  EXPECT_EQ(
      check.output,
      "data.csv:1:20: warning: Where \"ZA\" is 0, \"XA\" is 0 as far as it is known (3 "
      "records), so its 1 missing value there would be imputed as 0. Check that this Z proves "
      "it, or choose another one.\n" +
          std::string(kDescription) + kDescribedRemoval + kDescribedClasses +
          "0 errors, 1 warning\n");
  EXPECT_EQ(check.exitStatus, 0);
  // A prediction removes nothing. Data that several runs read are described once.
  study.Write("d.xml", BatchText({"prediction.xml", "prediction.xml"}));
  check = CheckDefinition(study, {"d.xml", "--data"});
  EXPECT_NE(check.output.find("\n" + std::string(kDescription) + kDescribedClasses + "0 errors, "),
            std::string::npos)
      << check.output;
  EXPECT_EQ(check.output.find(kDescription), check.output.rfind(kDescription));
}

TEST(CheckDescriptionTest, DependentColumnsOfTheExample) {
  // XConfirmed depends on the three tests and XNeverSeen is 0: so the example was made.
  const fs::path example = fs::path(HOVAR_EXAMPLES) / "quickstart";
  const ScratchFolder folder;
  for (const char* name :
       {"data.csv", "analysis.xml", "prediction.xml", "validation.xml", "batch.xml"}) {
    fs::copy_file(example / name, folder.Path() / name);
  }
  const ProcessResult check = CheckDefinition(folder, {"--strict", "--data", "batch.xml"});
  EXPECT_NE(check.output.find(
                "  removed by column elimination:\n"
                "    \"ZNeverSeen\", \"XNeverSeen\": X is 0 in all complete records\n"
                "    \"ZConfirmed\", \"XConfirmed\": X is 0, or depends on other variables, in the "
                "complete records with P = 0\n"
                "  empty [X|Z] classes: none\n"
                "0 errors, 0 warnings\n"),
            std::string::npos)
      << check.output;
  EXPECT_EQ(check.exitStatus, 0);
}

TEST(CheckDescriptionTest, StagesOfColumnElimination) {
  // 2 ZD = ZA + ZB + ZC, in which ZD has the largest weight. XE is 1 in no complete record.
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA,ZA,ZB,ZC,ZD,ZE,XA,XB,XC,XD,XE\n"
              "a,A,1,0,0,0,0,0,0,0,0,0,0,0\n"
              "b,A,0,0,1,1,0,1,0,1,0,0,0,0\n"
              "c,A,1,0,1,0,1,1,0,0,1,0,0,0\n"
              "d,A,0,0,0,1,1,1,0,0,0,1,0,0\n"
              "e,A,1,0,0,0,0,0,1,0,0,0,1,0\n"
              "f,A,1,,0,0,0,0,1,0,0,0,1,1\n");
  study.Write("d.xml", QuietAnalysis());
  const ProcessResult check = CheckDefinition(study, {"--data", "d.xml"});
  EXPECT_NE(check.output.find("  removed by column elimination:\n"
                              "    \"ZD\", \"XD\": Z depends on other variables\n"
                              "    \"ZE\", \"XE\": X is 0 in all complete records\n"
                              "  empty [X|Z] classes: none\n"),
            std::string::npos)
      << check.output;
}

TEST(CheckDescriptionTest, NothingIsRemovedAndNoClassIsEmpty) {
  const TinyStudy study;
  study.Write("d.xml", QuietAnalysis());
  const std::string output = CheckDefinition(study, {"--data", "d.xml"}).output;
  EXPECT_TRUE(output.ends_with(
      "  variables (Z, X): Z = 1; X = 1 of the known, where Z = 0, where Z = 1; X missing\n"
      "  removed by column elimination: none\n"
      "  empty [X|Z] classes: none\n"
      "0 errors, 0 warnings\n"))
      << output;
}

TEST(CheckDescriptionTest, SharesOfNothingAreNotTold) {
  const TinyStudy study;
  const Row row = Data("", "1", kHeader);
  study.Write("d.xml", row.definition);
  for (const auto& [name, content] : row.files) {
    study.Write(name, content);
  }
  EXPECT_EQ(CheckDefinition(study, {"--data", "d.xml"}).output,
            "\"data.csv\": 0 records, 0 hospitals, 1 variable, 1 POA indicator\n"
            "  Y = 1: 0 (-)\n"
            "  P = 1: 0 (- of the known), missing: 0 (-)\n"
            "  complete records: 0 (-), with P = 0: 0\n"
            "  hospitals without a complete record: 0\n"
            "  variables (Z, X): Z = 1; X = 1 of the known, where Z = 0, where Z = 1; X missing\n"
            "    \"Z\", \"X\": -; -, -, -; -\n"
            "  empty [X|Z] classes:\n"
            "    \"Z\", \"X\": no record with Z = 1 and a known X\n"
            "    \"Z\", \"X\": no record with Z = 0 and a known X\n"
            "0 errors, 0 warnings\n");
}

TEST(CheckDescriptionTest, VariablesOfOneNameAreToldApartByTheOther) {
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA,ZA,ZB,X,X\n"
              "a,A,1,0,0,1,0,1\nb,A,0,0,0,0,1,1\nc,A,1,0,0,1,0,0\nd,A,0,0,0,0,1,0\n");
  study.Write("d.xml", QuietAnalysis());
  const std::string output = CheckDefinition(study, {"--data", "d.xml"}).output;
  EXPECT_NE(output.find("  removed by column elimination:\n"
                        "    \"ZA\", \"X\": Z is 0 everywhere\n"
                        "  empty [X|Z] classes:\n"
                        "    \"ZA\", \"X\": no record with Z = 1 and a known X\n"
                        "0 errors, "),
            std::string::npos)
      << output;
}

TEST(CheckDescriptionTest, DataThatCannotBeReadAreNotDescribed) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(QuietAnalysis(), "Indicators>1<", "Indicators>2<"));
  const ProcessResult check = CheckDefinition(study, {"--data", "d.xml"});
  EXPECT_TRUE(check.output.starts_with("d.xml:4:24: error: ")) << check.output;
  EXPECT_TRUE(check.output.ends_with(".\n1 error, 0 warnings\n")) << check.output;
}

}  // namespace
}  // namespace Testing
