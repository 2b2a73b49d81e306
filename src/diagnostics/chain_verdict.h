#pragma once

// The rules by which several chains of one Analysis are judged, without any text or file. The
// report page has the same rules in tools/report/src/analysis/diagnostics.ts; the tests of both
// read one table of cases, tests/reference/data/verdicts.csv. docs/chains.md describes the rules.

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "diagnostics/convergence.h"

namespace Hovar {

/// Fewer kept draws per chain are not judged: each half of a chain needs some autocorrelations.
inline constexpr std::size_t kFewestDraws = 8;

/// The draws of one chain: a column per coefficient, all of one length.
struct ChainDraws {
  std::vector<std::string> names;
  std::vector<Draws> columns;

  /// Draws of a column; 0 without columns.
  std::size_t DrawCount() const noexcept { return columns.empty() ? 0 : columns.front().size(); }
};

/// How the fits treat the records of one hospital.
enum class Estimation { kIndependent, kEstimatingEquations };

/// The first one that applies, in this order.
enum class Verdict {
  kNotFitForInference,  // estimating equations, whatever the figures are
  kNotConverged,        // the R-hat of a coefficient is above kLargestRhat
  kUndetermined,        // fewer than kFewestDraws draws, or a coefficient without figures, or none
  kTooFewDraws,         // an effective sample size is below kSmallestSampleSize
  kNoSignAgainst,       // all pass, but there is one chain only
  kConverged,           // all pass in several chains
};

/// What is said of the chains of one Analysis.
struct ChainJudgement {
  Verdict verdict = Verdict::kUndetermined;
  /// Indices of the chains that count, in their order.
  std::vector<std::size_t> judged;
  /// Chains that were left out: pairs of the judged chain whose draws are repeated and the chain
  /// that repeats them.
  std::vector<std::pair<std::size_t, std::size_t>> repeated;
  /// Draws of each chain that were judged: those of the shortest one.
  std::size_t draws = 0;
  /// True when a longer chain was cut.
  bool isCut = false;
  /// One per coefficient; NaN where the draws do not determine a measure.
  std::vector<Convergence> coefficients;
};

/// The verdict that the figures of `chains` chains, one per coefficient, give.
Verdict VerdictOf(const std::vector<Convergence>& coefficients, std::size_t chains,
                  Estimation estimation);

/// Judges at least one chain; all have the same number of columns. Of chains that hold the same
/// draws as far as the shorter one goes, only the longest counts (the first of several): the same
/// seed would seem to agree with itself and to count twice.
ChainJudgement JudgeChains(const std::vector<ChainDraws>& chains, Estimation estimation);

}  // namespace Hovar
