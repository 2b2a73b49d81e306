// Every element of every definition is required, in its place, under its exact name and without
// attributes. The cases are made from the valid definitions, one change at a time, and the line
// that each must give follows from what stands at the place of the change: as many bytes as the
// required name has are compared with it, then '>' must follow.

#include <gtest/gtest.h>

#include <cctype>

#include "runs.h"
#include "support/definition_tags.h"
#include "tiny_study.h"

namespace Testing {
namespace {

/// The error of requiring a tag at the first non-blank byte from `place` on.
std::string ErrorAt(const std::string& text, std::size_t place, const DefinitionTag& tag) {
  place = text.find_first_not_of(" \t\r\n", place);
  const auto required = [&text](const std::string& what, std::size_t at) {
    return Mismatch("d.xml", what, text.substr(at, 1));
  };
  if (text[place] != '<') {
    return required("<", place);
  }
  ++place;
  if (tag.isEnd && text[place] != '/') {
    return required("/", place);
  }
  place += tag.isEnd ? 1 : 0;
  const std::string current = text.substr(place, tag.name.size());
  if (current != tag.name) {
    return Mismatch("d.xml", tag.name, current);
  }
  place = text.find_first_not_of(" \t\r\n", place + tag.name.size());
  return required(">", place);
}

/// All named tags but the root's end.
std::vector<DefinitionTag> InnerTags(const std::string& text) {
  std::vector<DefinitionTag> tags = NamedTags(text);
  tags.pop_back();
  return tags;
}

class DefinitionGrammarTest : public testing::TestWithParam<std::string> {
 protected:
  static std::string Text() {
    const std::string& kind = GetParam();
    return kind == "Analysis"     ? AnalysisText()
           : kind == "Prediction" ? PredictionText()
           : kind == "Validation" ? ValidationText()
                                  : BatchText({});
  }

  void ExpectErrorOf(const std::string& text, const std::string& line) {
    SCOPED_TRACE(text);
    folder_.Write("d.xml", text);
    ExpectError(RunHovar(folder_, {"d.xml"}), line);
    EXPECT_FALSE(folder_.Has("out"));
  }

  /// Replaces each named tag in turn by what `change` makes of it and expects the error there.
  template <typename Change>
  void ExpectErrorOfEachTag(Change change) {
    const std::string text = Text();
    for (const DefinitionTag& tag : InnerTags(text)) {
      const std::string whole = text.substr(tag.place, tag.end - tag.place);
      const std::string changed =
          text.substr(0, tag.place) + change(tag, whole) + text.substr(tag.end);
      ExpectErrorOf(changed, ErrorAt(changed, tag.place, tag));
    }
  }

