#pragma once

// The imputation of missing values, shared by Analysis, Prediction and Validation.
//
// Per record, x is the row of X, y the outcome, p whether the condition was present on admission; p
// implies y. With the coefficients a of [P|X] and b of [Y|X,P=0],
//
//     P(p = 1 | x) = logistic(x a),   P(y = 1 | x, p = 0) = logistic(x b),   P(y = 1 | p = 1) = 1,
//
// and each X_j has the prior probability q_j given its companion Z_j from the [X|Z] table. A sweep
// draws every missing cell once from its distribution given all others (Gibbs sampling), in this
// order within a record: the missing X_j ascending, then p. A missing p is known to be 0 where y is
// 0. The draw of one cell uses one random word u: the cell becomes 1 when its probability is > u.
//
// Column 0 has no prior and is never drawn. It is the intercept, which is never missing, unless a
// coefficient file lacks the intercept's row: then a variable takes the place, and its missing
// cells keep the value 0.
//
// Source: S. Geman, D. Geman, IEEE Transactions on Pattern Analysis and Machine Intelligence 6
// (1984), pages 721-741.

#include <cstdint>
#include <span>

#include "data/data_set.h"
#include "linalg/vector.h"

namespace Hovar {

/// What a sweep draws with, which must outlive it. The vectors have one entry per X column,
/// log-odds; the prior table is that of PriorTable.
struct ImputationModel {
  const Vell::Vector& yGivenXWithoutP;
  const Vell::Vector& pGivenX;
  const Vell::Vector& priorTable;
};

/// Brings the data set to the state before the first sweep: every missing X and P cell has the
/// value 0. (The missing marks stay for ever; sweeps change values only.)
void PrepareImputation(DataSet& dataSet);

/// Draws every missing cell of columns 1 and up and of P anew, record by record. It uses one random
/// word for each missing X cell that its prior does not decide and one for each missing P with y =
/// 1.
/// Cost: one pass over the rows of incomplete records, and for a missing cell the same whatever the
/// number of variables, but for the few draws that the likelihoods must decide. A prior of exactly
/// 0 or 1 decides without a draw. No record has P = 1 and Y = 0, as every reader makes sure; one
/// would end the process.
/// Errors: "Out of memory".
void RunImputationSweep(DataSet& dataSet, const ImputationModel& model);

/// 1 / (e^-t + 1), the probability that belongs to t log-odds: 0 and 1 at the infinities, a NaN for
/// a NaN.
double Logistic(double t) noexcept;

/// The sum of the coefficients of the set columns, in ascending order: the log-odds of a record.
/// Every column has a coefficient.
double LinearPredictor(const Vell::Vector& coefficients,
                       std::span<const std::int32_t> setColumns) noexcept;

}  // namespace Hovar
