#include "prediction/prediction_ranking.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>

#include "foundation/exceptions/exceptions.h"
#include "messages/error_texts.h"

// The range of the predictions is divided into steps of equal width, about four records to each.
// One pass brings every record to its step, a NaN to one of its own after the others, and what
// fell into one step is sorted by comparisons.
// A radix sort of the bits took more than twice the time for a million predictions that all differ.

namespace Hovar {
namespace {

struct RankedPrediction {
  double prediction;
  std::uint32_t record;
};

/// Maps predictions to steps, 0 to below Count(), so that a larger one never has a lower step, and
/// a NaN to Count(). A range that is a single number, infinite or too wide has one step in use.
class Steps {
 public:
  explicit Steps(std::span<const double> predictions)
      : count_(static_cast<std::int32_t>(predictions.size() / kRecordsPerStep) + 1) {
    double highest = -HUGE_VAL;
    for (const double prediction : predictions) {  // no comparison with a NaN is true
      lowest_ = prediction < lowest_ ? prediction : lowest_;
      highest = prediction > highest ? prediction : highest;
    }
    const double stepsPerUnit = count_ / (highest - lowest_);
    stepsPerUnit_ = std::isfinite(stepsPerUnit) ? stepsPerUnit : 0;
  }

  std::int32_t Count() const noexcept { return count_; }

  std::int32_t Of(double prediction) const noexcept {
    if (std::isnan(prediction)) {
      return count_;
    }
    const double step = stepsPerUnit_ > 0 ? (prediction - lowest_) * stepsPerUnit_ : 0;
    return std::min(static_cast<std::int32_t>(step), count_ - 1);
  }

 private:
  static constexpr std::size_t kRecordsPerStep = 4;

  std::int32_t count_;
  double lowest_ = HUGE_VAL;
  double stepsPerUnit_ = 0;
};

}  // namespace

double Concordance::Statistic() const noexcept {
  const double weightedPairs = static_cast<double>(others) * static_cast<double>(events) * 2.0;
  return weightedPairs > 0 ? static_cast<double>(score) / weightedPairs : -1.0;
}

PredictionRanking::PredictionRanking(const Vell::Vector& predictions, std::int32_t records)
    : order_(records) {
  if (predictions.Size() < records) {
    throw Vell::Exceptions::InvalidArgumentException(Messages::kErrors.indexOutOfRange);
  }
  const std::span all = predictions.Span().first(static_cast<std::size_t>(records));
  const Steps steps(all);
  Vell::IndexVector ends(steps.Count() + 1);  // of the steps, once every record has its place
  for (const double prediction : all) {
    ++ends[steps.Of(prediction)];
  }
  std::exclusive_scan(ends.begin(), ends.end(), ends.begin(), 0);
  Vell::GrowableArray<RankedPrediction> ranked;
  ranked.AppendUninitialised(records);
  for (std::int32_t i = 0; i < records; ++i) {
    ranked[ends[steps.Of(predictions[i])]++] = {predictions[i], static_cast<Entry>(i)};
  }
  for (std::int32_t step = 0; step < steps.Count(); ++step) {
    std::sort(ranked.begin() + numbers_, ranked.begin() + ends[step],
              [](const RankedPrediction& a, const RankedPrediction& b) {
                return a.prediction < b.prediction;
              });
    numbers_ = ends[step];
  }
  for (std::int32_t i = 0; i < records; ++i) {
    const bool isTie = i > 0 && ranked[i - 1].prediction == ranked[i].prediction;
    order_[i] = ranked[i].record | (isTie ? kTie : 0);
  }
}

}  // namespace Hovar
