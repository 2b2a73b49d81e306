/// Writes records as a data file: CSV, a header line, a line per record, each with a line feed.
///
/// The columns, with the names of the header:
///
///   Key, HospitalID, Y, POA1, POA2, ..., ZEmergency, ZAge80, ..., XEmergency, XAge80, ...
///
/// Keys run from R0000001, hospital IDs from H0001, with more digits where these do not do.
/// A missing cell is empty. No field needs quotes.
#pragma once

#include <cstddef>
#include <ostream>
#include <vector>

#include "options.h"
#include "record_sampler.h"
#include "study_model.h"

namespace Hovar::Simulate {

/// Puts lines together in a block of its own and hands the stream whole blocks.
///
/// The stream must outlive the writer and should be open as binary. The destructor writes nothing.
class DataFileWriter {
 public:
  DataFileWriter(std::ostream& stream, const StudyModel& model, const Options& options);

  void WriteHeader();

  /// Appends the record's line. False when the stream has failed; there is no use in going on.
  bool Write(const Record& record);

  /// Hands the stream what is left and flushes it. True when every byte was taken.
  bool Finish();

 private:
  void WriteBlock();

  std::ostream& stream_;
  const StudyModel& model_;
  std::size_t indicatorCount_;
  std::vector<char> block_;  // Has room for one more line beyond the size at which it is written.
  std::size_t used_ = 0;
};

/// Draws the model for the options and writes the whole file, record by record.
/// Result: true when every byte was taken by the stream.
/// Memory: by the number of variables and hospitals; the number of records does not matter.
bool WriteDataFile(std::ostream& stream, const Options& options);

}  // namespace Hovar::Simulate
