// The reader of individual predictions against the C library's number reading, and the C-statistics
// of what it read.

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/io/csv_reader.h"
#include "fuzz_support.h"
#include "prediction/c_statistics.h"
#include "prediction/prediction_files.h"
#include "support/memory_stream.h"

namespace {

using Fuzzing::Require;
using Hovar::IndividualPredictions;
using Testing::MemoryStream;

constexpr std::size_t kStored = 6;

/// The stored predictions of each record.
using Rows = std::vector<std::array<double, kStored>>;

struct Reading {
  const std::type_info* error = nullptr;
  Rows rows;
};

/// Three records without covariates: an event without P, one with P missing, and no event.
Hovar::DataSet MakeDataSet() {
  constexpr std::int32_t kRecords = 3;
  Hovar::DataSet data;
  data.hospitalCount = 1;
  data.recordCount = kRecords;
  data.y.Resize(kRecords);
  data.p.Resize(kRecords);
  data.z = Vell::BitMatrix(kRecords, 0);
  data.x = Vell::TernaryMatrix(kRecords, 0);
  data.y.Set(0, true);
  data.y.Set(1, true);
  data.p.SetMissing(1, true);
  data.recordHospital.Resize(kRecords);
  CountNonMissing(data);
  return data;
}

/// A Validation needs a line for each record; further ones are not used.
void CheckStatistics(const IndividualPredictions& predictions) {
  Hovar::DataSet data = MakeDataSet();
  Hovar::CStatisticValues values;
  const auto* const error = Fuzzing::ErrorOf([&] {
    ComputeCStatistics(values, data, Hovar::RegressionResults(), predictions, {1, 1, 2});
  });
  const bool isEnough = predictions.yGivenZ.Size() >= data.recordCount;
  Require(isEnough
              ? error == nullptr
              : error != nullptr && *error == typeid(Vell::Exceptions::InvalidArgumentException),
          "too few predictions were used, or enough were refused");
  for (const double value : {values.yGivenZ, values.yGivenX, values.yGivenXWithoutP,
                             values.yGivenXWithoutPMcmc, values.pGivenX, values.pGivenAll}) {
    Require(value >= -1 && value <= 1, "a C-statistic out of range");
  }
}

Reading Read(Vell::IO::Stream& stream) {
  Reading reading;
  IndividualPredictions predictions;
  reading.error = Fuzzing::ErrorOf([&] { Hovar::ReadIndividualPredictions(predictions, stream); });
  if (reading.error == nullptr) {
    CheckStatistics(predictions);
    for (std::int32_t i = 0; i < predictions.yGivenZ.Size(); ++i) {
      reading.rows.push_back({predictions.yGivenZ[i], predictions.yGivenX[i],
                              predictions.yGivenXWithoutP[i], predictions.yGivenXWithoutPMcmc[i],
                              predictions.pGivenX[i], predictions.pGivenAll[i]});
    }
  }
  return reading;
}

/// Reads past bytes up to one of these, or to the end.
void SkipBehind(std::FILE* file, std::string_view ends) {
  int c = std::fgetc(file);
  while (c != EOF && ends.find(static_cast<char>(c)) == std::string_view::npos) {
    c = std::fgetc(file);
  }
}

Reading ReadByLibrary(std::string text) {
  Reading reading;
  MemoryStream measured(text);
  std::int32_t records = 0;
  reading.error = Fuzzing::ErrorOf([&] { records = Vell::IO::MeasureCsv(measured).lineCount - 1; });
  if (reading.error == nullptr && records < 0) {
    reading.error = &typeid(Vell::Exceptions::InvalidArgumentException);
  }
  if (reading.error != nullptr) {
    return reading;
  }
  std::FILE* const file = fmemopen(text.data(), text.size(), "r");
  Require(file != nullptr, "no file in memory");
  SkipBehind(file, "\n");
  for (std::int32_t i = 0; i < records && reading.error == nullptr; ++i) {
    std::size_t place = 0;
    // A digit for each column of the file: is it a prediction that is stored?
    for (const char kind : std::string_view("00011011011")) {
      if (kind == '1') {
        if (place == 0) {
          reading.rows.emplace_back();
        }
        // What the library makes of a number is the very question.
        if (std::fscanf(file, "%lg", &reading.rows.back()[place++]) != 1) {  // NOLINT(cert-err34-c)
          reading.error = &typeid(Vell::Exceptions::EndOfStreamException);
          break;
        }
      }
      SkipBehind(file, ",\n");
    }
  }
  static_cast<void>(std::fclose(file));
  return reading;
}

void RequireSameReading(const Reading& a, const Reading& b) {
  Require(Fuzzing::AreSameError(a.error, b.error), "another error");
  if (a.error != nullptr) {
    return;
  }
  Require(a.rows.size() == b.rows.size(), "another number of records");
  for (std::size_t i = 0; i < a.rows.size(); ++i) {
    for (std::size_t k = 0; k < kStored; ++k) {
      Require(Fuzzing::AreSameNumber(a.rows[i][k], b.rows[i][k]), "another prediction");
    }
  }
}

}  // namespace

// Input: a byte for the size of the stream's block, and the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view file = Fuzzing::TextOf(data, size);
  const std::size_t blockSize = Fuzzing::TakeByte(file);
  MemoryStream bytes(file, 1);
  const Reading reading = Read(bytes);
  RequireSameReading(reading, ReadByLibrary(std::string(file)));
  MemoryStream whole(file);
  RequireSameReading(reading, Read(whole));
  Fuzzing::BlockStream block(file, blockSize);
  RequireSameReading(reading, Read(*block));
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  return Fuzzing::MutateLines(data, size, maxSize, seed);
}
