#include "tools/chains/verdict_text.h"

#include <gtest/gtest.h>

#include "support/files.h"
#include "tools/chains/chain_files.h"

namespace Hovar {
namespace {

/// Chains of one coefficient each, made of a fixed sequence: chain c is `draws` numbers of it.
std::vector<ChainDraws> ChainsOf(std::size_t chains, std::size_t draws, double shiftOfFirst = 0) {
  std::uint64_t state = 20240601;
  std::vector<ChainDraws> result(chains, {{"BetaYX[0]"}, {{}}});
  for (std::size_t c = 0; c < chains; ++c) {
    for (std::size_t i = 0; i < draws; ++i) {
      state = state * 6364136223846793005U + 1442695040888963407U;
      result[c].columns[0].push_back(static_cast<double>(state >> 33) / 1e9 +
                                     (c == 0 ? shiftOfFirst : 0));
    }
  }
  return result;
}

/// The text for fits that take the records as independent.
std::string TextOf(const std::vector<ChainDraws>& chains, const std::vector<std::string>& names) {
  return VerdictText(chains, names, Estimation::kIndependent);
}

void ExpectHolds(const std::string& text, const std::string& part) {
  EXPECT_NE(text.find(part), std::string::npos) << text;
}

TEST(VerdictTest, GoodChainsHaveConverged) {
  const std::string text = TextOf(ChainsOf(4, 1000), {"XIntercept"});
  ExpectHolds(text, "4 chains of 1000 draws, 1 coefficient. ");
  ExpectHolds(text, "The chains have converged. Largest R-hat: 1.00");
  ExpectHolds(text, "(XIntercept)");
}

TEST(VerdictTest, ChainsApartHaveNotConverged) {
  const std::string text = TextOf(ChainsOf(4, 1000, 5), {"XIntercept"});
  ExpectHolds(text,
              "The chains have NOT converged: 1 of 1 coefficient do not pass.\n"
              "  XIntercept: R-hat ");
  ExpectHolds(text, "Raise Burnin and Steps");
}

TEST(VerdictTest, TooFewDrawsAreTold) {
  const std::string text = TextOf(ChainsOf(4, 60), {"XIntercept"});
  ExpectHolds(text, "1 coefficient");
  EXPECT_EQ(text.find("have converged"), std::string::npos) << text;
}

TEST(VerdictTest, WhatCannotBeJudgedIsTold) {
  const std::string text = TextOf(ChainsOf(2, 3), {"XIntercept"});
  ExpectHolds(text, "cannot be told: 1 of 1 coefficient");
  ExpectHolds(text, "  XIntercept: cannot be judged\n");
}

TEST(VerdictTest, OneChainIsNotEnough) {
  const std::string text = TextOf(ChainsOf(1, 1000), {"XIntercept"});
  ExpectHolds(text, "There is no sign against convergence in this one chain. Largest R-hat: ");
  ExpectHolds(text, "One chain can only be compared with itself");
  EXPECT_EQ(text.find("have converged"), std::string::npos) << text;
}

TEST(VerdictTest, OneShortChainIsNotSaidToAgree) {
  const std::string text = TextOf(ChainsOf(1, 300), {"XIntercept"});
  ExpectHolds(text, "There is no sign against convergence, but 1 of 1 coefficient have too few");
  EXPECT_EQ(text.find("agree"), std::string::npos) << text;
}

TEST(VerdictTest, AChainThatRepeatsAnotherIsSaidNotToBeJudged) {
  std::vector<ChainDraws> chains = ChainsOf(3, 1000);
  chains[2] = chains[0];
  const std::string text = TextOf(chains, {"XIntercept"});
  EXPECT_TRUE(text.starts_with("2 chains of 1000 draws, 1 coefficient. ")) << text;
  ExpectHolds(text, "\nNot judged: chain-3 holds the same draws as chain-1.\n");
}

TEST(VerdictTest, ChainsOfDifferentLengthAreSaidToBeCut) {
  std::vector<ChainDraws> chains = ChainsOf(3, 1000);
  chains[1].columns[0].resize(900);
  const std::string text = TextOf(chains, {"XIntercept"});
  EXPECT_TRUE(text.starts_with("3 chains of 900 draws, 1 coefficient. ")) << text;
  ExpectHolds(text,
              "\nThe chains differ in length; of each the first 900 draws are judged.\n"
              "The chains have converged. ");
}

TEST(VerdictTest, WithEstimatingEquationsNotFitForInferenceComesFirst) {
  for (const std::size_t draws : {1000U, 1U}) {
    for (const double shift : {0.0, 5.0}) {
      const std::string text =
          VerdictText(ChainsOf(4, draws, shift), {"XIntercept"}, Estimation::kEstimatingEquations);
      EXPECT_TRUE(text.starts_with("The draws are not fit for inference, ")) << text;
      ExpectHolds(text,
                  "E[Y|X,P=0]-MCMC; where P is missing, also E[P|YPXZ], the observed E[Y|P=0], ");
      ExpectHolds(text, "Take counts and expectations from a run with false, ");
      ExpectHolds(text, "\n4 chains of " + std::to_string(draws) + " draw");
      EXPECT_EQ(text.find("converged"), std::string::npos) << text;
      EXPECT_EQ(text.find("agree"), std::string::npos) << text;
      EXPECT_EQ(text.find("Raise"), std::string::npos) << text;
      EXPECT_EQ(text.find("Largest R-hat: ") != std::string::npos, draws == 1000) << text;
    }
  }
}

TEST(VerdictTest, WithEstimatingEquationsAndNoDrawsThereIsNoVerdict) {
  EXPECT_EQ(VerdictText(ChainsOf(2, 0), {"XIntercept"}, Estimation::kEstimatingEquations),
            "No draws were kept, so there is nothing to judge in 2 chains.\n");
}

TEST(VerdictTest, NumbersInSentencesAreTheThresholds) {
  // Vehtari et al. (2021): 1.01 and 400. Eight draws give each half of a chain four.
  ExpectHolds(TextOf(ChainsOf(4, 1000), {"v"}), " with R-hat at most 1.01 and effective\n");
  ExpectHolds(TextOf(ChainsOf(4, 1000), {"v"}), " in bulk and tails of at least 400 (");
  ExpectHolds(TextOf(ChainsOf(4, 1000, 5), {"v"}), "An R-hat above 1.01 means");
  ExpectHolds(TextOf(ChainsOf(4, 7), {"v"}), "when fewer than 8 draws were kept per chain");
}

TEST(VerdictTest, NamesThatDoNotFitAreNotUsed) {
  const std::string text = TextOf(ChainsOf(4, 1000), {"XIntercept", "XAge"});
  ExpectHolds(text, "another number of rows");
  ExpectHolds(text, "(BetaYX[0])");
}

/// Chains of several coefficients: the columns of `parts` side by side.
std::vector<ChainDraws> Joined(const std::vector<std::vector<ChainDraws>>& parts) {
  std::vector<ChainDraws> result(parts.front().size());
  for (const std::vector<ChainDraws>& part : parts) {
    for (std::size_t c = 0; c < result.size(); ++c) {
      result[c].names.push_back("BetaYX[" + std::to_string(result[c].names.size()) + "]");
      result[c].columns.push_back(part[c].columns[0]);
    }
  }
  return result;
}

TEST(VerdictTest, TheLargestAndTheSmallestFigureAreNamed) {
  // Of the same draws, those that stand still every other time are worth half as much.
  std::vector<ChainDraws> slow = ChainsOf(4, 2000);
  for (ChainDraws& chain : slow) {
    for (std::size_t i = 1; i < chain.columns[0].size(); i += 2) {
      chain.columns[0][i] = chain.columns[0][i - 1];
    }
  }
  const std::string text =
      TextOf(Joined({ChainsOf(4, 2000), slow, ChainsOf(4, 2000)}), {"a", "b", "c"});
  ExpectHolds(text, "4 chains of 2000 draws, 3 coefficients. ");
  ExpectHolds(text, "The chains have converged. Largest R-hat: 1.00");
  ExpectHolds(text, " (b).\n");
}

TEST(VerdictTest, TheWorstComeFirstAndOnlyTwentyOfThem) {
  std::vector<std::vector<ChainDraws>> parts;
  std::vector<std::string> names;
  for (int i = 0; i < 23; ++i) {
    parts.push_back(ChainsOf(4, 100, 0.2 + 0.05 * i));  // of draws from 0 to 2.2
    names.push_back("v" + std::to_string(i));
  }
  const std::string text = TextOf(Joined(parts), names);
  ExpectHolds(text, "NOT converged: 23 of 23 coefficients do not pass.\n  v22: R-hat ");
  EXPECT_LT(text.find("  v4: "), text.find("  v3: ")) << text;
  ExpectHolds(text, "\n  and 3 more\n");
  EXPECT_EQ(text.find("  v2: "), std::string::npos) << text;
}

TEST(VerdictTest, OneCoefficientThatHasNotConvergedDecides) {
  std::vector<ChainDraws> still = ChainsOf(4, 100);
  for (ChainDraws& chain : still) {
    chain.columns[0].assign(chain.columns[0].size(), 0.5);
  }
  const std::string text = TextOf(Joined({ChainsOf(4, 100, 1), still, ChainsOf(4, 100, 2), still}),
                                  {"apart", "still", "further", "still too"});
  ExpectHolds(text,
              "The chains have NOT converged: 4 of 4 coefficients do not pass.\n"
              "  further: R-hat ");
  ExpectHolds(text,
              " in the tails\n"
              "  still: cannot be judged\n"
              "  still too: cannot be judged\n"
              "An R-hat above ");
}

TEST(VerdictTest, WhatCannotBeJudgedComesBeforeTooFewDraws) {
  std::vector<ChainDraws> still = ChainsOf(1, 300);
  for (ChainDraws& chain : still) {
    chain.columns[0].assign(chain.columns[0].size(), 0.5);
  }
  ExpectHolds(TextOf(Joined({ChainsOf(1, 300), still}), {"short", "still"}),
              "cannot be told: 2 of 2 coefficients do not pass.\n"
              "  still: cannot be judged\n"
              "  short: R-hat ");
}

TEST(VerdictTest, ChainsThatStandStillCannotBeJudged) {
  std::vector<ChainDraws> chains = ChainsOf(2, 100);
  for (std::size_t c = 0; c < chains.size(); ++c) {
    chains[c].columns[0].assign(100, static_cast<double>(c));
  }
  const std::string text = TextOf(chains, {"v"});
  ExpectHolds(text, "cannot be told: 1 of 1 coefficient do not pass.\n  v: cannot be judged\n");
}

TEST(VerdictTest, ChainsWithoutCoefficientsAreTold) {
  const std::string text = TextOf(std::vector<ChainDraws>(2), {});
  ExpectHolds(text, "2 chains of 0 draws, 0 coefficients. ");
  EXPECT_TRUE(text.ends_with("There is nothing to judge.\n")) << text;
}

TEST(ChainFileTest, IsReadAsItWasWritten) {
  const Testing::ScratchFolder folder;
  const std::optional<ChainDraws> draws =
      ReadChainFile(folder.Write("c.csv", "Step,BetaYX[0],BetaYX[1]\n5,-2.5,1e-05\n10,inf,nan\n"));
  ASSERT_TRUE(draws);
  EXPECT_EQ(draws->names, (std::vector<std::string>{"BetaYX[0]", "BetaYX[1]"}));
  ASSERT_EQ(draws->columns.size(), 2U);
  ASSERT_EQ(draws->columns[0].size(), 2U);
  EXPECT_EQ(draws->columns[0][0], -2.5);
  EXPECT_EQ(draws->columns[1][0], 1e-5);
  EXPECT_TRUE(ReadChainFile(folder.Write("header.csv", "Step,BetaYX[0]\n")));
}

TEST(ChainFileTest, DamageIsNoticed) {
  const Testing::ScratchFolder folder;
  for (const char* text :
       {"", "Step,a", "Name,a\n1,2\n", "Step,a\n1\n", "Step,a\n1,\n", "Step,a\n1,2,3\n",
        "Step,a\n1,x\n", "Step,a\n1,2x\n", "Step,a\n1,2\n3,"}) {
    EXPECT_FALSE(ReadChainFile(folder.Write("c.csv", text))) << text;
  }
  EXPECT_FALSE(ReadChainFile(folder.File("none.csv")));
}

TEST(ChainFileTest, ALongFileIsReadInBlocks) {
  const Testing::ScratchFolder folder;
  std::string text("Step,a\n");
  for (int i = 1; i <= 200'000; ++i) {
    text += std::to_string(i) + "," + std::to_string(i) + ".5\n";
  }
  const std::optional<ChainDraws> draws = ReadChainFile(folder.Write("c.csv", text));
  ASSERT_TRUE(draws);
  ASSERT_EQ(draws->columns[0].size(), 200'000U);
  for (std::size_t i = 0; i < 200'000; ++i) {
    ASSERT_EQ(draws->columns[0][i], static_cast<double>(i + 1) + 0.5);
  }
}

}  // namespace
}  // namespace Hovar
