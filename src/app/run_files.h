#pragma once

// The files of a run as the runners need them: opened by path, read or written whole, and closed.

#include <cstdint>

#include "data/data_file_reader.h"
#include "data/data_set.h"
#include "foundation/io/text_writer.h"
#include "foundation/string.h"
#include "regression/regression_results.h"

namespace Hovar {

/// Creates the output folder of a run (one level; its parent must exist) and attaches its log file,
/// which is emptied and lies in it; both are named by the definition.
/// Errors: FileOpenException for the log file, also when the folder could not be created.
void OpenRun(const Vell::String& folder, const Vell::String& logFile);

/// Opens a data file, reads it and closes it. `poaCount` and `keyUse` are those of ReadDataFile.
/// Errors: FileOpenException; those of ReadDataFile.
void ReadDataFileAt(DataSet& dataSet, const Vell::String& path, std::int32_t poaCount,
                    KeyUse keyUse = KeyUse::kDrop);

/// Reads a coefficient file and removes the variables that it does not have from the data set.
/// Errors: FileOpenException; those of ReadCoefficientFile and ReconcileVariables.
void ReadCoefficientsFor(DataSet& dataSet, RegressionResults& results, const Vell::String& path);

/// Creates an output file, lets write(writer) fill it and closes it, so that it is complete when
/// this returns. `write` takes an IO::TextWriter by reference. After an error what was written
/// stays.
/// Errors: FileOpenException; "IO Exception"; "Out of memory"; whatever `write` raises.
template <typename Write>
void WriteOutputFile(const Vell::String& path, Write write);

template <typename Write>
void WriteOutputFile(const Vell::String& path, Write write) {
  Vell::IO::TextWriter writer = Vell::IO::CreateTextFile(path);
  write(writer);
  writer.Target().Close();
}

}  // namespace Hovar
