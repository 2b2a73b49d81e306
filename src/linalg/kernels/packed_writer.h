#pragma once

#include <cassert>
#include <cstdint>
#include <span>

namespace Vell {

/// Fills a block of packed cells from front to back, several bytes at a time: the quick way to
/// build a packed matrix whose cells are known in their order. What was in the block is
/// overwritten.
class PackedWriter {
 public:
  /// The block must hold all bits that are appended, rounded up to whole bytes.
  explicit PackedWriter(std::span<std::uint8_t> block) : next_(block.data()) {}

  /// Appends the lowest `count` bits (at most 32) of `bits`, the highest of them first. The other
  /// bits must be 0.
  void Append(std::uint64_t bits, int count) noexcept {
    assert(count <= kFlushed && bits >> count == 0);
    pending_ = pending_ << count | bits;
    used_ += count;
    if (used_ >= kFlushed) {
      used_ -= kFlushed;
      WriteBytes(pending_ >> used_, kFlushed / 8);
    }
  }

  /// Writes the bits that are still pending; a byte that they do not fill ends in zeros.
  void Finish() noexcept {
    const int bytes = (used_ + 7) / 8;
    WriteBytes(pending_ << (8 * bytes - used_), bytes);
    used_ = 0;
  }

 private:
  static constexpr int kFlushed = 32;

  void WriteBytes(std::uint64_t bits, int count) noexcept {
    for (int byte = count - 1; byte >= 0; --byte) {
      *next_++ = static_cast<std::uint8_t>(bits >> 8 * byte);
    }
  }

  std::uint8_t* next_;
  std::uint64_t pending_ = 0;  // its lowest used_ bits are not yet written
  int used_ = 0;               // below kFlushed between calls
};

}  // namespace Vell
