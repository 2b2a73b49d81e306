#pragma once

// Reads numbers from a stream byte for byte as the C library's fscanf does: which bytes are taken,
// which one is put back, and what a broken number leaves behind. Nothing here raises an error for a
// text that is not a number; the result tells.

#include <cstddef>
#include <cstdint>

#include "foundation/io/stream.h"

namespace Vell::IO {

enum class ScanResult {
  kEnd = -1,      // the stream ended before the first byte of a number
  kNoNumber = 0,  // something else stood there, or the stream ended within the number
  kNumber = 1,
};

/// Skip white space (line feeds included), then read one number; `value` is set for kNumber only.
/// Errors: those of the stream.
ScanResult ScanInteger(Stream& stream, std::int32_t& value);    // "%d"
ScanResult ScanUnsigned(Stream& stream, std::uint32_t& value);  // "%u"
ScanResult ScanReal(Stream& stream, double& value);             // "%lg"

/// The same chosen by a format and a destination of `size` bytes; the contract is Stream::Scan's,
/// without its answer to a text that is not a number.
int ScanNumber(Stream& stream, const char* format, void* destination, std::size_t size);

}  // namespace Vell::IO
