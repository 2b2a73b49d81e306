// The top of a definition file: declarations, comments, the root element and its end.

#include <gtest/gtest.h>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

struct Row {
  std::string text;
  std::string error;
};

void ExpectErrors(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const ScratchFolder folder;
    folder.Write("d.xml", row.text);
    ExpectError(RunHovar(folder, {"d.xml"}), row.error);
    EXPECT_EQ(FilesBelow(folder), std::set<std::string>{"d.xml"});
  }
}

/// Runs a prediction definition that must succeed.
void ExpectPredictionRuns(const std::string& text) {
  SCOPED_TRACE(text.substr(0, 300));
  const TinyStudy study;
  study.Write("d.xml", text);
  const ProcessResult result = RunHovar(study, {"d.xml"});
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_TRUE(study.Has("out/hospital.csv"));
}

TEST(DefinitionRootTest, AnyOtherRootIsNoDefinition) {
  std::vector<Row> rows;
  for (const char* root :
       {"<analysis>", "<ANALYSIS>", "<Analysi>", "<AnalysisX>", "<Study>", "<batch>",
        "<prediction>", "<Validations>", "</Study>", "<Study />", "<Study/>",
        // A slash directly after the name belongs to it.
        "<Analysis/>", "<Batch/>"}) {
    rows.push_back({std::string(root) + "\n<Input>", "Invalid definition file"});
  }
  ExpectErrors(rows);
}

TEST(DefinitionRootTest, ATagMustStandAtTheTop) {
  ExpectErrors({
      {"", "Unexpected end of stream"},
      {" \t\r\n", "Unexpected end of stream"},
      {"<!-- nothing else -->\n", "Unexpected end of stream"},
      {"<?xml version=\"1.0\"?>\n", "Unexpected end of stream"},
      {"<!-- never closed", "Unexpected end of stream"},
      {"x<Batch>", Mismatch("d.xml", "<", "x")},
      {"\xEF\xBB\xBF<Batch>", Mismatch("d.xml", "<", "\xEF")},
      {"<", "Unexpected end of stream"},
      {"<Batch", "Unexpected end of stream"},
      {"<Batch ", "Unexpected end of stream"},
  });
}

TEST(DefinitionRootTest, TagsFollowTheirGrammar) {
  ExpectErrors({
      // Attribute values stand in double quotes.
      {"<?xml version='1.0'?>", Mismatch("d.xml", "\"", "'")},
      {"<Batch a='1'>", Mismatch("d.xml", "\"", "'")},
      {"<Batch a=1>", Mismatch("d.xml", "\"", "1")},
      {"<Batch a \"1\">", Mismatch("d.xml", "=", "\"")},
      {"<Batch a=\"1\" a=\"2\">", "Duplicate attributes not allowed in XML tag"},
      {"<Batch a=\"1", "Unexpected end of stream"},
      // A declaration ends with a question mark and >. Here the mark is part of the name.
      {"<?xml?>", Mismatch("d.xml", "?", ">")},
      {"<?xml version=\"1.0\">", Mismatch("d.xml", "?", ">")},
      {"<?xml version=\"1.0\"? >", Mismatch("d.xml", ">", " ")},
      {"<Batch a=\"1\" / >", Mismatch("d.xml", ">", " ")},
      {"<Batch ?>", Mismatch("d.xml", ">", "?")},
      {"</Batch a=\"1\">", Mismatch("d.xml", ">", "a")},
      // No comment stands inside a tag, and only <!-- opens one.
      {"<Batch <!-- no -->>", Mismatch("d.xml", "=", "n")},
      {"<!DOCTYPE x>\n<Batch>", Mismatch("d.xml", "=", "<")},
  });
}

TEST(DefinitionRootTest, DeclarationsAndCommentsMayStandBeforeTheRoot) {
  for (const char* top :
       {"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n", "<?xml ?>",
        "<?xml version=\"1.0\"?><?hovar a=\"b\" c = \"d\" ?>\n", "<!-- a -->\n<!-- <b> - -- -->",
        "<!---->", "<!--> does not close itself -->",
        "\r\n\t <!-- several\nlines -->\n<?xml version=\"1.0\"?>\n<!-- more -->"}) {
    ExpectPredictionRuns(top + PredictionText());
  }
}

