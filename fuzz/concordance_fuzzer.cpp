// The C-statistic from ranks against the definition: all pairs, one by one.

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>
#include <vector>

#include "fuzz_support.h"
#include "prediction/c_statistic.h"
#include "prediction/prediction_ranking.h"
#include "support/pairwise_concordance.h"

namespace {

using Fuzzing::Require;

constexpr double kSpecialNumbers[] = {0.0,
                                      -0.0,
                                      1.0,
                                      HUGE_VAL,
                                      -HUGE_VAL,
                                      std::numeric_limits<double>::quiet_NaN(),
                                      std::numeric_limits<double>::denorm_min(),
                                      std::numeric_limits<double>::max()};

/// Takes a prediction: one of a few, so that there are ties; neighbours; special numbers; any bits.
double TakePrediction(std::string_view& input) {
  const unsigned byte = Fuzzing::TakeByte(input);
  const unsigned choice = byte & 63U;
  switch (byte >> 6U) {
    case 0:
      return choice / 64.0;
    case 1:
      return std::bit_cast<double>(std::bit_cast<std::uint64_t>(0.5) + choice);
    case 2:
      return kSpecialNumbers[choice % std::size(kSpecialNumbers)];
    default:
      break;
  }
  double number = 0;
  const std::size_t count = std::min(sizeof number, input.size());
  std::memcpy(&number, input.data(), count);
  input.remove_prefix(count);
  return number;
}

struct Record {
  double prediction;
  bool isEvent;
  bool isIncluded;
};

std::vector<Record> RecordsOf(std::string_view input) {
  constexpr std::size_t kMost = 512;
  std::vector<Record> records;
  while (!input.empty() && records.size() < kMost) {
    const unsigned flags = Fuzzing::TakeByte(input);
    // Records of one kind in a row, so that a short input makes many.
    const std::size_t count = std::size_t{1} << (flags >> 2U & 3U);
    const double prediction = TakePrediction(input);
    records.insert(records.end(), count, {prediction, (flags & 1U) != 0, (flags & 2U) == 0});
  }
  return records;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<Record> records = RecordsOf(Fuzzing::TextOf(data, size));
  const auto count = static_cast<std::int32_t>(records.size());
  Vell::Vector predictions(count);
  std::vector<double> events;
  std::vector<double> others;
  for (std::int32_t i = 0; i < count; ++i) {
    const Record& record = records[static_cast<std::size_t>(i)];
    predictions[i] = record.prediction;
    if (record.isIncluded) {
      (record.isEvent ? events : others).push_back(record.prediction);
    }
  }
  const auto isEvent = [&](std::int32_t i) { return records[static_cast<std::size_t>(i)].isEvent; };
  const auto isIncluded = [&](std::int32_t i) {
    return records[static_cast<std::size_t>(i)].isIncluded;
  };
  const Hovar::Concordance concordance =
      Hovar::PredictionRanking(predictions, count).Count(isEvent, isIncluded);
  Require(concordance.events == std::ssize(events) && concordance.others == std::ssize(others),
          "another number of records");
  Require(concordance.score == Testing::PairwiseScore(events, others), "another score");
  Require(Hovar::CStatistic(predictions, count, isEvent, isIncluded) ==
              Testing::PairwiseStatistic(events, others),
          "another statistic");
  return 0;
}
