#pragma once

// The coefficient file carries the results of an Analysis to Prediction and Validation. CSV with 21
// columns: the names of X and Z, the [X|Z] table as four numbers, then for each of the five models
// the estimate and its model-based ("mse") and empirical ("ese") standard error. docs/formats.md
// describes it.

#include "data/data_set.h"
#include "foundation/io/stream.h"
#include "foundation/io/text_writer.h"
#include "regression/regression_results.h"

namespace Hovar {

/// Writes the header and one line per variable; all five blocks must have one entry per variable. A
/// standard error that is not available (below 0 or a NaN) and the [X|Z] cells of the intercept
/// stay empty.
/// Errors: "IO Exception".
void WriteCoefficientFile(const RegressionResults& results, Vell::IO::TextWriter& writer);

/// Reads a coefficient file from a stream at its beginning that can seek; it is not closed. What
/// the results held is replaced. The number of variables is the number of lines that end with a
/// line feed, less the header; a last line without one is not read. An empty standard error is
/// -1.0; other text there is what strtod makes of it.
/// Errors: EndOfStreamException "Unexpected end of stream" for an [X|Z] or estimate cell that is no
///         number, or a file that ends within a row; "Invalid argument" for a file without a line;
///         those of the CSV reader; "Out of memory".
void ReadCoefficientFile(RegressionResults& results, Vell::IO::Stream& stream);

/// Removes from the data set the variables whose X name or Z name the results do not have, if there
/// are any, with the log lines of RemoveColumns. Order is not compared: afterwards the variables of
/// both correspond by position.
/// Errors: Exception "Variables mismatch" when the numbers of variables differ afterwards.
void ReconcileVariables(DataSet& dataSet, const RegressionResults& results);

}  // namespace Hovar
