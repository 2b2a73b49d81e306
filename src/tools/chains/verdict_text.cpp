#include "tools/chains/verdict_text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>

#include "foundation/io/number_text.h"
#include "tools/plan/estimating_equations.h"
#include "tools/support/sentence_parts.h"

namespace Hovar {
namespace {

/// A coefficient and its figures.
struct NamedFigures {
  std::string name;
  Convergence convergence;

  bool IsKnown() const { return convergence.IsKnown(); }
  bool IsMixing() const { return !(convergence.rhat > kLargestRhat); }
  double SampleSize() const {
    return std::min(convergence.bulkSampleSize, convergence.tailSampleSize);
  }
};

/// A finite number with so many digits after the point, at most 6.
std::string Fixed(double value, std::size_t digits) {
  const double scale = std::pow(10.0, static_cast<double>(digits));
  const std::string text(Vell::IO::NumberText::OfFixed(std::round(value * scale) / scale).View());
  return text.substr(0, text.find('.') + (digits > 0 ? 1 + digits : 0));
}

std::string LargestRhatText() { return Fixed(kLargestRhat, 2); }

std::string ChainName(std::size_t index) { return "chain-" + std::to_string(index + 1); }

std::vector<NamedFigures> Named(const std::vector<Convergence>& coefficients,
                                const std::vector<std::string>& names) {
  std::vector<NamedFigures> figures;
  for (std::size_t column = 0; column < names.size(); ++column) {
    figures.push_back({names[column], coefficients[column]});
  }
  return figures;
}

std::string RowOf(const NamedFigures& coefficient) {
  if (!coefficient.IsKnown()) {
    return "  " + coefficient.name + ": cannot be judged\n";
  }
  return "  " + coefficient.name + ": R-hat " + Fixed(coefficient.convergence.rhat, 3) +
         ", effective sample size " + Fixed(coefficient.convergence.bulkSampleSize, 0) +
         " in the bulk, " + Fixed(coefficient.convergence.tailSampleSize, 0) + " in the tails\n";
}

/// The rows of those that miss a threshold, the worst first: those above the largest R-hat, those
/// that cannot be judged, and the others.
std::string RowsOf(std::vector<NamedFigures> missed) {
  constexpr std::size_t kMostRows = 20;
  const auto kind = [](const NamedFigures& a) { return !a.IsMixing() ? 0 : a.IsKnown() ? 2 : 1; };
  std::stable_sort(missed.begin(), missed.end(), [kind](const auto& a, const auto& b) {
    return kind(a) != kind(b) ? kind(a) < kind(b)
                              : kind(a) != 1 && a.convergence.rhat > b.convergence.rhat;
  });
  std::string text;
  for (std::size_t i = 0; i < std::min(missed.size(), kMostRows); ++i) {
    text += RowOf(missed[i]);
  }
  if (missed.size() > kMostRows) {
    text += "  and " + std::to_string(missed.size() - kMostRows) + " more\n";
  }
  return text;
}

/// "Largest R-hat: 1.002 (XAge); smallest effective sample size: 812 (XAge)." of known figures.
std::string WorstText(const std::vector<NamedFigures>& figures) {
  const auto largest = std::max_element(
      figures.begin(), figures.end(),
      [](const auto& a, const auto& b) { return a.convergence.rhat < b.convergence.rhat; });
  const auto smallest = std::min_element(
      figures.begin(), figures.end(),
      [](const auto& a, const auto& b) { return a.SampleSize() < b.SampleSize(); });
  return "Largest R-hat: " + Fixed(largest->convergence.rhat, 3) + " (" + largest->name +
         "); smallest effective sample size: " + Fixed(smallest->SampleSize(), 0) + " (" +
         smallest->name + ").\n";
}

/// How many times the draws are needed for the effective ones.
std::string MoreSteps(const std::vector<NamedFigures>& missed) {
  double smallest = kSmallestSampleSize;
  for (const NamedFigures& coefficient : missed) {
    smallest = std::min(smallest, coefficient.SampleSize());
  }
  return "Raise Steps to about " +
         Fixed(std::ceil(kSmallestSampleSize / std::max(smallest, 1.0)), 0) +
         " times as many and run again.\n";
}

std::string ThresholdsText() {
  return "A coefficient passes with R-hat at most " + LargestRhatText() +
         " and effective\nsample sizes in bulk and tails of at least " +
         Fixed(kSmallestSampleSize, 0) + " (Vehtari et al., Bayesian Analysis 16, 2021).\n";
}

std::string NotFitText() {
  return "The draws are not fit for inference, whatever the figures below are: with generalized\n"
         "estimating equations they have the inverse of the covariance that they should have.\n"
         "Neither is what is made from them: " +
         WhatIsUnfit({}) + ".\n" + std::string(kEquationsRemedy) + '\n';
}

/// A run with estimating equations and Steps 0, as it should be.
std::string NoDrawsText(std::size_t chains) {
  return "No draws were kept, so there is nothing to judge in " + Counted(chains, "chain") + ".\n";
}

/// Which chains are not judged, or not to their end.
std::string RemarksText(const ChainJudgement& judgement) {
  std::string text;
  for (const auto& [first, later] : judgement.repeated) {
    text +=
        "Not judged: " + ChainName(later) + " holds the same draws as " + ChainName(first) + ".\n";
  }
  if (judgement.isCut) {
    text += "The chains differ in length; of each the first " + Counted(judgement.draws, "draw") +
            (judgement.draws == 1 ? " is" : " are") + " judged.\n";
  }
  return text;
}

std::string VerdictSentences(const ChainJudgement& judgement,
                             const std::vector<NamedFigures>& figures) {
  std::vector<NamedFigures> missed;
  std::copy_if(figures.begin(), figures.end(), std::back_inserter(missed),
               [](const NamedFigures& a) { return !a.convergence.IsGood(); });
  const std::string share =
      std::to_string(missed.size()) + " of " + Counted(figures.size(), "coefficient");
  const bool isOne = judgement.judged.size() == 1;
  switch (judgement.verdict) {
    case Verdict::kNotFitForInference:  // the head says so
      return std::all_of(figures.begin(), figures.end(), [](const auto& a) { return a.IsKnown(); })
                 ? WorstText(figures)
                 : "";
    case Verdict::kNotConverged:
      return "The chains have NOT converged: " + share + " do not pass.\n" + RowsOf(missed) +
             "An R-hat above " + LargestRhatText() +
             " means that the chains, or the halves of a chain, do not draw from the\n"
             "same distribution yet. Raise Burnin and Steps, to twice as many at least, and run "
             "again.\n";
    case Verdict::kUndetermined:
      return "Whether the chains have converged cannot be told: " + share + " do not pass.\n" +
             RowsOf(missed) + "A coefficient cannot be judged when fewer than " +
             Counted(kFewestDraws, "draw") +
             " were kept per chain, or when its\n"
             "draws are all the same or not finite. Look at Steps, Thinning and the chain files.\n";
    case Verdict::kTooFewDraws:
      return (isOne ? "There is no sign against convergence, but " : "The chains agree, but ") +
             share + " have too few effective draws.\n" + RowsOf(missed) + MoreSteps(missed);
    case Verdict::kNoSignAgainst:
      return "There is no sign against convergence in this one chain. " + WorstText(figures);
    case Verdict::kConverged:
      return "The chains have converged. " + WorstText(figures);
  }
  return "";
}

}  // namespace

std::string VerdictText(const std::vector<ChainDraws>& chains,
                        const std::vector<std::string>& names, Estimation estimation) {
  const std::vector<std::string>& columns = chains.front().names;
  const bool isJoined = names.size() == columns.size();
  const ChainJudgement judgement = JudgeChains(chains, estimation);
  const bool isFit = judgement.verdict != Verdict::kNotFitForInference;
  if (!isFit && judgement.draws == 0) {
    return NoDrawsText(chains.size());
  }
  std::string text = isFit ? "" : NotFitText();
  text += Counted(judgement.judged.size(), "chain") + " of " + Counted(judgement.draws, "draw") +
          ", " + Counted(columns.size(), "coefficient") + '.' +
          (isFit ? ' ' + ThresholdsText() : "\n");
  text += RemarksText(judgement);
  if (!isJoined) {
    text +=
        "The coefficient file has another number of rows, so the columns' own names stand here.\n";
  }
  if (columns.empty()) {
    return text + "There is nothing to judge.\n";
  }
  text += VerdictSentences(judgement, Named(judgement.coefficients, isJoined ? names : columns));
  if (isFit && judgement.judged.size() == 1) {
    text += "One chain can only be compared with itself; run at least four to trust this.\n";
  }
  return text;
}

}  // namespace Hovar
