#pragma once

// Sizes, counts and indices are signed 32-bit integers throughout the system, as in the files that
// it writes. Here they are made from wider numbers and checked.

#include <cstdint>

namespace Vell {

/// Narrows a length or count to the signed 32-bit integers that the system counts with.
///
/// Range:  0 <= size < 2147483648 (2^31); the value is returned unchanged.
/// Errors: IntegerOverflowException "Integer overflow" for 2147483648 and more.
std::int32_t CheckedSize(std::uint64_t size);

/// Checks an index that comes from outside; nothing is ever in range of a count of 0 or less.
/// Errors: InvalidArgumentException "Index out of range" unless 0 <= index < count.
void RequireIndex(std::int32_t index, std::int32_t count);

/// The 32-bit signed product of two counts, wrapped around as the processor does it.
/// Callers that must not accept a wrapped product compare the result themselves.
std::int32_t WrappingProduct(std::int32_t a, std::int32_t b) noexcept;

}  // namespace Vell
