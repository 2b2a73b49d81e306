#pragma once

// Reads numbers from a stream byte for byte as the C library's fscanf does: which bytes are taken,
// which one is put back, and what a broken number leaves behind. Nothing here raises an error for a
// text that is not a number; the result says so.

#include <cstddef>
#include <cstdint>

#include "foundation/io/stream.h"

namespace Vell::IO {

enum class ScanResult {
  kEnd = -1,      // the stream ended before the first byte of a number
  kNoNumber = 0,  // something else stood there, or the stream ended within the number
  kNumber = 1,
};

/// Skip white space (line feeds included), then read one number; `value` is set for kNumber only. A
/// number beyond the range of an integer is stored as ParseInteger and ParseUnsigned say, a real
/// one as infinite or zero. One byte at most is put back; what the number took before it broke off
/// is gone.
/// Errors: "IO Exception"; "Out of memory" and "Integer overflow" for a number of very many digits.
ScanResult ScanInteger(Stream& stream, std::int32_t& value);    // "%d"
ScanResult ScanUnsigned(Stream& stream, std::uint32_t& value);  // "%u"
ScanResult ScanReal(Stream& stream, double& value);             // "%lg"

/// The same chosen by a format and a destination of `size` bytes; the contract is Stream::Scan's,
/// except that a text that is not a number is no error. Result: a ScanResult as a number.
int ScanNumber(Stream& stream, const char* format, void* destination, std::size_t size);

}  // namespace Vell::IO
