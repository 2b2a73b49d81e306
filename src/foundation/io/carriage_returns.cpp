#include "foundation/io/carriage_returns.h"

#include <algorithm>
#include <cstring>

namespace Vell::IO {

unsigned char* CarriageReturns::Drop(const unsigned char* block, unsigned char* from,
                                     unsigned char* end) {
  if (!areDropped_) {
    return end;
  }
  // A held return after which nothing came ends the file.
  const bool isLast = end - from == static_cast<std::ptrdiff_t>(HeldCount());
  isHeld_ = !isLast && end[-1] == '\r';
  end -= HeldCount();
  unsigned char* to = from;
  while (from != end) {
    auto* found =
        static_cast<unsigned char*>(std::memchr(from, '\r', static_cast<std::size_t>(end - from)));
    unsigned char* const stop = found != nullptr ? found : end;
    to = std::copy(from, stop, to);
    from = stop;
    if (from != end) {
      if (from + 1 != end && from[1] == '\n') {
        dropped_.Append(static_cast<std::int32_t>(to - block));
      } else {
        *to++ = '\r';
      }
      ++from;
    }
  }
  return to;
}

void CarriageReturns::MoveToStart(std::ptrdiff_t place) noexcept {
  std::int32_t kept = 0;
  for (const std::int32_t index : dropped_) {
    const auto moved = static_cast<std::int32_t>(index - place);
    if (moved >= -1) {
      dropped_[kept++] = moved;
    }
  }
  dropped_.Truncate(kept);
}

std::int64_t CarriageReturns::CountFrom(std::ptrdiff_t place) const noexcept {
  const auto* const first = std::lower_bound(dropped_.begin(), dropped_.end(), place);
  return dropped_.end() - first + (isHeld_ ? 1 : 0);
}

void CarriageReturns::Clear() noexcept {
  isHeld_ = false;
  dropped_.Truncate(0);
}

}  // namespace Vell::IO
