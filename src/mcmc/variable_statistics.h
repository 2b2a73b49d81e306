#pragma once

// The figures of one value in the summary, and its column of the chain file. `kept` is the number
// of values recorded in the phase, which the model counts.

#include <cstdint>

#include "foundation/io/text_writer.h"
#include "linalg/vector.h"

namespace Vell::Mcmc {

/// Running statistics of one scalar value within a phase, and the recorded values that wait to be
/// written to the chain file.
struct VariableStatistics {
  double sum = 0;
  double sumOfSquares = 0;
  std::int32_t accepted = 0;
  /// One entry per buffered row; a value without a buffer has no column in the chain file.
  Vector chain;
  bool hasChain = false;

  /// Gives the value a chain buffer of `rows` rows.
  /// Errors: "Invalid argument" for a negative number; "Out of memory".
  void AllocateChain(std::int32_t rows);

  /// Sums and count become 0; the buffer stays.
  void Reset() noexcept;
  /// Adds a value to the sums and stores it in the row, which must exist, of the buffer, if there
  /// is one.
  void Record(double value, std::int32_t row) noexcept;

  /// sum / kept, or 0 when nothing was kept.
  double Mean(std::int32_t kept) const noexcept;
  /// The sample variance from the two running sums, with the divisor kept - 1, or 0 for fewer than
  /// two values. Where the values are large beside their spread the sums cancel: it can be
  /// inaccurate, and even negative.
  double Variance(std::int32_t kept) const noexcept;
  /// accepted / (kept * thinning): acceptances are counted in every iteration, values in every
  /// thinning-th. 0 when that product is below 1.
  double Acceptance(std::int32_t kept, std::int32_t thinning) const noexcept;

  /// The value's cells of the header and of a chain row (a comma and the name or the value; nothing
  /// without a buffer), and its line of the summary: name, mean, variance, acceptance.
  /// Errors: "IO Exception".
  void WriteChainName(IO::TextWriter& writer, std::string_view name) const;
  void WriteChainValue(IO::TextWriter& writer, std::int32_t row) const;
  void WriteSummaryLine(IO::TextWriter& writer, std::string_view name, std::int32_t kept,
                        std::int32_t thinning) const;
};

}  // namespace Vell::Mcmc
