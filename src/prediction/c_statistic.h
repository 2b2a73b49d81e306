#pragma once

// The C-statistic, or concordance probability: over all pairs of a record with an event and one
// without, how often the prediction is larger for the one with the event, ties counting one half.
// It equals the area under the ROC curve.
//
// The value is the exact count of pairs, twice for a larger prediction and once for an equal one,
// over twice the number of pairs. Predictions are compared exactly; a NaN is neither larger than
// nor equal to anything. Instead of walking all pairs, both groups are sorted and merged.
//
// Source: J. A. Hanley, B. J. McNeil, Radiology 143 (1982), pages 29-36.

#include <cstdint>

#include "linalg/vector.h"

namespace Hovar {

/// The predictions of the records with and without an event in one array: the events' from the
/// front, the others' from the back.
class ConcordanceCounter {
 public:
  /// Room for `records` predictions. Errors: "Invalid argument"; "Out of memory".
  explicit ConcordanceCounter(std::int32_t records) : predictions_(records), scratch_(records) {}

  void Add(bool event, double prediction) noexcept {
    if (event) {
      predictions_[events_++] = prediction;
    } else {
      predictions_[predictions_.Size() - ++others_] = prediction;
    }
  }

  /// 2 for every pair with a larger prediction of the event, 1 for every tie. Reorders the array;
  /// the cost grows linearly with the records.
  std::int64_t Score() noexcept;

  /// Score over twice the number of pairs, or -1.0 when there are no pairs.
  double Statistic() noexcept;

 private:
  Vell::Vector predictions_;
  Vell::Vector scratch_;
  std::int32_t events_ = 0;
  std::int32_t others_ = 0;
};

/// The C-statistic of `predictions` for the records that `includes` accepts.
/// Errors: InvalidArgumentException "Index out of range" when there are fewer predictions than
///         records; "Out of memory".
template <typename Response, typename Includes>
double CStatistic(const Vell::Vector& predictions, std::int32_t records, Response response,
                  Includes includes);

/// Raises "Index out of range" when there are fewer predictions than records.
void RequirePredictions(const Vell::Vector& predictions, std::int32_t records);

template <typename Response, typename Includes>
double CStatistic(const Vell::Vector& predictions, std::int32_t records, Response response,
                  Includes includes) {
  RequirePredictions(predictions, records);
  ConcordanceCounter counter(records);
  for (std::int32_t i = 0; i < records; ++i) {
    if (includes(i)) {
      counter.Add(response(i), predictions[i]);
    }
  }
  return counter.Statistic();
}

}  // namespace Hovar
