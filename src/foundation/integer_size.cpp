#include "foundation/integer_size.h"

#include "foundation/exceptions/exceptions.h"
#include "messages/error_texts.h"

namespace Vell {

std::int32_t CheckedSize(std::uint64_t size) {
  if (size > INT32_MAX) {
    throw Exceptions::IntegerOverflowException(Messages::kErrors.integerOverflow);
  }
  return static_cast<std::int32_t>(size);
}

void RequireIndex(std::int32_t index, std::int32_t count) {
  if (index < 0 || index >= count) {
    throw Exceptions::InvalidArgumentException(Messages::kErrors.indexOutOfRange);
  }
}

std::int32_t WrappingProduct(std::int32_t a, std::int32_t b) noexcept {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

}  // namespace Vell
