#pragma once

// The data file as the floor's kernels see it: one machine word of cells a record, so at most 63
// variables besides the intercept, and nothing that a measurement does not need.

#include <cstdint>
#include <string>
#include <vector>

#include "raw_array.h"

namespace Hovar::Floor {

/// What a byte of PackedData::flags holds.
inline constexpr std::uint8_t kOutcome = 1;           // Y
inline constexpr std::uint8_t kPresent = 2;           // P
inline constexpr std::uint8_t kPresentIsMissing = 4;  // P has to be imputed
inline constexpr std::uint8_t kRecordHasMissing = 8;  // P or some X cell is missing

struct PackedData {
  std::int32_t records = 0;
  std::int32_t columns = 0;  // with the intercept, which is bit 0 of a word
  RawArray<std::uint64_t> z;
  RawArray<std::uint64_t> x;
  RawArray<std::uint64_t> xMissing;
  RawArray<std::uint8_t> flags;
  std::vector<std::int32_t> hospitalStart;  // and the number of records after the last
  std::int32_t complete = 0;                // records without a missing value
  std::int32_t completeWithoutP = 0;        // and with P = 0
};

/// Reads a data file with read(2), 1 MiB at a time, and parses every byte once. Cells must be
/// plain: nothing, 0 or 1, without quotes; anything else ends the process with a line on standard
/// error.
PackedData ReadPackedData(const std::string& path, std::int32_t poaCount);

}  // namespace Hovar::Floor
