/// The command line of hovar_simulate: what can be asked of a synthetic data file.
///
/// Options are plain numbers that the rest of the tool takes as given; all range checks are made
/// here, once.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Hovar::Simulate {

/// What is asked of one data file. The initial values are the defaults of the command line.
struct Options {
  std::int32_t records = 5000;   ///< 1 to 2147483646; with the header the lines fit 31 bits.
  std::int32_t hospitals = 25;   ///< 1 to records; every hospital has a record.
  std::int32_t variables = 12;   ///< Besides the intercept, planted ones included; 0 to 100000.
  std::int32_t indicators = 2;   ///< Present-on-admission columns, 0 to 1000; without any P is 0.
  double missingX = 0.0;         ///< Chance that an X cell is left empty, 0 to 0.99.
  double missingP = 0.0;         ///< Chance that a record has one indicator left empty, 0 to 0.99.
  double hospitalEffect = 0.3;   ///< Standard deviation of the hospitals' log-odds, 0 to 10.
  std::int32_t warnings = 0;     ///< Records planted with Y = 0 and P = 1, 0 to records.
  bool zeroColumn = false;       ///< One X column holds no 1.
  bool dependentColumn = false;  ///< One X column is determined by three others.
  std::uint64_t seed = 1;        ///< Equal options and seed give equal bytes.
  std::string output;            ///< File to write; empty for standard output.
};

/// How a command line was understood: either help is wanted, or there is a fault to tell (a
/// sentence without line end), or the options hold and can be used.
struct CommandLine {
  Options options;
  bool helpWanted = false;
  std::string fault;
};

/// Reads the arguments after the program's name. An option given twice counts the last time.
///
/// Numbers are read in the C locale and must use the whole argument.
/// Errors: none are thrown; the first fault found is put into the result.
CommandLine ParseCommandLine(std::span<const std::string_view> arguments);

/// The text that --help prints, with a line end after its last line.
std::string_view HelpText();

}  // namespace Hovar::Simulate
