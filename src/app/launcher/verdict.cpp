#include "app/launcher/verdict.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>

#include "app/launcher/convergence.h"
#include "foundation/io/number_text.h"

namespace Hovar {
namespace {

struct Judgement {
  std::string name;
  Convergence convergence;

  bool IsKnown() const {
    return !std::isnan(convergence.rhat) && !std::isnan(convergence.bulkSampleSize) &&
           !std::isnan(convergence.tailSampleSize);
  }
  double SampleSize() const {
    return std::min(convergence.bulkSampleSize, convergence.tailSampleSize);
  }
};

/// A finite number with so many digits behind the point, at most 6.
std::string Fixed(double value, std::size_t digits) {
  const double scale = std::pow(10.0, static_cast<double>(digits));
  const std::string text(Vell::IO::NumberText::OfFixed(std::round(value * scale) / scale).View());
  return text.substr(0, text.find('.') + (digits > 0 ? 1 + digits : 0));
}

std::string Count(std::size_t count, std::string_view what) {
  return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

std::vector<Judgement> JudgeAll(const std::vector<ChainDraws>& chains,
                                const std::vector<std::string>& names) {
  std::vector<Judgement> judgements;
  for (std::size_t column = 0; column < names.size(); ++column) {
    std::vector<std::vector<double>> draws(chains.size());
    std::transform(chains.begin(), chains.end(), draws.begin(),
                   [column](const ChainDraws& chain) { return chain.columns[column]; });
    judgements.push_back({names[column], JudgeConvergence(draws)});
  }
  return judgements;
}

std::string RowOf(const Judgement& judgement) {
  if (!judgement.IsKnown()) {
    return "  " + judgement.name + ": cannot be judged\n";
  }
  return "  " + judgement.name + ": R-hat " + Fixed(judgement.convergence.rhat, 3) +
         ", effective sample size " + Fixed(judgement.convergence.bulkSampleSize, 0) +
         " in the bulk, " + Fixed(judgement.convergence.tailSampleSize, 0) + " in the tails\n";
}

/// The rows of those that miss a threshold, the worst first.
std::string RowsOf(std::vector<Judgement> missed) {
  constexpr std::size_t kMostRows = 20;
  std::stable_sort(missed.begin(), missed.end(), [](const Judgement& a, const Judgement& b) {
    if (a.IsKnown() != b.IsKnown()) {
      return b.IsKnown();
    }
    return a.IsKnown() && a.convergence.rhat > b.convergence.rhat;
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

std::string MissText(const std::vector<Judgement>& missed, std::size_t coefficients) {
  bool hasUnknown = false;
  bool disagrees = false;
  double smallest = kSmallestSampleSize;
  for (const Judgement& judgement : missed) {
    hasUnknown = hasUnknown || !judgement.IsKnown();
    disagrees = disagrees || judgement.convergence.rhat > kLargestRhat;
    smallest = judgement.IsKnown() ? std::min(smallest, judgement.SampleSize()) : smallest;
  }
  const std::string share =
      std::to_string(missed.size()) + " of " + Count(coefficients, "coefficient");
  if (hasUnknown) {
    return "Whether the chains have converged cannot be told: " + share + " do not pass.\n" +
           RowsOf(missed) +
           "A coefficient cannot be judged when fewer than 6 draws were kept per chain, or when "
           "its\n"
           "draws are all the same or not finite. Look at Steps, Thinning and the chain files.\n";
  }
  if (disagrees) {
    return "The chains have NOT converged: " + share + " do not pass.\n" + RowsOf(missed) +
           "An R-hat above 1.01 means that the chains, or the halves of a chain, do not draw from "
           "the\n"
           "same distribution yet. Raise Burnin and Steps, to twice as many at least, and run "
           "again.\n";
  }
  const double factor = std::ceil(kSmallestSampleSize / std::max(smallest, 1.0));
  return "The chains agree, but " + share + " have too few effective draws.\n" + RowsOf(missed) +
         "Raise Steps to about " + Fixed(factor, 0) + " times as many and run again.\n";
}

std::string HeadOf(const std::vector<ChainDraws>& chains, std::size_t coefficients) {
  const std::size_t draws = chains.front().columns.empty() ? 0 : chains.front().columns[0].size();
  return Count(chains.size(), "chain") + " of " + Count(draws, "draw") + ", " +
         Count(coefficients, "coefficient") +
         ". A coefficient passes with R-hat at most 1.01 and effective\n"
         "sample sizes in bulk and tails of at least 400 (Vehtari et al., Bayesian Analysis 16, "
         "2021).\n";
}

std::string PassText(const std::vector<Judgement>& judgements) {
  const auto largest = std::max_element(judgements.begin(), judgements.end(),
                                        [](const Judgement& a, const Judgement& b) {
                                          return a.convergence.rhat < b.convergence.rhat;
                                        });
  const auto smallest = std::min_element(
      judgements.begin(), judgements.end(),
      [](const Judgement& a, const Judgement& b) { return a.SampleSize() < b.SampleSize(); });
  return "The chains have converged. Largest R-hat: " + Fixed(largest->convergence.rhat, 3) + " (" +
         largest->name + "); smallest effective sample size: " + Fixed(smallest->SampleSize(), 0) +
         " (" + smallest->name + ").\n";
}

}  // namespace

std::string VerdictText(const std::vector<ChainDraws>& chains,
                        const std::vector<std::string>& names) {
  const std::vector<std::string>& columns = chains.front().names;
  const bool isJoined = names.size() == columns.size();
  std::string text = HeadOf(chains, columns.size());
  if (!isJoined) {
    text +=
        "The coefficient file has another number of rows, so the columns' own names stand here.\n";
  }
  const std::vector<Judgement> judgements = JudgeAll(chains, isJoined ? names : columns);
  if (judgements.empty()) {
    return text + "There is nothing to judge.\n";
  }
  std::vector<Judgement> missed;
  std::copy_if(judgements.begin(), judgements.end(), std::back_inserter(missed),
               [](const Judgement& judgement) { return !judgement.convergence.IsGood(); });
  if (missed.empty()) {
    text += PassText(judgements);
  } else {
    text += MissText(missed, judgements.size());
  }
  if (chains.size() == 1) {
    text += "One chain can only be compared with itself; run at least four to trust this.\n";
  }
  return text;
}

}  // namespace Hovar
