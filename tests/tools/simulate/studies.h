#pragma once

// What the tests of the data generator share: bounds of chance, and generated files and records.
//
// Seeds are fixed and the bytes are the same on every platform, so a passing run passes everywhere.
// Still the bounds on random counts, unless a test says otherwise, are such that a correct
// generator with another seed breaks each of them with a chance of 1e-9 at most: a sum S of
// independent centred terms, each at most 1 in size, with total variance V obeys
// P(|S| >= t) <= 2 exp(-t^2 / (2 (V + t / 3))) (Bernstein's inequality).

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "data_file.h"
#include "options.h"
#include "record_sampler.h"
#include "study_model.h"

namespace Hovar::Simulate {

using Row = std::vector<std::string>;

/// The t of Bernstein's inequality for a chance of 1e-9.
inline double Bound(double variance) {
  const double l = std::log(2.0 / 1e-9);
  return l / 3.0 + std::sqrt(l * l / 9.0 + 2.0 * variance * l);
}

/// Expects `successes` of `trials` to lie where chance puts them for the probability.
inline void ExpectShare(std::int64_t successes, std::int64_t trials, double probability,
                        const std::string& what) {
  const double n = static_cast<double>(trials);
  EXPECT_NEAR(static_cast<double>(successes), n * probability,
              Bound(n * probability * (1.0 - probability)))
      << what;
}

inline std::string File(const Options& options) {
  std::ostringstream stream;
  EXPECT_TRUE(WriteDataFile(stream, options));
  return stream.str();
}

/// Splits the file, header included, at line feeds and commas.
inline std::vector<Row> Rows(const std::string& text) {
  std::vector<Row> rows(1, Row(1));
  for (const char c : text) {
    if (c == '\n') {
      rows.emplace_back(1);
    } else if (c == ',') {
      rows.back().emplace_back();
    } else {
      rows.back().back() += c;
    }
  }
  rows.pop_back();
  return rows;
}

inline std::vector<Record> Records(const StudyModel& model, const Options& options) {
  RecordSampler sampler(model, options);
  std::vector<Record> records;
  for (Record record; sampler.Next(record);) {
    records.push_back(record);
  }
  return records;
}

/// A study with everything in it that can be asked for.
inline Options Everything() {
  Options options;
  options.records = 20000;
  options.hospitals = 40;
  options.variables = 15;
  options.indicators = 3;
  options.missingX = 0.06;
  options.missingP = 0.05;
  options.warnings = 7;
  options.zeroColumn = true;
  options.dependentColumn = true;
  return options;
}

inline CommandLine Parse(const std::vector<std::string_view>& arguments) {
  return ParseCommandLine(arguments);
}

}  // namespace Hovar::Simulate
