#pragma once

// The counterpart of set_columns.h, which draws the layout: that file reads packed cells, this one
// writes them.

#include <cassert>
#include <cstdint>
#include <span>

namespace Vell {

/// Fills a block of packed cells from front to back, eight bytes at a time: the quick way to build
/// a packed matrix whose cells are known in their order. What was in the block is overwritten. The
/// block belongs to the caller and must not move without MoveTo; nothing checks that it suffices.
/// What was appended is in the block only after Finish.
class PackedWriter {
 public:
  static constexpr int kMostBits = 63;  // of one call of Append

  /// The block must hold all bits that are appended, rounded up to whole bytes.
  explicit PackedWriter(std::span<std::uint8_t> block)
      : block_(block.data()), next_(block.data()) {}

  /// Goes on in another block, which holds a copy of the one so far.
  void MoveTo(std::span<std::uint8_t> block) noexcept {
    next_ = block.data() + (next_ - block_);
    block_ = block.data();
  }

  /// Appends the lowest `count` bits (at most kMostBits) of `bits`, the highest of them first. The
  /// other bits must be 0.
  void Append(std::uint64_t bits, int count) noexcept {
    assert(count <= kMostBits && bits >> count == 0);
    const int room = kWord - used_;
    if (count < room) {
      pending_ = pending_ << count | bits;
      used_ += count;
      return;
    }
    // 1 <= room <= count < 64, so that every shift is defined
    used_ = count - room;
    WriteBytes(pending_ << room | bits >> used_, kWord / 8);
    pending_ = bits;  // what is above its lowest used_ bits is shifted out before it counts
  }

  /// Writes the bits that are still pending; a byte that they do not fill ends in zeros. Bits that
  /// are appended later begin a new byte.
  void Finish() noexcept {
    const int bytes = (used_ + 7) / 8;
    WriteBytes(pending_ << (8 * bytes - used_), bytes);
    used_ = 0;
  }

 private:
  static constexpr int kWord = 64;

  void WriteBytes(std::uint64_t bits, int count) noexcept {
    std::uint8_t* const to = next_;  // so that no store of a byte can change the place of the next
    for (int byte = 0; byte < count; ++byte) {
      to[byte] = static_cast<std::uint8_t>(bits >> 8 * (count - 1 - byte));
    }
    next_ = to + count;
  }

  std::uint8_t* block_;
  std::uint8_t* next_;
  std::uint64_t pending_ = 0;  // its lowest used_ bits are not yet written
  int used_ = 0;               // below kWord between calls
};

}  // namespace Vell
