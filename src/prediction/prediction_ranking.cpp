#include "prediction/prediction_ranking.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numeric>
#include <span>
#include <utility>

#include "foundation/exceptions/exceptions.h"
#include "foundation/memory.h"

namespace Hovar {
namespace {

/// A number whose unsigned order is the order of the doubles: the sign bit is turned round, and all
/// others of a negative number too. Both zeros become one.
std::uint64_t SortKey(double value) noexcept {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  const std::uint64_t bits = std::bit_cast<std::uint64_t>(value + 0.0);
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

// Records are sorted as words: the leading 32 of the bits in which their keys differ at all, and
// the record's number below.

using Word = std::uint64_t;

std::int32_t RecordOf(Word word) noexcept { return static_cast<std::int32_t>(word & 0xFFFF'FFFF); }

constexpr int kDigitBits = 11;
constexpr int kDigits = 3;  // 3 * 11 >= 32
constexpr std::size_t kBuckets = std::size_t{1} << kDigitBits;

std::size_t DigitOf(Word word, int digit) noexcept {
  return word >> (32 + digit * kDigitBits) & (kBuckets - 1);
}

/// How many words have each value of each digit.
class DigitCounts {
 public:
  void Add(Word word) noexcept {
    for (int digit = 0; digit < kDigits; ++digit) {
      ++counts_[static_cast<std::size_t>(digit)][DigitOf(word, digit)];
    }
  }

  /// Sorts the counted words by the bits of their keys: a radix sort, the lowest digit first (D. E.
  /// Knuth, The Art of Computer Programming 3, 2nd ed. (1998), section 5.2.5). `scratch` has room
  /// for as many words; the result stands there.
  void SortInto(std::span<Word> scratch, std::span<Word> words) noexcept {
    static_assert(kDigits % 2 == 1);
    for (int digit = 0; digit < kDigits; ++digit) {
      auto& place = counts_[static_cast<std::size_t>(digit)];
      std::exclusive_scan(place.begin(), place.end(), place.begin(), std::uint32_t{0});
      for (const Word word : words) {
        scratch[place[DigitOf(word, digit)]++] = word;
      }
      std::swap(scratch, words);
    }
  }

 private:
  std::array<std::array<std::uint32_t, kBuckets>, kDigits> counts_{};
};

/// The end of the run of words with the same key bits.
std::span<Word>::iterator EndOfRun(std::span<Word>::iterator begin,
                                   std::span<Word>::iterator end) noexcept {
  return std::find_if(begin + 1, end, [begin](Word word) { return word >> 32 != *begin >> 32; });
}

}  // namespace

double Concordance::Statistic() const noexcept {
  const double weightedPairs = static_cast<double>(others) * static_cast<double>(events) * 2.0;
  return weightedPairs > 0 ? static_cast<double>(score) / weightedPairs : -1.0;
}

PredictionRanking::PredictionRanking(const Vell::Vector& predictions, std::int32_t records)
    : order_(records) {
  if (predictions.Size() < records) {
    throw Vell::Exceptions::InvalidArgumentException("Index out of range");
  }
  // NaNs go to the back; the others' keys tell which of their bits matter.
  std::uint64_t lowest = ~std::uint64_t{0};
  std::uint64_t highest = 0;
  std::int32_t nans = 0;
  for (std::int32_t i = 0; i < records; ++i) {
    if (std::isnan(predictions[i])) {
      order_[records - ++nans] = static_cast<Entry>(i);
      continue;
    }
    const std::uint64_t key = SortKey(predictions[i]);
    lowest = std::min(lowest, key);
    highest = std::max(highest, key);
  }
  numbers_ = records - nans;
  const int width = numbers_ > 0 ? static_cast<int>(std::bit_width(highest - lowest)) : 0;
  const int dropped = std::max(width - 32, 0);
  Vell::GrowableArray<Word> wordBlock(numbers_);
  DigitCounts digits;
  Word* next = wordBlock.begin();
  for (std::int32_t i = 0; i < records; ++i) {
    if (!std::isnan(predictions[i])) {
      *next = (SortKey(predictions[i]) - lowest) >> dropped << 32 | static_cast<Word>(i);
      digits.Add(*next++);
    }
  }
  std::span<Word> words = wordBlock.Span();
  Vell::GrowableArray<Word> scratch;
  // Few records are sorted faster by comparing than by counting digits.
  constexpr std::int32_t kFew = 2048;
  if (numbers_ < kFew) {
    std::sort(words.begin(), words.end());
  } else {
    scratch.Resize(numbers_);
    digits.SortInto(scratch.Span(), words);
    words = scratch.Span();
  }

  // Records with the same key bits are mostly alone, or have equal predictions.
  const auto isBelow = [&predictions](Word a, Word b) {
    return predictions[RecordOf(a)] < predictions[RecordOf(b)];
  };
  Entry* entry = order_.begin();
  for (auto begin = words.begin(); begin != words.end();) {
    const auto end = EndOfRun(begin, words.end());
    if (end - begin > 1 && !std::is_sorted(begin, end, isBelow)) {
      std::sort(begin, end, isBelow);
    }
    for (auto word = begin; word != end; ++word) {
      const bool isTie = word != begin && !isBelow(word[-1], word[0]);
      *entry++ = static_cast<Entry>(RecordOf(*word)) | (isTie ? kTie : 0);
    }
    begin = end;
  }
}

}  // namespace Hovar
