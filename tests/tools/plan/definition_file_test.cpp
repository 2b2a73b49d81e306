#include "tools/plan/definition_file.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "app/definition/element_table.h"
#include "blackbox/tiny_study.h"
#include "tools/plan/file_nouns.h"

namespace Hovar {
namespace {

using Testing::ScratchFolder;

TEST(DefinitionFileTest, ValuesAreThoseOfTheTable) {
  const DefinitionReading reading = ReadDefinition({"d.xml", Testing::AnalysisText()});
  ASSERT_TRUE(reading.definition.has_value()) << reading.error;
  std::vector<Element> expected;
  for (const ElementEntry& entry : kElements) {
    if (entry.kinds.Contains(RunKind::kAnalysis)) {
      expected.insert(expected.end(), entry.occurrence == Occurrence::kTwice ? 2 : 1,
                      entry.element);
    }
  }
  std::vector<Element> found;
  for (const DefinedValue& value : reading.definition->values) {
    found.push_back(value.element);
  }
  EXPECT_EQ(found, expected);
  EXPECT_EQ(reading.definition->TextOf(Element::kData), "data.csv");
  EXPECT_EQ(reading.definition->Find(Element::kCStatistics), nullptr);
}

TEST(DefinitionFileTest, ABatchHasItsList) {
  const DefinitionReading reading =
      ReadDefinition({"d.xml", Testing::BatchText({"a.xml", "", "b &amp; c.xml"})});
  ASSERT_TRUE(reading.definition.has_value()) << reading.error;
  EXPECT_EQ(reading.definition->simulations,
            (std::vector<std::string>{"a.xml", "", "b &amp; c.xml"}));
}

// Everything comes from one reading: what happens to the file afterwards changes nothing.
TEST(DefinitionFileTest, PlacesAndBytesAreThoseThatWereRead) {
  const ScratchFolder folder;
  const std::string text = "\n\n" + Testing::AnalysisText();
  const std::string path = folder.Write("d.xml", text);
  const DefinitionReading good = ReadDefinitionFile(path);
  folder.Write("bad.xml", "\n\n<Analysis>\n x</Analysis>");
  const DefinitionReading bad = ReadDefinitionFile(folder.File("bad.xml"));
  folder.Write("d.xml", "gone");
  folder.Write("bad.xml", "gone");
  ASSERT_TRUE(good.definition.has_value()) << good.error;
  EXPECT_EQ(good.definition->text.Bytes(), text);
  const std::size_t data = text.find("data.csv");
  const auto line =
      1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(data), '\n');
  const auto column = data - text.rfind('\n', data);
  const Place place = good.definition->PlaceOfValue(Element::kData);
  EXPECT_EQ(place.line, line);
  EXPECT_EQ(place.column, static_cast<std::int64_t>(column));
  EXPECT_EQ(good.definition->PlaceOfTag(Element::kData).column, place.column - 6);  // <Data>
  ASSERT_FALSE(bad.definition.has_value());
  EXPECT_EQ(PlaceOf(bad.text, bad.stop).line, 4);
}

// A file that no tool keeps in memory is read all the same.
TEST(DefinitionFileTest, ALargeFileIsReadFromTheDisk) {
  const ScratchFolder folder;
  const std::string comment = "<!--" + std::string(17 << 20, '\n') + "-->";
  const std::string path = folder.Write("d.xml", comment + Testing::AnalysisText());
  const DefinitionReading reading = ReadDefinitionFile(path);
  ASSERT_TRUE(reading.definition.has_value()) << reading.error;
  EXPECT_EQ(reading.definition->text.Bytes(), std::nullopt);
  EXPECT_EQ(reading.definition->data, "data.csv");
  EXPECT_GT(reading.definition->PlaceOfValue(Element::kData).line, 17 << 20);
}

TEST(DefinitionFileTest, AMissingFileHasTheProgramsError) {
  const DefinitionReading reading = ReadDefinitionFile("/nowhere/d.xml");
  EXPECT_FALSE(reading.definition.has_value());
  EXPECT_EQ(reading.error, "File \"/nowhere/d.xml\" can not be opened");
}

TEST(FileNounsTest, EveryFileHasOneOfItsOwn) {
  std::vector<std::string_view> nouns;
  for (const FileRole role :
       {FileRole::kDefinition, FileRole::kData, FileRole::kLog, FileRole::kChainSummary,
        FileRole::kChain, FileRole::kCoefficients, FileRole::kIndividualPredictions,
        FileRole::kHospitalPredictions, FileRole::kCStatistics}) {
    EXPECT_FALSE(NounOf(role).empty());
    EXPECT_EQ(std::count(nouns.begin(), nouns.end(), NounOf(role)), 0);
    nouns.push_back(NounOf(role));
  }
  EXPECT_EQ(NounOf(FileRole::kLog), "log file");
  EXPECT_EQ(NounOf(FileRole::kNone), "");
}

}  // namespace
}  // namespace Hovar
