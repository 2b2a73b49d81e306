#pragma once

// The order of records by their predictions, on which C-statistics are counted (c_statistic.h).

#include <cstdint>

#include "foundation/growable_array.h"
#include "linalg/vector.h"

namespace Hovar {

/// How far predictions and an outcome go together, as exact counts.
struct Concordance {
  /// 2 for every pair of a record with an event and one without in which the prediction is larger
  /// for the one with the event, 1 for every pair of equal predictions.
  std::int64_t score = 0;
  /// Records with an event, and without.
  std::int64_t events = 0;
  std::int64_t others = 0;

  /// Score over twice the number of pairs, or -1.0 when there are no pairs.
  double Statistic() const noexcept;
};

/// Records in the order of their predictions, which is found once: every concordance of the same
/// predictions, with whatever outcome and for whatever records, is then a walk along it.
///
/// Predictions are compared exactly; zeros of both signs are equal, and a NaN is neither larger
/// than nor equal to anything.
class PredictionRanking {
 public:
  /// Ranks the first `records` predictions, of which nothing is kept but their order. The cost
  /// grows linearly with the records while they are spread over their range, and at worst as that
  /// of sorting.
  /// Errors: InvalidArgumentException "Index out of range" when there are fewer predictions than
  ///         records, "Invalid argument" for a negative number; "Out of memory".
  PredictionRanking(const Vell::Vector& predictions, std::int32_t records);

  /// Counts over the records that `includes` accepts; `response` says which have an event. Both
  /// take the number of a ranked record (from 0) and give a bool. Each record is asked for once,
  /// and its response only if it is included. With fewer than 2^31 records the counts do not
  /// overflow.
  template <typename Response, typename Includes>
  Concordance Count(Response response, Includes includes) const;

 private:
  /// A record's number; the highest bit is set where its prediction equals the one before.
  using Entry = std::uint32_t;
  static constexpr Entry kTie = Entry{1} << 31;

  Vell::GrowableArray<Entry> order_;  // ascending, then the records whose prediction is a NaN
  std::int32_t numbers_ = 0;          // entries that are not NaNs
};

template <typename Response, typename Includes>
Concordance PredictionRanking::Count(Response response, Includes includes) const {
  Concordance count;
  std::int64_t eventsBelow = 0;  // with a smaller prediction than that of the current records
  std::int64_t othersBelow = 0;
  // The events of a group of equal predictions beat all others below, and tie with the group's.
  const auto endGroup = [&] {
    count.score += (count.events - eventsBelow) * (othersBelow + count.others);
    eventsBelow = count.events;
    othersBelow = count.others;
  };
  const auto take = [&](std::int32_t record) {
    if (includes(record)) {
      const bool isEvent = response(record);
      count.events += isEvent ? 1 : 0;
      count.others += isEvent ? 0 : 1;
    }
  };
  for (std::int32_t i = 0; i < numbers_; ++i) {
    if ((order_[i] & kTie) == 0) {
      endGroup();
    }
    take(static_cast<std::int32_t>(order_[i] & ~kTie));
  }
  endGroup();
  for (std::int32_t i = numbers_; i < order_.Size(); ++i) {
    take(static_cast<std::int32_t>(order_[i]));
  }
  return count;
}

}  // namespace Hovar
