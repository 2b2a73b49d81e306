#include "regression/design_sums_avx512.h"

#include <immintrin.h>

#include <algorithm>
#include <cstring>
#include <type_traits>

// The sums of eight columns stand in one register, those of a word's 64 columns in eight. A record
// adds its value to the lanes whose bits are set in its word, whose bytes are the registers' masks:
// no branch and no address depends on what is set. The registers go to memory once per list.

namespace Hovar {
namespace {

constexpr std::ptrdiff_t kGroup = TriangleSums::kGroup;
constexpr std::int32_t kWordBits = Vell::kColumnsPerWord;

[[gnu::target("avx512f")]] inline __mmask8 GroupMask(const std::uint64_t* word,
                                                     std::int32_t group) noexcept {
  __mmask8 mask;
  std::memcpy(&mask, reinterpret_cast<const unsigned char*>(word) + group, sizeof mask);
  return mask;
}

/// The list of a column, and what its records add: weights to the crossproducts with the columns of
/// a word, and values to the column's own sum.
struct ColumnList {
  std::span<const FitRows::Place> places;
  const std::uint64_t* word;  // of the block's first record
  std::ptrdiff_t wordCount;
  const double* weights;
  const double* values;
};

/// Adds to the sums of the word's first columns, and returns `columnSum` with the values added. The
/// two chains of additions do not wait for each other.
template <std::int32_t kGroups>
[[gnu::target("avx512f,avx512dq")]] double AddList(double* sums, double columnSum,
                                                   const ColumnList& list) noexcept {
  __m512d groups[kGroups];
#pragma GCC unroll 8
  for (std::int32_t g = 0; g < kGroups; ++g) {
    groups[g] = _mm512_loadu_pd(sums + g * kGroup);
  }
  for (const FitRows::Place i : list.places) {
    const std::uint64_t* const word = list.word + i * list.wordCount;
    const __m512d weight = _mm512_set1_pd(list.weights[i]);
#pragma GCC unroll 8
    for (std::int32_t g = 0; g < kGroups; ++g) {
      groups[g] = _mm512_mask_add_pd(groups[g], GroupMask(word, g), groups[g], weight);
    }
    columnSum += list.values[i];
  }
#pragma GCC unroll 8
  for (std::int32_t g = 0; g < kGroups; ++g) {
    _mm512_storeu_pd(sums + g * kGroup, groups[g]);
  }
  return columnSum;
}

/// Calls run with the number of registers that hold `columns` (1 .. 64) sums, as a constant.
template <std::int32_t kGroups = 1, typename Run>
void RunForColumns(std::int32_t columns, const Run& run) noexcept {
  if constexpr (kGroups * kGroup < kWordBits) {
    if (columns > kGroups * kGroup) {
      RunForColumns<kGroups + 1>(columns, run);
      return;
    }
  }
  run(std::integral_constant<std::int32_t, kGroups>());
}

/// How many records of a list have each of the word's first columns set, times a quarter: added to
/// the sums. Sixteen counts stand in one register.
template <std::int32_t kGroups>
[[gnu::target("avx512f,avx512dq")]] void AddQuarters(double* sums,
                                                     const ColumnList& list) noexcept {
  constexpr std::int32_t kRegisters = (kGroups + 1) / 2;
  __m512i counts[kRegisters];
#pragma GCC unroll 4
  for (std::int32_t r = 0; r < kRegisters; ++r) {
    counts[r] = _mm512_setzero_si512();
  }
  const __m512i one = _mm512_set1_epi32(1);
  for (const FitRows::Place i : list.places) {
    const std::uint64_t* const word = list.word + i * list.wordCount;
#pragma GCC unroll 4
    for (std::int32_t r = 0; r < kRegisters; ++r) {
      __mmask16 mask;
      std::memcpy(&mask, reinterpret_cast<const unsigned char*>(word) + std::ptrdiff_t{2} * r,
                  sizeof mask);
      counts[r] = _mm512_mask_add_epi32(counts[r], mask, counts[r], one);
    }
  }
  std::int32_t numbers[16 * kRegisters];
  std::memcpy(numbers, counts, sizeof counts);
  for (std::int32_t k = 0; k < kGroups * kGroup; ++k) {
    sums[k] += 0.25 * numbers[k];
  }
}

/// The sum of the list's values, each 1/2 or -1/2.
double SumOfHalves(const ColumnList& list) noexcept {
  double sums[4] = {};  // so that no addition waits for the one before
  std::size_t i = 0;
  for (; i + 4 <= list.places.size(); i += 4) {
    for (std::size_t lane = 0; lane < 4; ++lane) {
      sums[lane] += list.values[list.places[i + lane]];
    }
  }
  for (; i < list.places.size(); ++i) {
    sums[0] += list.values[list.places[i]];
  }
  return sums[0] + sums[1] + (sums[2] + sums[3]);
}

/// Sums of a word's columns, of two values at once.
struct WordSums {
  double* first;
  double* second;
  std::int32_t columns;  // 1 .. 64
};

template <std::int32_t kGroups>
[[gnu::target("avx512f,avx512dq")]] void AddRecords(const WordSums& sums, const std::uint64_t* word,
                                                    std::int32_t wordCount, std::int32_t count,
                                                    const double* first,
                                                    const double* second) noexcept {
  // The last register may reach beyond the last column, where nothing is read or written.
  const auto tail = static_cast<__mmask8>((2U << (sums.columns - 1) % kGroup) - 1);
  constexpr __mmask8 kAll = 0xFF;
  __m512d firsts[kGroups];
  __m512d seconds[kGroups];
#pragma GCC unroll 8
  for (std::int32_t g = 0; g < kGroups; ++g) {
    const __mmask8 used = g + 1 < kGroups ? kAll : tail;
    firsts[g] = _mm512_maskz_loadu_pd(used, sums.first + g * kGroup);
    seconds[g] = _mm512_maskz_loadu_pd(used, sums.second + g * kGroup);
  }
  for (std::int32_t i = 0; i < count; ++i) {
    const __m512d firstValue = _mm512_set1_pd(first[i]);
    const __m512d secondValue = _mm512_set1_pd(second[i]);
#pragma GCC unroll 8
    for (std::int32_t g = 0; g < kGroups; ++g) {
      const __mmask8 mask = GroupMask(word, g);
      firsts[g] = _mm512_mask_add_pd(firsts[g], mask, firsts[g], firstValue);
      seconds[g] = _mm512_mask_add_pd(seconds[g], mask, seconds[g], secondValue);
    }
    word += wordCount;
  }
#pragma GCC unroll 8
  for (std::int32_t g = 0; g < kGroups; ++g) {
    const __mmask8 used = g + 1 < kGroups ? kAll : tail;
    _mm512_mask_storeu_pd(sums.first + g * kGroup, used, firsts[g]);
    _mm512_mask_storeu_pd(sums.second + g * kGroup, used, seconds[g]);
  }
}

}  // namespace

void AddCrossproductsAvx512(TriangleSums& crossproducts, std::span<double> columnSums,
                            const FitRows& rows, std::int32_t block, const BlockValues& weights,
                            const BlockValues& values) noexcept {
  for (std::int32_t j = 0; j < rows.ColumnCount(); ++j) {
    ColumnList list{rows.Places(block, j), rows.Words(block, 0), rows.WordCount(), weights.data(),
                    values.data()};
    for (std::int32_t column = 0; column <= j; column += kWordBits, ++list.word) {
      RunForColumns(std::min(j + 1 - column, kWordBits), [&](auto groups) {
        double* const sums = crossproducts.Row(j) + column;
        const double start = columnSums.empty() ? 0 : columnSums[static_cast<std::size_t>(j)];
        const double columnSum = AddList<groups>(sums, start, list);
        if (!columnSums.empty() && column + kWordBits > j) {
          columnSums[static_cast<std::size_t>(j)] = columnSum;
        }
      });
    }
  }
}

void AddCrossproductsOfQuartersAvx512(TriangleSums& crossproducts, std::span<double> columnSums,
                                      const FitRows& rows, std::int32_t block,
                                      const BlockValues& values) noexcept {
  for (std::int32_t j = 0; j < rows.ColumnCount(); ++j) {
    ColumnList list{rows.Places(block, j), rows.Words(block, 0), rows.WordCount(), nullptr,
                    values.data()};
    for (std::int32_t column = 0; column <= j; column += kWordBits, ++list.word) {
      RunForColumns(std::min(j + 1 - column, kWordBits),
                    [&](auto groups) { AddQuarters<groups>(crossproducts.Row(j) + column, list); });
    }
    if (!columnSums.empty()) {
      columnSums[static_cast<std::size_t>(j)] += SumOfHalves(list);
    }
  }
}

void AddColumnSumsAvx512(const ColumnSums& first, const ColumnSums& second, const FitRows& rows,
                         const BlockPart& part) noexcept {
  const std::uint64_t* const words = rows.Words(part.block, part.begin);
  for (std::int32_t column = 0; column < rows.ColumnCount(); column += kWordBits) {
    const WordSums sums{first.sums.data() + column, second.sums.data() + column,
                        std::min(rows.ColumnCount() - column, kWordBits)};
    RunForColumns(sums.columns, [&](auto groups) {
      AddRecords<groups>(sums, words + column / kWordBits, rows.WordCount(), part.end - part.begin,
                         first.values.data() + part.begin, second.values.data() + part.begin);
    });
  }
}

}  // namespace Hovar
