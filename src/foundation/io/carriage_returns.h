#pragma once

// How a file stream reads the lines of platforms that end them with a carriage return and a line
// feed.

#include <cstddef>
#include <cstdint>

#include "foundation/growable_array.h"

namespace Vell::IO {

/// Drops the carriage returns that a file has before line feeds from the block into which it is
/// read, and remembers where they were, so that positions remain those of the file. A return at the
/// end of what was read is held until the next byte decides. Places are indices in the block; -1 is
/// that of a byte that is put back before it. The block is the stream's, whose bytes are moved
/// within it; nothing is kept of the pointers. One place is remembered for every return that is
/// dropped.
class CarriageReturns {
 public:
  /// With `areDropped` false, nothing is ever dropped or held.
  explicit CarriageReturns(bool areDropped) noexcept : areDropped_(areDropped) {}

  /// True when the block has every byte of the file.
  bool IsEmpty() const noexcept { return dropped_.IsEmpty() && !isHeld_; }
  /// 1 when a return is held, which belongs before the next bytes of the file; otherwise 0.
  std::size_t HeldCount() const noexcept { return isHeld_ ? 1 : 0; }

  /// Drops returns from the bytes from `from` to `end` of the block: the held one, if any, and then
  /// what was read, which is nothing at the end of the file. Result: the new end.
  /// Errors: "Out of memory".
  unsigned char* Drop(const unsigned char* block, unsigned char* from, unsigned char* end);

  /// Called before the bytes from `place` on move to the start of the block. What is known of the
  /// byte before them is kept, because it may be put back.
  void MoveToStart(std::ptrdiff_t place) noexcept;

  /// The number of bytes that the file has from `place` on and the block does not: returns that
  /// were dropped, and the held one.
  std::int64_t CountFrom(std::ptrdiff_t place) const noexcept;

  /// Forgets all places and the held return, as the stream does when it moves to another position.
  void Clear() noexcept;

 private:
  bool areDropped_;
  bool isHeld_ = false;
  GrowableArray<std::int32_t> dropped_;  // places of the line feeds after them, ascending
};

}  // namespace Vell::IO
