#include "foundation/io/stream.h"

#include <utility>

namespace Vell::IO {

Stream::Stream(std::uint32_t mode, String name) : mode_(mode), name_(std::move(name)) {}

}  // namespace Vell::IO
