#include "arranged_design.h"

#include <algorithm>
#include <bit>
#include <numeric>

#if defined(__AVX512VBMI2__)
#include <immintrin.h>
#endif

namespace Hovar::Floor {

namespace {

constexpr std::size_t kGroup = 64;  // records that are turned round at once
constexpr std::size_t kGroups = ArrangedDesign::kBlock / kGroup;

using Square = std::array<std::uint64_t, kGroup>;

/// One step of Transpose: swaps the off-diagonal squares of all squares of 2 * kWidth bits.
template <std::size_t kWidth>
void SwapSquares(Square& words, std::uint64_t mask) noexcept {
  for (std::size_t first = 0; first < kGroup; first += 2 * kWidth) {
    for (std::size_t i = first; i < first + kWidth; ++i) {
      const std::uint64_t swapped = (words[i] >> kWidth ^ words[i + kWidth]) & mask;
      words[i] ^= swapped << kWidth;
      words[i + kWidth] ^= swapped;
    }
  }
}

/// Bit j of word i becomes bit i of word j.
void Transpose(Square& words) noexcept {
  SwapSquares<32>(words, 0x0000'0000'FFFF'FFFF);
  SwapSquares<16>(words, 0x0000'FFFF'0000'FFFF);
  SwapSquares<8>(words, 0x00FF'00FF'00FF'00FF);
  SwapSquares<4>(words, 0x0F0F'0F0F'0F0F'0F0F);
  SwapSquares<2>(words, 0x3333'3333'3333'3333);
  SwapSquares<1>(words, 0x5555'5555'5555'5555);
}

/// Writes first + i for every set bit i and returns the place after; may write on up to 64 places
/// after that.
std::uint16_t* WriteSetBits(std::uint16_t* place, std::uint64_t bits, std::size_t first) noexcept {
#if defined(__AVX512VBMI2__)
  const __m512i low =
      _mm512_add_epi16(_mm512_set1_epi16(static_cast<short>(first)),
                       _mm512_set_epi16(31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17,
                                        16, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
  const auto lowBits = static_cast<std::uint32_t>(bits);
  const auto highBits = static_cast<std::uint32_t>(bits >> 32);
  _mm512_storeu_si512(place, _mm512_maskz_compress_epi16(lowBits, low));
  place += std::popcount(lowBits);
  const __m512i high = _mm512_add_epi16(low, _mm512_set1_epi16(32));
  _mm512_storeu_si512(place, _mm512_maskz_compress_epi16(highBits, high));
  return place + std::popcount(highBits);
#else
  for (; bits != 0; bits &= bits - 1) {
    *place++ = static_cast<std::uint16_t>(first + static_cast<std::size_t>(std::countr_zero(bits)));
  }
  return place;
#endif
}

using BitRow = std::array<std::uint64_t, kGroups>;

std::uint64_t CountTogether(const BitRow& a, const BitRow& b) noexcept {
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < kGroups; ++i) {
    count += static_cast<std::uint64_t>(std::popcount(a[i] & b[i]));
  }
  return count;
}

}  // namespace

/// The cells of a block as one row of bits a column, zeros after the last record.
struct ArrangedDesign::BlockBits {
  alignas(64) std::array<BitRow, kMaxColumns> column{};
  alignas(64) BitRow response{};
};

ArrangedDesign::ArrangedDesign(const Design& design) : design_(design) {
  static BlockBits bits;
  ChooseOrder();
  const std::size_t blocks = (design.records + kBlock - 1) / kBlock;
  words_.Grow((design.records + kGroup - 1) / kGroup * kGroup, 0);
  listStart_.assign(blocks * kMaxColumns + 1, 0);
  for (std::size_t block = 0; block < blocks; ++block) {
    const std::size_t first = block * kBlock;
    const std::size_t count = std::min(kBlock, design.records - first);
    ArrangeBlock(bits, first, count);
    Count(bits);
    List(bits, block, count);
  }
}

/// By how often a column is set in the first block; any order would do.
void ArrangedDesign::ChooseOrder() {
  std::array<std::size_t, kMaxColumns> frequency{};
  for (std::size_t i = 0; i < std::min(kBlock, design_.records); ++i) {
    for (std::uint64_t bits = design_.words[i]; bits != 0; bits &= bits - 1) {
      ++frequency[static_cast<std::size_t>(std::countr_zero(bits))];
    }
  }
  std::iota(order_.begin(), order_.end(), std::size_t{0});
  std::stable_sort(order_.begin() + 1, order_.end(),
                   [&](std::size_t a, std::size_t b) { return frequency[a] > frequency[b]; });
}

void ArrangedDesign::ArrangeBlock(BlockBits& bits, std::size_t first, std::size_t count) {
  for (std::size_t group = 0; group < kGroups; ++group) {
    const std::size_t start = first + group * kGroup;
    const std::size_t size = group * kGroup < count ? std::min(kGroup, count - group * kGroup) : 0;
    Square rows{};
    Square arranged{};
    std::uint64_t responses = 0;
    std::copy_n(design_.words + start, size, rows.begin());
    for (std::size_t i = 0; i < size; ++i) {
      responses |= std::uint64_t{design_.responses[start + i]} << i;
    }
    Transpose(rows);
    for (std::size_t position = 0; position < kMaxColumns; ++position) {
      arranged[position] = rows[order_[position]];
      bits.column[position][group] = arranged[position];
    }
    bits.response[group] = responses;
    if (size > 0) {
      Transpose(arranged);
      std::copy_n(arranged.begin(), kGroup, words_.begin() + start);
    }
  }
}

void ArrangedDesign::Count(const BlockBits& bits) noexcept {
  for (std::size_t j = 0; j < design_.columns; ++j) {
    for (std::size_t k = 0; k <= j; ++k) {
      together_[j][k] += CountTogether(bits.column[j], bits.column[k]);
    }
    withResponse_[j] += CountTogether(bits.column[j], bits.response);
  }
}

void ArrangedDesign::List(const BlockBits& bits, std::size_t block, std::size_t count) {
  std::size_t cells = listStart_[block * kMaxColumns];
  if (numbers_.Capacity() < cells + count * design_.columns + 2 * kGroup) {
    // Rows are sparse: room for eight cells a record, more where that does not do.
    numbers_.Grow(
        std::max(cells + count * design_.columns + 2 * kGroup, 2 * cells + 8 * design_.records),
        cells);
  }
  std::uint16_t* place = numbers_.begin() + cells;
  for (std::size_t position = 0; position < kMaxColumns; ++position) {
    // The first column is set in every record.
    if (position > 0 && position < design_.columns) {
      for (std::size_t group = 0; group < kGroups; ++group) {
        place = WriteSetBits(place, bits.column[position][group], group * kGroup);
      }
    }
    cells = static_cast<std::size_t>(place - numbers_.begin());
    listStart_[block * kMaxColumns + position + 1] = cells;
  }
}

}  // namespace Hovar::Floor
