/// hovar_simulate: writes synthetic data files in the format that hovar reads.
///
/// The data files of the examples were made from the project's folder by (two lines in all)
///
///   hovar_simulate --records 5000 --hospitals 25 --variables 12 --indicators 2 --missing-x 0.04
///     --missing-p 0.05 --hospital-effect 0.3 --warnings 4 --zero-column --dependent-column
///     --seed 2 --output examples/quickstart/data.csv
///   hovar_simulate --records 3000 --hospitals 40 --variables 6 --indicators 1 --missing-x 0.01
///     --missing-p 0.01 --hospital-effect 1.5 --seed 3 --output examples/gee/data.csv
///
/// The tool uses nothing but the standard library and can be built by itself:
///
///   g++ -std=c++20 -O2 -o hovar_simulate tools/simulate/*.cpp
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "data_file.h"
#include "options.h"

namespace {

constexpr int kWriteFault = 1;
constexpr int kBadOption = 2;

int Report(std::string_view message, int status) {
  std::cerr << "hovar_simulate: " << message << '\n';
  return status;
}

int PrintHelp() {
  std::cout << Hovar::Simulate::HelpText() << std::flush;
  return std::cout.good() ? EXIT_SUCCESS
                          : Report("standard output could not be written", kWriteFault);
}

int WriteToStandardOutput(const Hovar::Simulate::Options& options) {
  return Hovar::Simulate::WriteDataFile(std::cout, options)
             ? EXIT_SUCCESS
             : Report("standard output could not be written", kWriteFault);
}

int WriteToFile(const Hovar::Simulate::Options& options) {
  std::ofstream file(options.output, std::ios::binary | std::ios::trunc);
  if (!file.is_open()) {
    return Report("'" + options.output + "' could not be opened for writing", kWriteFault);
  }
  const bool written = Hovar::Simulate::WriteDataFile(file, options);
  file.close();
  return written && file.good()
             ? EXIT_SUCCESS
             : Report("'" + options.output + "' could not be written to its end", kWriteFault);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const Hovar::Simulate::CommandLine line = Hovar::Simulate::ParseCommandLine(arguments);
    if (line.helpWanted) {
      return PrintHelp();
    }
    if (!line.fault.empty()) {
      return Report(line.fault, kBadOption);
    }
    return line.options.output.empty() ? WriteToStandardOutput(line.options)
                                       : WriteToFile(line.options);
  } catch (const std::exception& error) {
    return Report(error.what(), kWriteFault);
  }
}
