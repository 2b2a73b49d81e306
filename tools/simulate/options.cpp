#include "options.h"

#include <charconv>
#include <cstddef>
#include <limits>
#include <system_error>

namespace Hovar::Simulate {
namespace {

constexpr std::int32_t kMostRecords = std::numeric_limits<std::int32_t>::max() - 1;

// Three variables and the one that they determine.
constexpr std::int32_t kDependentGroupSize = 4;

constexpr std::string_view kHelp =
    R"(Usage: hovar_simulate [OPTION]... > data.csv
       hovar_simulate [OPTION]... --output data.csv

Writes a synthetic data file of hospital records: key, hospital, outcome Y, present-on-admission
indicators, Z cells, X cells. Equal options and seed give equal bytes.

  --records N          number of records (5000)
  --hospitals N        number of hospitals, of uneven size (25)
  --variables N        number of covariates besides the intercept (12)
  --indicators N       number of present-on-admission indicators (2)
  --missing-x F        chance that an X cell is left empty (0)
  --missing-p F        chance that a record has an indicator left empty (0)
  --hospital-effect SD standard deviation of the hospitals' log-odds of Y (0.3)
  --warnings N         number of records with Y = 0 though an indicator is 1 (0)
  --zero-column        make one X column all zero
  --dependent-column   make one X column depend on three others
  --seed N             seed of the random numbers (1)
  --output FILE        write to FILE instead of standard output
  --help               print this text

Where standard output turns line feeds into pairs of characters, --output writes them plain.
Exit status: 0 when the whole file was written, 1 when writing failed, 2 for a bad option.
)";

// Reads all of `text` as a number of type T.
template <typename T>
bool ReadNumber(T& number, std::string_view text) {
  const char* const end = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc() && result.ptr == end;
}

std::string Quoted(std::string_view text) {
  std::string quoted;
  return quoted.append(1, '\'').append(text).append(1, '\'');
}

// Reads one option's number. A text that is no number, a NaN or one out of range gives a fault.
template <typename T>
void ReadRanged(T& number, std::string& fault, std::string_view name, std::string_view text,
                T lowest, T highest, std::string_view range) {
  T read{};
  if (ReadNumber(read, text) && read >= lowest && read <= highest) {
    number = read;
  } else {
    fault = std::string(name) + " takes " + std::string(range) + ", not " + Quoted(text);
  }
}

// Stores the value of an option that takes one. Answers false when there is no such option.
bool StoreValue(CommandLine& line, std::string_view name, std::string_view text) {
  Options& options = line.options;
  std::string& fault = line.fault;
  if (name == "--records") {
    ReadRanged(options.records, fault, name, text, 1, kMostRecords,
               "a whole number from 1 to 2147483646");
  } else if (name == "--hospitals") {
    ReadRanged(options.hospitals, fault, name, text, 1, kMostRecords,
               "a whole number from 1 to 2147483646");
  } else if (name == "--variables") {
    ReadRanged(options.variables, fault, name, text, 0, 100000, "a whole number from 0 to 100000");
  } else if (name == "--indicators") {
    ReadRanged(options.indicators, fault, name, text, 0, 1000, "a whole number from 0 to 1000");
  } else if (name == "--missing-x") {
    ReadRanged(options.missingX, fault, name, text, 0.0, 0.99, "a chance from 0 to 0.99");
  } else if (name == "--missing-p") {
    ReadRanged(options.missingP, fault, name, text, 0.0, 0.99, "a chance from 0 to 0.99");
  } else if (name == "--hospital-effect") {
    ReadRanged(options.hospitalEffect, fault, name, text, 0.0, 10.0,
               "a standard deviation from 0 to 10");
  } else if (name == "--warnings") {
    ReadRanged(options.warnings, fault, name, text, 0, kMostRecords,
               "a whole number from 0 to 2147483646");
  } else if (name == "--seed") {
    ReadRanged(options.seed, fault, name, text, std::uint64_t{0},
               std::numeric_limits<std::uint64_t>::max(),
               "a whole number from 0 to 18446744073709551615");
  } else if (name == "--output") {
    options.output = text;
    if (text.empty()) {
      fault = "--output takes the name of a file";
    }
  } else {
    return false;
  }
  return true;
}

// What is wrong with options that are each in range; empty when they fit together.
std::string FindContradiction(const Options& options) {
  if (options.hospitals > options.records) {
    return "there cannot be more hospitals than records";
  }
  if (options.warnings > options.records) {
    return "there cannot be more warnings than records";
  }
  if (options.indicators == 0 && (options.warnings > 0 || options.missingP > 0.0)) {
    return "--warnings and --missing-p need at least one indicator";
  }
  const std::int32_t planted =
      (options.zeroColumn ? 1 : 0) + (options.dependentColumn ? kDependentGroupSize : 0);
  if (options.variables < planted) {
    return "the planted columns need at least " + std::to_string(planted) + " variables";
  }
  return {};
}

}  // namespace

CommandLine ParseCommandLine(std::span<const std::string_view> arguments) {
  CommandLine line;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string_view name = arguments[i];
    if (name == "--help") {
      line.helpWanted = true;
      return line;
    }
    if (name == "--zero-column") {
      line.options.zeroColumn = true;
      continue;
    }
    if (name == "--dependent-column") {
      line.options.dependentColumn = true;
      continue;
    }
    const bool hasValue = i + 1 < arguments.size();
    if (!StoreValue(line, name, hasValue ? arguments[i + 1] : std::string_view())) {
      line.fault = "unknown option " + Quoted(name) + ", see --help";
    } else if (!hasValue) {
      line.fault = std::string(name) + " needs a value";
    }
    if (!line.fault.empty()) {
      return line;
    }
    ++i;
  }
  line.fault = FindContradiction(line.options);
  return line;
}

std::string_view HelpText() { return kHelp; }

}  // namespace Hovar::Simulate
