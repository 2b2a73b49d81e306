#include "app/dispatch.h"

#include <gtest/gtest.h>

#include <utility>

#include "app/definition/definition_texts.h"
#include "foundation/io/log.h"
#include "support/definition_tags.h"
#include "support/files.h"
#include "support/outcome.h"
#include "support/raised.h"

namespace {

using Testing::ScratchFolder;

/// A definition whose output folder is `out` in this folder.
std::string WithRoot(const ScratchFolder& folder, const std::string& root, std::string content) {
  const std::string place = "<Folder>out";
  if (const std::size_t at = content.find(place); at != std::string::npos) {
    content.replace(at, place.size(), "<Folder>" + folder.File("out"));
  }
  return "<" + root + ">" + content + "</" + root + ">";
}

Hovar::RunnerHandle Dispatch(const ScratchFolder& folder, const std::string& text) {
  return Hovar::DispatchDefinition(Vell::String(folder.Write("d.xml", text)));
}

TEST(DispatchTest, EveryRootBuildsARunnerAndSingleRunsAttachTheirLog) {
  struct Row {
    const char* root;
    const char* content;
    bool hasLog;
  };
  for (const Row& row : {Row{"Analysis", Testing::kAnalysisContent, true},
                         Row{"Prediction", Testing::kPredictionContent, true},
                         Row{"Validation", Testing::kValidationContent, true},
                         Row{"Batch", "<Simulations></Simulations>", false}}) {
    SCOPED_TRACE(row.root);
    const ScratchFolder folder;
    const Hovar::RunnerHandle runner = Dispatch(folder, WithRoot(folder, row.root, row.content));
    EXPECT_TRUE(static_cast<bool>(runner));
    EXPECT_EQ(folder.Has("out/run.log"), row.hasLog);
    Vell::IO::Log().WriteLine("a line");
    if (row.hasLog) {
      EXPECT_EQ(folder.Read("out/run.log"), "a line\n");
    }
    Vell::IO::Log().Clear();
  }
}

TEST(DispatchTest, ABatchThatListsNothingRuns) {
  const ScratchFolder folder;
  Dispatch(folder, "<?xml version=\"1.0\"?><Batch><Simulations></Simulations></Batch>")->Run();
}

TEST(DispatchTest, ErrorsHaveTheirClasses) {
  const ScratchFolder folder;
  const auto raises = [&](const std::string& text) {
    return Testing::Observe([&] { Dispatch(folder, text); }).Failure();
  };
  EXPECT_EQ(raises("<Study>"), "Exception: Invalid definition file");
  EXPECT_EQ(raises("<Batch/>"), "Exception: Invalid definition file");
  EXPECT_EQ(raises(""), "EndOfStreamException: Unexpected end of stream");
  EXPECT_EQ(raises("<Batch><Simulations><x>"), "Exception: Invalid XML simulation");
  EXPECT_EQ(raises("<Batch a=\"1\" a=\"1\">"),
            "InvalidArgumentException: Duplicate attributes not allowed in XML tag");
  const std::string missing = folder.File("missing.xml");
  EXPECT_EQ(Testing::Observe([&] { Hovar::DispatchDefinition(Vell::String(missing)); }).Failure(),
            "FileOpenException: File \"" + missing + "\" can not be opened");
}

TEST(DispatchTest, AWrongEndOfTheRootIsANameMismatch) {
  const ScratchFolder folder;
  const std::string path = folder.Write("d.xml", "<Batch><Simulations></Simulations></Botch>");
  Testing::ExpectRaises<Vell::Exceptions::MatchException<Vell::String>>(
      "Invalid input in file \"" + path + "\": expected \"Batch\", current \"Botch\"",
      [&] { Hovar::DispatchDefinition(Vell::String(path)); });
}

TEST(DispatchTest, ADefinitionCutAtAnyByteRaisesOneError) {
  const ScratchFolder folder;
  for (const auto& [root, content] : {std::pair{"Analysis", Testing::kAnalysisContent},
                                      std::pair{"Prediction", Testing::kPredictionContent},
                                      std::pair{"Validation", Testing::kValidationContent},
                                      std::pair{"Batch", "<Simulations></Simulations>"}}) {
    const std::string text =
        "<!-- top --><?xml version=\"1.0\"?>" + WithRoot(folder, root, content);
    for (std::size_t length = 0; length < text.size(); ++length) {
      SCOPED_TRACE("cut after " + text.substr(0, length));
      Testing::OutputCapture capture;
      EXPECT_THROW(Dispatch(folder, text.substr(0, length)), Vell::Exceptions::Exception);
      const std::string error = capture.TakeError();
      if (Testing::IsCutInFlag(text, length)) {
        EXPECT_TRUE(error == "Error: Unexpected end of stream\n" ||
                    error == "Error: Invalid value in \"UseGeneralizedEstimatingEquations\" tag\n")
            << error;
      } else {
        EXPECT_EQ(error,
                  "Error: " + Testing::ErrorOfCut(text, length, folder.File("d.xml")) + "\n");
      }
    }
  }
  Vell::IO::Log().Clear();
}

}  // namespace
