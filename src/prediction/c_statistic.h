#pragma once

// The C-statistic, or concordance probability: over all pairs of a record with an event and one
// without, how often the prediction is larger for the one with the event, ties counting one half.
// It equals the area under the ROC curve.
//
// The value is the exact count of pairs, twice for a larger prediction and once for an equal one,
// over twice the number of pairs. Instead of walking all pairs, the records are walked once in the
// order of their predictions. No standard error is computed.
//
// Source: J. A. Hanley, B. J. McNeil, Radiology 143 (1982), pages 29-36.

#include <cstdint>

#include "linalg/vector.h"
#include "prediction/prediction_ranking.h"

namespace Hovar {

/// The C-statistic of `predictions` for the records that `includes` accepts, -1.0 when they make no
/// pair. `response` and `includes` take the number of a record, 0 to below `records`, and give a
/// bool. For several of the same predictions, rank them once.
/// Errors: InvalidArgumentException "Index out of range" when there are fewer predictions than
///         records; "Out of memory".
template <typename Response, typename Includes>
double CStatistic(const Vell::Vector& predictions, std::int32_t records, Response response,
                  Includes includes) {
  return PredictionRanking(predictions, records).Count(response, includes).Statistic();
}

}  // namespace Hovar
