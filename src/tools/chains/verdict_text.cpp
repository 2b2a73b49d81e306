#include "tools/chains/verdict_text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>

#include "foundation/io/number_text.h"
#include "tools/chains/messages.h"
#include "tools/plan/estimating_equations.h"
#include "tools/plan/messages.h"
#include "tools/support/message.h"
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

/// A line of the verdict.
template <typename... Parts>
std::string Line(const Messages::PatternWithParts<sizeof...(Parts)>& line, const Parts&... parts) {
  return Filled(line, parts...) + '\n';
}

/// A line of the list of coefficients.
template <typename... Parts>
std::string Row(const Messages::PatternWithParts<sizeof...(Parts)>& line, const Parts&... parts) {
  return "  " + Line(line, parts...);
}

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
    return Row(kVerdictLines.coefficientUnknown, coefficient.name);
  }
  return Row(kVerdictLines.coefficient, coefficient.name, Fixed(coefficient.convergence.rhat, 3),
             Fixed(coefficient.convergence.bulkSampleSize, 0),
             Fixed(coefficient.convergence.tailSampleSize, 0));
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
    text += Row(kVerdictLines.moreCoefficients, missed.size() - kMostRows);
  }
  return text;
}

/// A line with the largest R-hat and the smallest effective sample size of known figures.
std::string WorstLine(const Messages::PatternWithParts<4>& line,
                      const std::vector<NamedFigures>& figures) {
  const auto largest = std::max_element(
      figures.begin(), figures.end(),
      [](const auto& a, const auto& b) { return a.convergence.rhat < b.convergence.rhat; });
  const auto smallest = std::min_element(
      figures.begin(), figures.end(),
      [](const auto& a, const auto& b) { return a.SampleSize() < b.SampleSize(); });
  return Line(line, Fixed(largest->convergence.rhat, 3), largest->name,
              Fixed(smallest->SampleSize(), 0), smallest->name);
}

/// How many times the draws are needed for the effective ones.
std::string MoreSteps(const std::vector<NamedFigures>& missed) {
  double smallest = kSmallestSampleSize;
  for (const NamedFigures& coefficient : missed) {
    smallest = std::min(smallest, coefficient.SampleSize());
  }
  return Line(kVerdictLines.moreSteps,
              Fixed(std::ceil(kSmallestSampleSize / std::max(smallest, 1.0)), 0));
}

std::string NotFitText() {
  return Line(kVerdictLines.notFitFirst) + Line(kVerdictLines.notFitSecond) +
         Line(kVerdictLines.notFitColumns, WhatIsUnfit({})) + Line(kEquations.remedy);
}

/// What was judged and, unless the draws are not fit anyway, by which thresholds.
std::string HeadText(const ChainJudgement& judgement, std::size_t columns, bool isFit) {
  const std::string chains = Counted(judgement.judged.size(), "chain");
  const std::string draws = Counted(judgement.draws, "draw");
  const std::string coefficients = Counted(columns, "coefficient");
  return isFit ? Line(kVerdictLines.countsAndThresholds, chains, draws, coefficients,
                      LargestRhatText()) +
                     Line(kVerdictLines.thresholds, Fixed(kSmallestSampleSize, 0))
               : Line(kVerdictLines.counts, chains, draws, coefficients);
}

/// A run with estimating equations and Steps 0, as it should be.
std::string NoDrawsText(std::size_t chains) {
  return Line(kVerdictLines.noDraws, Counted(chains, "chain"));
}

/// Which chains are not judged, or not to their end.
std::string RemarksText(const ChainJudgement& judgement) {
  std::string text;
  for (const auto& [first, later] : judgement.repeated) {
    text += Line(kVerdictLines.repeated, ChainName(later), ChainName(first));
  }
  if (judgement.isCut) {
    const std::string draws = Counted(judgement.draws, "draw");
    text += judgement.draws == 1 ? Line(kVerdictLines.cutDraw, draws)
                                 : Line(kVerdictLines.cutDraws, draws);
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
                 ? WorstLine(kVerdictLines.figures, figures)
                 : "";
    case Verdict::kNotConverged:
      return Line(kVerdictLines.notConverged, share) + RowsOf(missed) +
             Line(kVerdictLines.aboveFirst, LargestRhatText()) + Line(kVerdictLines.aboveSecond);
    case Verdict::kUndetermined:
      return Line(kVerdictLines.cannotBeTold, share) + RowsOf(missed) +
             Line(kVerdictLines.unknownFirst, Counted(kFewestDraws, "draw")) +
             Line(kVerdictLines.unknownSecond);
    case Verdict::kTooFewDraws:
      return (isOne ? Line(kVerdictLines.noSign, share) : Line(kVerdictLines.chainsAgree, share)) +
             RowsOf(missed) + MoreSteps(missed);
    case Verdict::kNoSignAgainst:
      return WorstLine(kVerdictLines.noSignInOne, figures);
    case Verdict::kConverged:
      return WorstLine(kVerdictLines.converged, figures);
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
  text += HeadText(judgement, columns.size(), isFit);
  text += RemarksText(judgement);
  if (!isJoined) {
    text += Line(kVerdictLines.ownNames);
  }
  if (columns.empty()) {
    return text + Line(kVerdictLines.nothingToJudge);
  }
  text += VerdictSentences(judgement, Named(judgement.coefficients, isJoined ? names : columns));
  if (isFit && judgement.judged.size() == 1) {
    text += Line(kVerdictLines.oneChain);
  }
  return text;
}

}  // namespace Hovar
