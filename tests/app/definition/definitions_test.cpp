#include "app/definition/definitions.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "app/definition/definition_texts.h"
#include "foundation/random/random_generator.h"
#include "support/outcome.h"
#include "support/raised.h"
#include "support/seeded_random.h"
#include "support/streams.h"

namespace {

using Testing::InputStream;
using Testing::kAnalysisContent;
using Testing::kPredictionContent;
using Testing::kValidationContent;
using Vell::XmlReader;
using namespace Vell::Exceptions;  // NOLINT(google-build-using-namespace): many classes below

std::string Changed(std::string text, const std::string& from, const std::string& to) {
  const std::size_t place = text.find(from);
  EXPECT_NE(place, std::string::npos) << from;
  return text.replace(place, from.size(), to);
}

/// Reads `text` with one of the four functions.
template <typename Definition>
Definition Read(Definition (*read)(XmlReader&), const std::string& text) {
  const InputStream stream(text);
  XmlReader reader(stream.Handle());
  return read(reader);
}

TEST(AnalysisDefinitionTest, EveryElementGoesToItsField) {
  const Hovar::AnalysisDefinition read = Read(Hovar::ReadAnalysisDefinition, kAnalysisContent);
  EXPECT_EQ(read.data.View(), " in\\data.csv");
  EXPECT_EQ(read.numberOfPoaIndicators, 3);
  EXPECT_EQ(read.folder.View(), "out/");
  EXPECT_EQ(read.regressionCoefficients.View(), "coefficients.csv");
  EXPECT_EQ(read.mcmcSubFolder.View(), "chain");
  EXPECT_EQ(read.logFile.View(), "run.log");
  EXPECT_EQ(read.useGeneralizedEstimatingEquations, Hovar::WorkingCorrelation::kExchangeable);
  EXPECT_EQ(read.linearDependenceTolerance, 1e-9);
  EXPECT_EQ(read.parameters.tolerance, 0.25);
  EXPECT_EQ(read.parameters.maxIterations, 50);
  EXPECT_EQ(read.parameters.priorPrecision, 1.5);
  EXPECT_EQ(read.parametersMcmc.tolerance, 0.125);
  EXPECT_EQ(read.parametersMcmc.maxIterations, -7);
  EXPECT_EQ(read.parametersMcmc.priorPrecision, -2);
  EXPECT_EQ(read.mcmc.thinning, 4);
  EXPECT_EQ(read.mcmc.burnin, 5);
  EXPECT_EQ(read.mcmc.steps, 6);
}

TEST(AnalysisDefinitionTest, TheFlagIsTrueOrFalse) {
  EXPECT_EQ(Read(Hovar::ReadAnalysisDefinition, Changed(kAnalysisContent, ">true<", ">false<"))
                .useGeneralizedEstimatingEquations,
            Hovar::WorkingCorrelation::kIndependent);
  for (const char* flag : {"True", " true", "1", ""}) {
    SCOPED_TRACE(flag);
    const std::string text = Changed(kAnalysisContent, ">true<", ">" + std::string(flag) + "<");
    const Testing::Outcome outcome =
        Testing::Observe([&] { Read(Hovar::ReadAnalysisDefinition, text); });
    EXPECT_EQ(outcome.Failure(),
              "Exception: Invalid value in \"UseGeneralizedEstimatingEquations\" tag");
  }
}

TEST(PredictionDefinitionTest, EveryElementGoesToItsField) {
  const Hovar::PredictionDefinition read =
      Read(Hovar::ReadPredictionDefinition, kPredictionContent);
  EXPECT_EQ(read.data.View(), "data.csv");
  EXPECT_EQ(read.numberOfPoaIndicators, 2);
  EXPECT_EQ(read.regressionCoefficients.View(), "in/coefficients.csv");
  EXPECT_EQ(read.folder.View(), "out");
  EXPECT_EQ(read.individualPredictions.View(), "individual.csv");
  EXPECT_EQ(read.hospitalPredictions.View(), "hospital.csv");
  EXPECT_EQ(read.logFile.View(), "run.log");
  EXPECT_EQ(read.mcmc.thinning, 4);
  EXPECT_EQ(read.mcmc.burnin, 5);
  EXPECT_EQ(read.mcmc.steps, 6);
}

TEST(ValidationDefinitionTest, EveryElementGoesToItsField) {
  const Hovar::ValidationDefinition read =
      Read(Hovar::ReadValidationDefinition, kValidationContent);
  EXPECT_EQ(read.data.View(), "data.csv");
  EXPECT_EQ(read.numberOfPoaIndicators, 2);
  EXPECT_EQ(read.regressionCoefficients.View(), "in/coefficients.csv");
  EXPECT_EQ(read.individualPredictions.View(), "in/individual.csv");
  EXPECT_EQ(read.folder.View(), "out");
  EXPECT_EQ(read.cStatistics.View(), "cstatistics.csv");
  EXPECT_EQ(read.logFile.View(), "run.log");
  EXPECT_EQ(read.mcmc.thinning, 4);
  EXPECT_EQ(read.mcmc.burnin, 5);
  EXPECT_EQ(read.mcmc.steps, 6);
}

TEST(DefinitionTest, ReadingItSeedsTheGeneratorAtOnce) {
  // The seed words 1 and 1 (0 counts as 1) give (36969 << 16) xor 18000 first.
  Vell::RandomGenerator::Seed(3, 7);
  Read(Hovar::ReadPredictionDefinition, kPredictionContent);
  EXPECT_EQ(Vell::RandomGenerator::NextWord(), 2422818384U);
  // Also when an element after the seed is wrong.
  Vell::RandomGenerator::Seed(3, 7);
  const Testing::Outcome outcome = Testing::Observe([] {
    Read(Hovar::ReadValidationDefinition,
         Changed(kValidationContent, "<Thinning>4", "<Thinning>x"));
  });
  EXPECT_EQ(outcome.Failure(), "IOException: IO Exception");
  EXPECT_EQ(Vell::RandomGenerator::NextWord(), 2422818384U);
}

TEST(DefinitionTest, WhatFollowsTheLastElementIsNotRead) {
  const InputStream stream(std::string(kPredictionContent) + "</Prediction>");
  XmlReader reader(stream.Handle());
  Hovar::ReadPredictionDefinition(reader);
  reader.ReadEndTag("Prediction");
}

TEST(DefinitionTest, ErrorsHaveTheirClasses) {
  const auto raises = [](const std::string& text) {
    return Testing::Observe([&] { Read(Hovar::ReadPredictionDefinition, text); }).Failure();
  };
  const std::string text = kPredictionContent;
  EXPECT_EQ(raises(""), "EndOfStreamException: Unexpected end of stream");
  EXPECT_EQ(raises(text.substr(0, text.find("4</Thin"))),
            "EndOfStreamException: Unexpected end of stream");
  EXPECT_EQ(raises(Changed(text, "<Steps>6", "<Steps>six")), "IOException: IO Exception");
  EXPECT_EQ(raises(Changed(text, "data.csv", std::string("d\0a", 3))),
            "InvalidInputException: Invalid input string");
  EXPECT_EQ(raises(Changed(text, "<Element>1", "<Element>x")),
            "EndOfStreamException: Unexpected end of stream");
  EXPECT_EQ(raises(Changed(text, "Vector", "vector")),
            "InvalidInputException: Invalid RandomGenerator XML input");
  EXPECT_EQ(raises(Changed(text, "xsi:type", "type")),
            "InvalidArgumentException: Attribute not found in XML tag");
}

TEST(DefinitionTest, ANameAndACharacterAreMismatchesOfTheirOwn) {
  const auto line = [](const InputStream& stream, const std::string& expected,
                       const std::string& current) {
    return "Invalid input in file \"" + stream.Path() + "\": expected \"" + expected +
           "\", current \"" + current + "\"";
  };
  const InputStream wrongName(Changed(kPredictionContent, "<Steps>", "<Stops>"));
  Testing::ExpectRaises<MatchException<Vell::String>>(line(wrongName, "Steps", "Stops"), [&] {
    XmlReader reader(wrongName.Handle());
    Hovar::ReadPredictionDefinition(reader);
  });
  const InputStream wrongCharacter(Changed(kPredictionContent, "6</Steps>", "12abc</Steps>"));
  Testing::ExpectRaises<MatchException<char>>(line(wrongCharacter, "<", "a"), [&] {
    XmlReader reader(wrongCharacter.Handle());
    Hovar::ReadPredictionDefinition(reader);
  });
}

TEST(BatchDefinitionTest, HoldsItsPathsInTheirOrder) {
  const Hovar::BatchDefinition read =
      Read(Hovar::ReadBatchDefinition,
           "<Simulations><!-- one --><Simulation>b.xml</Simulation>\n"
           "<Simulation a=\"1\">  </Simulation><Simulation></Simulation>"
           "<Simulation>a &amp; b</Simulation></Simulations>");
  ASSERT_EQ(read.Size(), 4);
  EXPECT_EQ(read[0].View(), "b.xml");
  EXPECT_EQ(read[1].View(), "  ");
  EXPECT_EQ(read[2].View(), "");
  EXPECT_EQ(read[3].View(), "a &amp; b");
  EXPECT_EQ(Read(Hovar::ReadBatchDefinition, "<Simulations></Simulations>").Size(), 0);
}

TEST(BatchDefinitionTest, HoldsManyPaths) {
  std::string text = "<Simulations>";
  for (int i = 0; i < 1000; ++i) {
    text += "<Simulation>" + std::to_string(i) + "</Simulation>";
  }
  const Hovar::BatchDefinition read = Read(Hovar::ReadBatchDefinition, text + "</Simulations>");
  ASSERT_EQ(read.Size(), 1000);
  EXPECT_EQ(read[999].View(), "999");
}

TEST(BatchDefinitionTest, AnythingElseInTheListIsRejected) {
  for (const char* entry :
       {"<Simulation />", "<Other>x</Other>", "</Simulation>", "<?a ?>", "<simulation>"}) {
    SCOPED_TRACE(entry);
    const Testing::Outcome outcome = Testing::Observe([&] {
      Read(Hovar::ReadBatchDefinition, "<Simulations>" + std::string(entry) + "</Simulations>");
    });
    EXPECT_EQ(outcome.Failure(), "Exception: Invalid XML simulation");
  }
}

// Whatever a definition turns into when bytes of it are changed, dropped or doubled: it is read, or
// one error is raised.
TEST(DefinitionTest, DamagedDefinitionsRaiseOneErrorOrNone) {
  Testing::SeededRandom random(99);
  SCOPED_TRACE(random.Text());
  const std::string alphabet("<>/=?!- \n\"xA0\0\xFF", 15);
  const std::vector<std::pair<std::string, std::function<void(XmlReader&)>>> kinds = {
      {kAnalysisContent, [](XmlReader& reader) { Hovar::ReadAnalysisDefinition(reader); }},
      {kPredictionContent, [](XmlReader& reader) { Hovar::ReadPredictionDefinition(reader); }},
      {kValidationContent, [](XmlReader& reader) { Hovar::ReadValidationDefinition(reader); }},
      {"<Simulations><Simulation>a</Simulation><Simulation>b</Simulation></Simulations>",
       [](XmlReader& reader) { Hovar::ReadBatchDefinition(reader); }}};
  for (int round = 0; round < 2000; ++round) {
    const auto& [content, read] = kinds[static_cast<std::size_t>(round) % kinds.size()];
    std::string text = content;
    for (int change = random.Integer(1, 3); change > 0; --change) {
      const auto at =
          static_cast<std::size_t>(random.Integer(0, static_cast<std::int32_t>(text.size()) - 1));
      const int kind = random.Integer(0, 2);
      const char byte = alphabet[static_cast<std::size_t>(random.Integer(0, 14))];
      text.replace(at, kind == 1 ? 0 : 1, kind == 0 ? 0 : 1, byte);
    }
    Testing::OutputCapture capture;
    bool isRaised = false;
    try {
      const InputStream stream(text);
      XmlReader reader(stream.Handle());
      read(reader);
    } catch (const Exception&) {
      isRaised = true;
    }
    const std::string error = capture.TakeError();
    ASSERT_EQ(isRaised, error.starts_with("Error: ")) << text << "\n" << error;
    ASSERT_EQ(isRaised ? error.find("\nError: ") : std::string::npos, std::string::npos)
        << text << "\n"
        << error;
  }
}

}  // namespace
