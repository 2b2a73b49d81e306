#include "diagnostics/chain_verdict.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <sstream>
#include <string>

#include "support/files.h"

namespace Hovar {
namespace {

using Rows = std::vector<std::vector<std::string>>;

std::vector<std::string> Words(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  return words;
}

/// The chains of a case, one for each of its lengths.
std::vector<ChainDraws> ChainsOfCase(const Rows& draws, const std::vector<std::string>& row) {
  std::vector<ChainDraws> chains(Words(row[2]).size(),
                                 {{"BetaYX[0]", "BetaYX[1]"}, std::vector<std::vector<double>>(2)});
  for (const std::vector<std::string>& cells : draws) {
    if (cells[0] == row[0]) {
      ChainDraws& chain = chains[std::stoul(cells[1]) - 1];
      chain.columns[0].push_back(std::strtod(cells[2].c_str(), nullptr));
      chain.columns[1].push_back(std::strtod(cells[3].c_str(), nullptr));
    }
  }
  return chains;
}

std::string NameOf(Verdict verdict) {
  const std::map<Verdict, std::string> names{
      {Verdict::kNotFitForInference, "not_fit_for_inference"},
      {Verdict::kNotConverged, "not_converged"},
      {Verdict::kUndetermined, "cannot_be_told"},
      {Verdict::kTooFewDraws, "too_few_draws"},
      {Verdict::kNoSignAgainst, "no_sign_against"},
      {Verdict::kConverged, "converged"}};
  return names.at(verdict);
}

// The script is tests/reference/verdicts.R. The report page is tested with the same files.
TEST(ChainVerdictTest, AgreesWithTheTableOfCases) {
  const Rows draws = Testing::ReadCsv(Testing::ReferenceFile("verdict_draws.csv"));
  const Rows cases = Testing::ReadCsv(Testing::ReferenceFile("verdicts.csv"));
  ASSERT_GT(cases.size(), 20U);
  for (std::size_t i = 1; i < cases.size(); ++i) {
    const std::vector<std::string>& row = cases[i];
    SCOPED_TRACE(row[0]);
    const std::vector<ChainDraws> chains = ChainsOfCase(draws, row);
    const std::vector<std::string> lengths = Words(row[2]);
    for (std::size_t k = 0; k < chains.size(); ++k) {
      ASSERT_EQ(chains[k].DrawCount(), std::stoul(lengths[k]));
    }
    const ChainJudgement judgement = JudgeChains(
        chains, row[1] == "true" ? Estimation::kEstimatingEquations : Estimation::kIndependent);
    EXPECT_EQ(NameOf(judgement.verdict), row[3]);
    std::vector<std::string> judged;
    for (const std::size_t chain : judgement.judged) {
      judged.push_back(std::to_string(chain + 1));
    }
    EXPECT_EQ(judged, Words(row[4]));
    EXPECT_EQ(judgement.draws, std::stoul(row[5]));
    EXPECT_EQ(judgement.isCut ? "true" : "false", row[6]);
    std::vector<std::string> repeated;
    for (const auto& [first, later] : judgement.repeated) {
      repeated.push_back(std::to_string(later + 1) + "=" + std::to_string(first + 1));
    }
    EXPECT_EQ(repeated, Words(row[7]));
    EXPECT_EQ(judgement.coefficients.size(), 2U);
  }
}

TEST(ChainVerdictTest, TheThresholdsAreMetInclusively) {
  const auto verdict = [](double rhat, double bulk, double tail) {
    return VerdictOf({{rhat, bulk, tail}}, 4, Estimation::kIndependent);
  };
  EXPECT_EQ(verdict(1.01, 400, 400), Verdict::kConverged);
  EXPECT_EQ(verdict(1.0101, 400, 400), Verdict::kNotConverged);
  EXPECT_EQ(verdict(1.01, 399.9, 400), Verdict::kTooFewDraws);
  EXPECT_EQ(verdict(1.01, 400, 399.9), Verdict::kTooFewDraws);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(verdict(nan, 400, 400), Verdict::kUndetermined);
  EXPECT_EQ(verdict(1, 400, nan), Verdict::kUndetermined);
  EXPECT_EQ(verdict(1.5, 400, nan), Verdict::kNotConverged);
}

TEST(ChainVerdictTest, WithoutCoefficientsNothingCanBeTold) {
  EXPECT_EQ(JudgeChains(std::vector<ChainDraws>(2), Estimation::kIndependent).verdict,
            Verdict::kUndetermined);
}

}  // namespace
}  // namespace Hovar
