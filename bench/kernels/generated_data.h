#pragma once

// Synthetic data for the benchmarks: drawn by the library of hovar_simulate, written into a folder
// of this process, and read by the program. A size is drawn once and kept until the process ends.

#include <filesystem>

#include "data/data_set.h"

namespace Hovar::Bench {

/// Indicator columns of every file.
inline constexpr std::int32_t kIndicators = 2;

struct GeneratedData {
  std::filesystem::path file;
  DataSet data;
};

/// Data with 250 records a hospital, 5 % of P and 3 % of the X cells missing, or fewer X cells
/// where there are more than 60 variables. The variables are those besides the intercept. Ends the
/// process with a line on standard error when the file cannot be written.
const GeneratedData& DataOfSize(std::int64_t records, std::int64_t variables);

/// The folder of this process; it is there when this returns.
std::filesystem::path ScratchFolder();
void RemoveScratchFolder() noexcept;

/// Reads a data file without the lines that reading prints.
void ReadQuietly(DataSet& data, const std::filesystem::path& file);

}  // namespace Hovar::Bench
