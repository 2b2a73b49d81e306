#include "linalg/kernels/plain_cells_avx512.h"

#include <immintrin.h>

#include <algorithm>
#include <bit>

// Looks at 64 bytes at a time. In the masks of a block the first byte is the highest bit, so that
// the bits that belong to its commas, gathered, come in the order in which cells are packed.

namespace Vell {
namespace {

constexpr std::size_t kBlock = 64;

struct ByteMasks {
  std::uint64_t ones;
  std::uint64_t digits;
  std::uint64_t commas;
};

/// The masks of the next 64 bytes; where the text ends before, no bit is set.
[[gnu::target("avx512bw")]] inline ByteMasks FindBytes(std::string_view text) noexcept {
  const __m512i bytes =
      text.size() >= kBlock
          ? _mm512_loadu_si512(text.data())
          : _mm512_maskz_loadu_epi8((std::uint64_t{1} << text.size()) - 1, text.data());
  // Backwards within each quarter, then the quarters backwards. The forms with a mask, of which
  // nothing is masked, are used because g++ 12 warns of the others.
  const __m512i backwards = _mm512_set_epi64(
      0x0001020304050607, 0x08090A0B0C0D0E0F, 0x0001020304050607, 0x08090A0B0C0D0E0F,
      0x0001020304050607, 0x08090A0B0C0D0E0F, 0x0001020304050607, 0x08090A0B0C0D0E0F);
  const __m512i quarters = _mm512_shuffle_epi8(bytes, backwards);
  const __m512i reversed = _mm512_maskz_shuffle_i64x2(0xFF, quarters, quarters, 0b00'01'10'11);
  const std::uint64_t ones = _mm512_cmpeq_epi8_mask(reversed, _mm512_set1_epi8('1'));
  const std::uint64_t zeros = _mm512_cmpeq_epi8_mask(reversed, _mm512_set1_epi8('0'));
  return {ones, ones | zeros, _mm512_cmpeq_epi8_mask(reversed, _mm512_set1_epi8(','))};
}

template <bool kMayBeEmpty>
[[gnu::target("avx512bw,bmi2,lzcnt,popcnt")]] inline std::string_view TakeCells(
    PackedWriter& writer, std::string_view text, std::int32_t& count) noexcept {
  constexpr int kCellSize = kMayBeEmpty ? 2 : 1;  // bits
  constexpr std::uint64_t kFirst = std::uint64_t{1} << 63;
  while (count > 0) {
    const auto [ones, digits, commas] = FindBytes(text);
    const std::uint64_t empty = commas & (commas >> 1 | kFirst);
    const std::uint64_t notPlain =
        ~(digits | commas) | (digits & digits >> 1) | (kMayBeEmpty ? 0 : empty);
    const std::uint64_t ends =  // of the plain cells
        notPlain == 0 ? commas : commas & ~(~std::uint64_t{0} >> std::countl_zero(notPlain));
    const int found = std::popcount(ends);
    const int taken = std::min({found, count, PackedWriter::kMostBits / kCellSize});
    if (taken == 0) {
      break;
    }
    const int left = found - taken;
    std::uint64_t bits = _pext_u64(ones >> 1, ends) >> left;
    if constexpr (kMayBeEmpty) {
      constexpr std::uint64_t kValueBits = 0x5555'5555'5555'5555;
      bits =
          _pdep_u64(bits, kValueBits) | _pdep_u64(_pext_u64(empty, ends) >> left, kValueBits << 1);
    }
    writer.Append(bits, taken * kCellSize);
    count -= taken;
    const std::uint64_t lastEnd = _pdep_u64(std::uint64_t{1} << left, ends);
    text.remove_prefix(static_cast<std::size_t>(std::countl_zero(lastEnd)) + 1);
  }
  return text;
}

}  // namespace

[[gnu::target("avx512bw,bmi2,lzcnt,popcnt")]] std::string_view TakeBinaryCellsAvx512(
    PackedWriter& writer, std::string_view text, std::int32_t& count) noexcept {
  return TakeCells<false>(writer, text, count);
}

[[gnu::target("avx512bw,bmi2,lzcnt,popcnt")]] std::string_view TakeTernaryCellsAvx512(
    PackedWriter& writer, std::string_view text, std::int32_t& count) noexcept {
  return TakeCells<true>(writer, text, count);
}

}  // namespace Vell