TEST(DefinitionRootTest, AttributesOfTheRootMeanNothing) {
  for (const char* root : {"<Prediction xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">",
                           "<Prediction\n a = \"1\"\tb=\"<>\" >", "<Prediction a=\"\">"}) {
    ExpectPredictionRuns(Replaced(PredictionText(), "<Prediction>", root));
  }
}

TEST(DefinitionRootTest, TheRootIsChosenByItsNameAlone) {
  ExpectPredictionRuns(Replaced(PredictionText(), "<Prediction>", "</Prediction>"));
  ExpectPredictionRuns(Replaced(PredictionText(), "<Prediction>", "<Prediction />"));
  ExpectErrors({{"<Analysis />", "Unexpected end of stream"},
                {"</Validation>\n<Output>", Mismatch("d.xml", "Input", "Outpu")}});
}

TEST(DefinitionRootTest, CommentsMayStandBetweenAllElements) {
  for (std::string text :
       {AnalysisText(), PredictionText(), ValidationText(), BatchText({"prediction.xml"})}) {
    SCOPED_TRACE(text);
    for (std::size_t line = 0; (line = text.find('\n', line)) != std::string::npos;) {
      const std::string comments = "<!-- x --> \t<!-- <y> -- -->\n<!---->\r\n";
      text.insert(line, comments);
      line += comments.size() + 1;
    }
    const TinyStudy study;
    study.Write("d.xml", text);
    const ProcessResult result = RunHovar(study, {"d.xml"});
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(study.Has("out/fitted.csv") || study.Has("out/predicted.csv") ||
                study.Has("out/cstatistics.csv"));
  }
}

TEST(DefinitionRootTest, WhiteSpaceMayStandBehindNamesAndBetweenElements) {
  std::string text;
  for (const char character : PredictionText()) {
    text += character == '\n' ? "\r\n \t" : std::string(1, character);
  }
  text = Replaced(text, "<Input>", "<Input \t\r\n>");
  text = Replaced(text, "</Input>", "</Input\n>");
  text = Replaced(text, "<Data>", "<Data >");
  ExpectPredictionRuns(Replaced(text, "</Steps>", " \n</Steps >"));
}

TEST(DefinitionRootTest, WhatFollowsTheRootIsNotRead) {
  ExpectPredictionRuns(PredictionText() + "<Analysis> & anything");
}

// The root's end tag is looked at after the runner was built.
TEST(DefinitionRootTest, AWrongEndOfTheRootIsFoundAfterTheLogFileWasMade) {
  struct Case {
    std::string root;
    std::string text;
    std::string log;
  };
  for (const Case& definition : {Case{"Analysis", AnalysisText(), "out/analysis.log"},
                                 Case{"Prediction", PredictionText(), "out/prediction.log"},
                                 Case{"Validation", ValidationText(), "out/validation.log"}}) {
    const std::string end = "</" + definition.root + ">\n";
    const std::vector<Row> rows = {
        {"</Elsewhere__>", Mismatch("d.xml", definition.root,
                                    std::string("Elsewhere__").substr(0, definition.root.size()))},
        {"</" + definition.root + "X>", Mismatch("d.xml", ">", "X")},
        {"<" + definition.root + ">", Mismatch("d.xml", "/", definition.root.substr(0, 1))},
        {"", "Unexpected end of stream"},
        {"x", Mismatch("d.xml", "<", "x")},
    };
    for (const Row& row : rows) {
      SCOPED_TRACE(definition.root + " " + row.text);
      const TinyStudy study;
      std::set<std::string> files = FilesBelow(study);
      study.Write("d.xml", Replaced(definition.text, end, row.text));
      ExpectError(RunHovar(study, {"d.xml"}), row.error);
      files.insert({"d.xml", definition.log});
      EXPECT_EQ(FilesBelow(study), files);
      EXPECT_EQ(study.Read(definition.log), "");
    }
  }
}

TEST(DefinitionRootTest, AMatchLineNamesTheFileAsItWasWritten) {
  const ScratchFolder folder;
  folder.Write("sub/d.xml", "x");
  ExpectError(RunHovar(folder, {"sub\\d.xml"}), Mismatch("sub\\d.xml", "<", "x"));
}

}  // namespace
}  // namespace Testing
