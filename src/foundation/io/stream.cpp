#include "foundation/io/stream.h"

#include <utility>

namespace Vell::IO {

Stream::Stream(std::uint32_t mode, String name) : mode_(mode), name_(std::move(name)) {}

std::string_view Stream::Window() {
  if (next_ == end_) {
    Peek();
  }
  return {reinterpret_cast<const char*>(next_), static_cast<std::size_t>(end_ - next_)};
}

}  // namespace Vell::IO
