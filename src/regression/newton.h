#pragma once

// Newton's method for a logistic log-likelihood with a Gaussian prior on every coefficient.
//
// The model: record i has a response y_i that is 1 with probability mu_i = 1 / (1 + exp(-eta_i)),
// eta_i the sum of the coefficients beta_j of the columns j that are set in the record. The prior
// of each beta_j, the intercept's included, is normal with mean 0 and precision lambda. With the
// score g and the information H of the likelihood, one pass solves
//
//     (H + lambda I) delta = g - lambda beta,     beta := beta + delta.
//
// What a pass sums up is defined by a score type: IndependentScore for independent records,
// ExchangeableScore for records that are correlated within hospitals.
//
// Source: P. McCullagh, J. A. Nelder, Generalized Linear Models, 2nd ed. (1989), section 4.4; the
// prior adds a ridge as in S. le Cessie, J. C. van Houwelingen, Applied Statistics 41 (1992),
// pages 191-201.

#include <algorithm>
#include <cstdint>
#include <span>

#include "linalg/cholesky.h"
#include "linalg/matrix.h"
#include "linalg/symmetric_matrix.h"
#include "linalg/vector.h"
#include "regression/design_sums.h"
#include "regression/fit_rows.h"
#include "regression/fit_settings.h"

namespace Hovar {

/// The state of a fit, and what the covariances need after it. Factor, correlation and hospital
/// scores are those of the last assembled pass, so they are one step behind the coefficients when
/// the iteration limit ended the fit.
struct FitState {
  explicit FitState(const FitSettings& fitSettings) : settings(fitSettings) {}

  FitSettings settings;
  double lastStep = 0;  // largest |delta_j| of the last solved pass
  std::int32_t iterationCount = 0;
  Vell::SymmetricMatrix factor;  // Cholesky factor of H + lambda I
  double alpha = 0;              // estimated working correlation; 0 for independent records
  Vell::Matrix hospitalScores;   // U, hospitals x columns, for correlated records only
};

/// What a pass sums up: the information H and the score g.
struct NormalEquations {
  explicit NormalEquations(std::int32_t columns)
      : crossproducts(columns), information(columns), score(columns) {}

  TriangleSums crossproducts;         // of the weights, while the pass goes on
  Vell::SymmetricMatrix information;  // at its end
  Vell::Vector score;
};

/// What a pass evaluates for one block of records at once; entry i belongs to the block's record i.
struct RecordBlock {
  using Values = BlockValues;

  std::int32_t index = 0;  // of the block
  std::int32_t count = 0;
  bool isAtZero = false;     // every coefficient is 0, so every weight 1/4
  Values linearPredictor{};  // eta
  Values response{};         // y, 0.0 or 1.0
  Values weight{};           // w = mu (1 - mu)
  Values residual{};         // y - mu
};

/// Sets a block to the responses and linear predictors of the rows' block `index`; `beta` has one
/// entry per column.
void BeginBlock(RecordBlock& block, const FitRows& rows, std::int32_t index,
                const Vell::Vector& beta) noexcept;

/// Adds the block's weights to the crossproducts and its residuals to `columnSums`, if there are
/// any.
void AddInformation(TriangleSums& crossproducts, std::span<double> columnSums,
                    const RecordBlock& block, const FitRows& rows) noexcept;

/// Adds the prior to the equations, factors, solves and tests them. Returns false when the fit has
/// converged, or has only NaNs left to step by; otherwise adds the step to `beta` and counts it.
/// Errors: "Non positive matrix in Cholesky decomposition"; "Out of memory".
bool StepNewton(FitState& state, Vell::Vector& beta, NormalEquations& equations);

/// Sums the blocks of a pass at `beta`: addBlock(), with the block begun, adds its records to the
/// crossproducts, which become the information, and may add them to the score.
template <typename AddBlock>
void SumBlocks(NormalEquations& equations, RecordBlock& block, const FitRows& rows,
               const Vell::Vector& beta, AddBlock addBlock) {
  equations.crossproducts.SetToZero();
  std::fill(equations.score.begin(), equations.score.end(), 0.0);
  for (std::int32_t i = 0; i < rows.BlockCount(); ++i) {
    BeginBlock(block, rows, i, beta);
    addBlock();
  }
  equations.crossproducts.CopyTo(equations.information);
}

/// Runs Newton's method from `beta`, one entry per column of the rows, and returns the final
/// coefficients. `score` belongs to the same rows; its SumPass(equations, block, beta) fills the
/// information and the score at `beta`, with the block as its work space. The state must be fresh;
/// at least one pass is made, and at most max(1, maxIterations).
/// Errors: those of StepNewton and of SumPass.
template <typename Score>
Vell::Vector FitNewton(FitState& state, Vell::Vector beta, Score& score) {
  RecordBlock block;
  NormalEquations equations(beta.Size());
  do {
    score.SumPass(equations, block, beta);
    if (!StepNewton(state, beta, equations)) {
      break;
    }
  } while (state.iterationCount < state.settings.parameters.maxIterations);
  return beta;
}

}  // namespace Hovar
