#pragma once

// The files of a Prediction run, both CSV with a header line. docs/formats.md describes them.

#include "data/data_set.h"
#include "foundation/io/stream.h"
#include "foundation/io/text_writer.h"
#include "foundation/string.h"
#include "prediction/hospital_predictions.h"
#include "prediction/individual_predictions.h"

namespace Hovar {

/// Writes one line per record, in the order of the data file, numbers as "%lg"; `dataSet` is the
/// one that was predicted, and a P that is missing is an empty field, whatever was imputed. The
/// records' keys are those that the data set has kept; otherwise the data file is read again: the
/// first field of each record, as the CSV reader returns it.
/// Errors: FileOpenException for the data file; those of the CSV reader; "IO Exception"; "Out of
///         memory".
void WriteIndividualPredictions(const IndividualPredictions& predictions, const DataSet& dataSet,
                                const Vell::String& dataFilePath, Vell::IO::TextWriter& writer);

/// Reads the six stored predictions of each record back from a stream at its beginning that can
/// seek; it is not closed. Lines are not compared with those of a data file. The columns between
/// them are skipped up to the next comma, without regard to quotes.
/// Errors: EndOfStreamException "Unexpected end of stream" for a value that is no number; "Invalid
///         argument" for a file without a line; those of the CSV reader; "Out of memory".
void ReadIndividualPredictions(IndividualPredictions& predictions, Vell::IO::Stream& stream);

/// Writes one line per hospital. A mean without a count is an empty field.
/// Errors: "IO Exception".
void WriteHospitalPredictions(const HospitalPredictions& hospitalPredictions,
                              const DataSet& dataSet, Vell::IO::TextWriter& writer);

}  // namespace Hovar
