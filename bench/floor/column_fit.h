#pragma once

// A penalised logistic fit with as little work a pass as we know how, for designs of at most 64
// columns, each record one machine word.
//
// The records are arranged once; see arranged_design.h. A pass then takes, per block,
//
//   1. e^-eta of a record as the product of sixteen table entries, one for each four bits of its
//      word, entry b of a table being e^-(the sum of beta over the set bits of b). A table fits
//      into two vector registers, so that eight records look theirs up at once;
//   2. weights and residuals, a loop without branches that the compiler turns into vector code;
//   3. for each column j the sums of w over the records of its list for all k <= j at once: eight
//      sums to a vector register, and the record's word as the mask of the additions.
//
// The first pass takes its information and score from the counts of the arrangement.
//
// With generalized estimating equations the tables hold s = e^(-eta/2), from which one division
// gives mu, sqrt(w) and the Pearson residual; A_h and B_h are summed over a hospital's records in
// sixteen registers with the same masks.

#include <array>

#include "arranged_design.h"

namespace Hovar::Floor {

using Coefficients = std::array<double, kMaxColumns>;

struct Fit {
  Coefficients beta{};
  Coefficients standardError{};
  Coefficients empiricalStandardError{};
  double alpha = 0;
  int passes = 0;
};

/// Newton's method from zero coefficients: `passes` passes, of which the last one's step is not
/// applied, or with 0 passes until no step exceeds 1e-8 of the largest coefficient. Both
/// covariances with generalized estimating equations, the model's alone without.
Fit FitDesign(const Design& design, double lambda, bool useGee, int passes);

}  // namespace Hovar::Floor