 private:
  ScratchFolder folder_;
};

TEST_P(DefinitionGrammarTest, AMisspeltTagIsRejected) {
  ExpectErrorOfEachTag([](const DefinitionTag& tag, std::string whole) {
    whole[whole.size() - 2] = '#';
    return tag.isEnd ? whole : Replaced(whole, tag.name.substr(0, 1), "#");
  });
}

TEST_P(DefinitionGrammarTest, CaseMatters) {
  ExpectErrorOfEachTag([](const DefinitionTag& tag, const std::string& whole) {
    const char first = static_cast<char>(std::tolower(tag.name[0]));
    return Replaced(whole, tag.name.substr(0, 1), std::string(1, first));
  });
}

TEST_P(DefinitionGrammarTest, ALongerNameIsRejected) {
  ExpectErrorOfEachTag(
      [](const DefinitionTag&, const std::string& whole) { return Replaced(whole, ">", "X>"); });
}

TEST_P(DefinitionGrammarTest, AShorterNameIsRejected) {
  ExpectErrorOfEachTag([](const DefinitionTag& tag, const std::string& whole) {
    return Replaced(whole, tag.name, tag.name.substr(0, tag.name.size() - 1));
  });
}

TEST_P(DefinitionGrammarTest, AnAttributeIsRejected) {
  ExpectErrorOfEachTag([](const DefinitionTag&, const std::string& whole) {
    return Replaced(whole, ">", " a=\"1\">");
  });
}

TEST_P(DefinitionGrammarTest, AnEmptyElementIsRejected) {
  ExpectErrorOfEachTag(
      [](const DefinitionTag&, const std::string& whole) { return Replaced(whole, ">", " />"); });
}

TEST_P(DefinitionGrammarTest, ADeclarationIsRejected) {
  ExpectErrorOfEachTag(
      [](const DefinitionTag& tag, const std::string&) { return "<?" + tag.name + "?>"; });
}

TEST_P(DefinitionGrammarTest, AMissingTagIsRejected) {
  const std::string text = Text();
  for (const DefinitionTag& tag : InnerTags(text)) {
    const std::string whole = text.substr(tag.place, tag.end - tag.place);
    const std::string changed = text.substr(0, tag.place) + text.substr(tag.end);
    // Without the first of two equal tags the other one takes its place and is missing itself.
    const bool hasEqualNext =
        changed.compare(changed.find_first_not_of('\n', tag.place), whole.size(), whole) == 0;
    // Without the end of the flag its text goes on: two errors, and either may be found first.
    const bool isEndOfFlag = whole == "</UseGeneralizedEstimatingEquations>";
    if (!hasEqualNext && !isEndOfFlag) {
      ExpectErrorOf(changed, ErrorAt(changed, tag.place, tag));
    }
  }
}

TEST_P(DefinitionGrammarTest, AMissingElementIsRejected) {
  const std::string text = Text();
  for (const DefinitionTag& tag : InnerTags(text)) {
    if (!tag.isEnd) {
      const std::string endTag = "</" + tag.name + ">\n";
      const std::size_t end = text.find(endTag, tag.place) + endTag.size();
      const std::string changed = text.substr(0, tag.place) + text.substr(end);
      if (!changed.substr(tag.place).starts_with("<" + tag.name + ">")) {
        ExpectErrorOf(changed, ErrorAt(changed, tag.place, tag));
      }
    }
  }
}

TEST_P(DefinitionGrammarTest, AnElementBeforeItsPlaceIsRejected) {
  const std::string text = Text();
  for (const DefinitionTag& tag : InnerTags(text)) {
    const std::string line = text.substr(tag.place, text.find('\n', tag.place) + 1 - tag.place);
    const std::size_t next = tag.place + line.size();
    const std::string following = text.substr(next, text.find('\n', next) + 1 - next);
    const bool areElements = !tag.isEnd && line.find("</") != std::string::npos &&
                             following.find("</") != std::string::npos && following[1] != '/';
    if (areElements && tag.name != "Element") {
      std::string changed = text;
      changed.replace(tag.place, line.size() + following.size(), following + line);
      ExpectErrorOf(changed, ErrorAt(changed, tag.place, tag));
    }
  }
}

TEST_P(DefinitionGrammarTest, TextBetweenElementsIsRejected) {
  const std::string text = Text();
  for (const DefinitionTag& tag : InnerTags(text)) {
    const bool isBehindTag = text[tag.place - 1] == '\n';
    if (isBehindTag) {
      std::string changed = text;
      changed.insert(tag.place, "x");
      ExpectErrorOf(changed, Mismatch("d.xml", "<", "x"));
    }
  }
}

// Every fifth byte; the tests of the reading functions cut at every one.
TEST_P(DefinitionGrammarTest, ADefinitionThatIsCutIsRejected) {
  const std::string text = "<!-- top -->\n<?xml version=\"1.0\"?>\n" + Text();
  const std::size_t complete = text.rfind('>') + 1;
  const ScratchFolder folder;
  for (std::size_t length = complete % 5; length < complete; length += 5) {
    SCOPED_TRACE("cut after " + text.substr(0, length));
    folder.Write("d.xml", text.substr(0, length));
    const ProcessResult result = RunHovar(folder, {"d.xml"});
    if (IsCutInFlag(text, length)) {
      EXPECT_TRUE(result.error == "Error: Unexpected end of stream\n" ||
                  result.error ==
                      "Error: Invalid value in \"UseGeneralizedEstimatingEquations\" tag\n");
      EXPECT_EQ(result.exitStatus, 1);
    } else {
      ExpectError(result, ErrorOfCut(text, length, "d.xml"));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, DefinitionGrammarTest,
                         testing::Values("Analysis", "Prediction", "Validation", "Batch"),
                         [](const auto& kind) { return kind.param; });

}  // namespace
}  // namespace Testing
