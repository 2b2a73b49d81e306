#pragma once

// The only place of the sampler that knows files. A variable writes its own cells; this class knows
// what a row is.

#include <cstdint>
#include <span>

#include "foundation/io/text_writer.h"
#include "foundation/string.h"
#include "mcmc/mcmc_variable.h"

namespace Vell::Mcmc {

/// The two files of a run in a folder of their own: Chain.csv with one row per kept sample of the
/// main phase, and Summary.csv with one row per scalar value. Names stand as they are, unquoted.
/// docs/formats.md describes both. Errors of writing: "IO Exception".
class ChainFile {
 public:
  using Variables = std::span<McmcVariable* const>;

  /// Creates the folder (one level; whether that worked shows when the files are opened), then both
  /// files, empty.
  /// Errors: FileOpenException; "Out of memory".
  explicit ChainFile(const String& folder);

  /// Writes the header of Chain.csv: "Step", then the names of the values that have buffers.
  void WriteChainHeader(Variables variables);
  /// Writes row `row` of the chain buffers; `step` counts the iterations of the main phase.
  void WriteChainRow(Variables variables, std::int32_t row, std::int32_t step);
  /// Writes all of Summary.csv: a header and the lines of each variable.
  void WriteSummary(Variables variables);

  /// Closes both files, the summary first.
  /// Errors: "IO Exception" if something that was written may be lost.
  void Close();

 private:
  IO::TextWriter summary_;
  IO::TextWriter chain_;
};

}  // namespace Vell::Mcmc
