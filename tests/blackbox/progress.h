#pragma once

// What runs print while they read and arrange data, put together from the numbers in it.

#include <string>

namespace Testing {

/// The two lines about the shape of a data file, which go to the log too.
std::string SizeLines(int records, int variables);

/// What reading prints before the first hospital.
std::string ReadingLines(int records, int variables);

std::string HospitalLine(const std::string& id, int record, int records);

std::string CountLines(int complete, int completeP0);

/// What reading a file of one hospital "A" prints, to the end of the counts.
std::string OneHospital(int records, int variables, int complete, int completeP0);

/// What removing columns prints: `names` holds a line "Z name, X name" for each; the numbers are
/// those of afterwards.
std::string RemovalLines(const std::string& names, int variables, int complete, int completeP0);

}  // namespace Testing
