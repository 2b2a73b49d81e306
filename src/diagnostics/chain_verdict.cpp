#include "diagnostics/chain_verdict.h"

#include <algorithm>
#include <cmath>

namespace Hovar {
namespace {

bool IsSameDraw(double one, double other) noexcept {
  return one == other || (std::isnan(one) && std::isnan(other));
}

/// True when the chains have the same draws, up to the end of the shorter one.
bool HoldSameDraws(const ChainDraws& one, const ChainDraws& other) {
  const auto common = static_cast<std::ptrdiff_t>(std::min(one.DrawCount(), other.DrawCount()));
  return common > 0 &&
         std::equal(one.columns.begin(), one.columns.end(), other.columns.begin(),
                    [common](const Draws& a, const Draws& b) {
                      return std::equal(a.begin(), a.begin() + common, b.begin(), IsSameDraw);
                    });
}

/// The chain that counts in place of this one: the longest of those with the same draws, often
/// itself.
std::size_t CountingChain(const std::vector<ChainDraws>& chains, std::size_t chain) {
  std::size_t longest = chain;
  for (std::size_t other = 0; other < chains.size(); ++other) {
    const std::size_t length = chains[other].DrawCount();
    const std::size_t known = chains[longest].DrawCount();
    if ((length > known || (length == known && other < longest)) &&
        HoldSameDraws(chains[chain], chains[other])) {
      longest = other;
    }
  }
  return longest;
}

Convergence JudgeColumn(const std::vector<ChainDraws>& chains, const ChainJudgement& judgement,
                        std::size_t column) {
  if (judgement.draws < kFewestDraws) {
    return {kNotAvailable, kNotAvailable, kNotAvailable};
  }
  Chains draws;
  for (const std::size_t chain : judgement.judged) {
    const Draws& all = chains[chain].columns[column];
    draws.emplace_back(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(judgement.draws));
  }
  return JudgeConvergence(draws);
}

}  // namespace

Verdict VerdictOf(const std::vector<Convergence>& coefficients, std::size_t chains,
                  Estimation estimation) {
  if (estimation == Estimation::kEstimatingEquations) {
    return Verdict::kNotFitForInference;
  }
  const auto any = [&coefficients](auto is) {
    return std::any_of(coefficients.begin(), coefficients.end(), is);
  };
  if (any([](const Convergence& c) { return c.rhat > kLargestRhat; })) {
    return Verdict::kNotConverged;
  }
  if (coefficients.empty() || any([](const Convergence& c) { return !c.IsKnown(); })) {
    return Verdict::kUndetermined;
  }
  if (any([](const Convergence& c) { return !c.IsGood(); })) {
    return Verdict::kTooFewDraws;
  }
  return chains > 1 ? Verdict::kConverged : Verdict::kNoSignAgainst;
}

ChainJudgement JudgeChains(const std::vector<ChainDraws>& chains, Estimation estimation) {
  ChainJudgement judgement;
  for (std::size_t chain = 0; chain < chains.size(); ++chain) {
    const std::size_t counting = CountingChain(chains, chain);
    if (counting == chain) {
      judgement.judged.push_back(chain);
    } else {
      judgement.repeated.emplace_back(counting, chain);
    }
  }
  const auto [shortest, longest] = std::minmax_element(
      judgement.judged.begin(), judgement.judged.end(), [&chains](std::size_t a, std::size_t b) {
        return chains[a].DrawCount() < chains[b].DrawCount();
      });
  judgement.draws = chains[*shortest].DrawCount();
  judgement.isCut = chains[*longest].DrawCount() != judgement.draws;
  for (std::size_t column = 0; column < chains.front().columns.size(); ++column) {
    judgement.coefficients.push_back(JudgeColumn(chains, judgement, column));
  }
  judgement.verdict = VerdictOf(judgement.coefficients, judgement.judged.size(), estimation);
  return judgement;
}

}  // namespace Hovar
