// The coefficient file reader, the reconciliation of a data set with what it read, and what a
// Prediction and a Validation do with both: the imputation sweep draws as its plain form does.

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "data/data_set.h"
#include "foundation/io/text_writer.h"
#include "foundation/random/random_generator.h"
#include "foundation/shared_handle.h"
#include "fuzz_support.h"
#include "mcmc/imputation_sweep.h"
#include "prediction/c_statistics.h"
#include "prediction/individual_predictions.h"
#include "regression/coefficient_file.h"
#include "regression/regression_results.h"
#include "support/memory_stream.h"
#include "support/plain_imputation.h"

namespace {

using Fuzzing::Require;
using Hovar::DataSet;
using Hovar::RegressionResults;
using Testing::MemoryStream;

struct Reading {
  const std::type_info* error = nullptr;
  RegressionResults results;
};

Reading Read(Vell::IO::Stream& stream) {
  Reading reading;
  reading.error = Fuzzing::ErrorOf([&] { Hovar::ReadCoefficientFile(reading.results, stream); });
  return reading;
}

Reading ReadText(std::string_view text, std::size_t windowSize = MemoryStream::kWhole) {
  MemoryStream stream(text, windowSize);
  return Read(stream);
}

std::string Write(const RegressionResults& results) {
  const auto stream = Vell::MakeShared<MemoryStream>();
  Vell::IO::TextWriter writer(stream);
  Hovar::WriteCoefficientFile(results, writer);
  return stream->Content();
}

/// Equal to the last digit that a file shows, and in the shape.
void RequireSameReading(const Reading& a, const Reading& b) {
  Require(Fuzzing::AreSameError(a.error, b.error), "another error");
  if (a.error == nullptr) {
    Require(a.results.VariableCount() == b.results.VariableCount(), "another number of variables");
    Require(Write(a.results) == Write(b.results), "other results");
  }
}

/// Numbers change when they are written with six digits, but only once.
void CheckWriting(const RegressionResults& results) {
  const Reading once = ReadText(Write(results));
  Require(once.error == nullptr, "a file that was written cannot be read");
  Require(once.results.VariableCount() == results.VariableCount(), "variables lost by writing");
  const Reading twice = ReadText(Write(once.results));
  RequireSameReading(once, twice);
}

struct Names {
  std::string x;
  std::string z;
};

/// The names of the data set's variables: words separated by blanks, each of the form X:Z.
std::vector<Names> NamesOf(std::string_view line) {
  constexpr std::size_t kMost = 16;
  std::vector<Names> names;
  while (!line.empty() && names.size() < kMost) {
    const std::string_view word = line.substr(0, line.find(' '));
    line.remove_prefix(std::min(word.size() + 1, line.size()));
    const std::string_view x = word.substr(0, word.find(':'));
    names.push_back(
        {std::string(x), std::string(word.substr(std::min(x.size() + 1, word.size())))});
  }
  return names;
}

// The cells of variable j are the bits of its number, so that no two columns are equal.
constexpr std::int32_t kRecords = 5;

bool Cell(std::size_t variable, std::int32_t record) {
  return (variable >> static_cast<std::size_t>(record) & 1U) != 0;
}

DataSet MakeDataSet(const std::vector<Names>& names) {
  DataSet data;
  data.hospitalCount = 1;
  data.recordCount = kRecords;
  data.variableCount = static_cast<std::int32_t>(names.size());
  data.y.Resize(kRecords);
  data.p.Resize(kRecords);
  for (std::int32_t i = 1; i <= 3; ++i) {
    data.y.Set(i, true);
  }
  data.p.SetMissing(1, true);
  data.p.SetValue(2, true);
  data.p.SetMissing(4, true);
  data.z = Vell::BitMatrix(kRecords, data.variableCount);
  data.x = Vell::TernaryMatrix(kRecords, data.variableCount);
  data.zNames = Vell::StringArray(data.variableCount);
  data.xNames = Vell::StringArray(data.variableCount);
  for (std::int32_t j = 0; j < data.variableCount; ++j) {
    const auto variable = static_cast<std::size_t>(j);
    data.xNames[j] = Vell::String(std::string_view(names[variable].x));
    data.zNames[j] = Vell::String(std::string_view(names[variable].z));
    for (std::int32_t i = 0; i < kRecords; ++i) {
      data.z.Set(i, j, Cell(variable, i));
      data.x.SetValue(i, j, !Cell(variable, i));
      data.x.SetMissing(i, j, Cell(variable, i));
    }
  }
  data.hospitalIds.Append(Vell::String("A"));
  data.hospitalStart.Append(0);
  data.hospitalStart.Append(kRecords);
  data.hospitalSize.Append(kRecords);
  data.recordHospital.Resize(kRecords);
  CountNonMissing(data);
  return data;
}

void RequireVariable(const DataSet& data, std::int32_t place, const std::vector<Names>& names,
                     std::size_t variable) {
  Require(data.xNames[place].View() == names[variable].x &&
              data.zNames[place].View() == names[variable].z,
          "another variable stayed");
  for (std::int32_t i = 0; i < kRecords; ++i) {
    Require(data.z.Get(i, place) == Cell(variable, i) &&
                data.x.Value(i, place) != Cell(variable, i) &&
                data.x.IsMissing(i, place) == Cell(variable, i),
            "a variable has the cells of another one");
  }
}

void RequireSameCells(const DataSet& a, const DataSet& b) {
  for (std::int32_t i = 0; i < kRecords; ++i) {
    Require(a.p.Value(i) == b.p.Value(i), "another P was drawn");
    for (std::int32_t j = 0; j < a.variableCount; ++j) {
      Require(a.x.Value(i, j) == b.x.Value(i, j), "another X was drawn");
    }
  }
}

/// Two sweeps with any coefficients and priors.
void CheckSweep(DataSet data, const RegressionResults& results) {
  const Vell::Vector y = EstimateVector(results.Block(Hovar::Model::kYGivenXWithoutPMcmc));
  const Vell::Vector p = EstimateVector(results.Block(Hovar::Model::kPGivenX));
  const Vell::Vector prior = PriorTable(results, data.variableCount);
  PrepareImputation(data);
  DataSet plain = data;
  for (std::uint32_t sweep = 1; sweep <= 2; ++sweep) {
    Vell::RandomGenerator::Seed(sweep, 362436069);
    RunImputationSweep(data, {y, p, prior});
    const std::uint32_t next = Vell::RandomGenerator::NextWord();
    Vell::RandomGenerator::Seed(sweep, 362436069);
    Testing::PlainSweep(plain, {y, p, prior});
    Require(next == Vell::RandomGenerator::NextWord(), "another number of draws");
    RequireSameCells(data, plain);
    for (std::int32_t i = 0; i < kRecords && data.variableCount > 0; ++i) {
      Require(!data.x.IsMissing(i, 0) || !data.x.Value(i, 0), "a cell of column 0 was drawn");
    }
  }
}

/// What the runs do, with few passes.
void CheckRuns(const DataSet& data, const RegressionResults& results) {
  const Hovar::McmcSettings settings{1, 1, 3};
  DataSet predicted = data;
  Hovar::IndividualPredictions predictions;
  ComputeIndividualPredictions(predictions, predicted, results, settings);
  for (const Vell::Vector* column :
       {&predictions.yGivenZ, &predictions.yGivenX, &predictions.yGivenXWithoutP,
        &predictions.yGivenXWithoutPMcmc, &predictions.pGivenX, &predictions.pGivenAll}) {
    for (const double value : *column) {
      Require(!(value < 0) && !(value > 1), "a prediction that is no probability");
    }
  }
  DataSet validated = data;
  Hovar::CStatisticValues values;
  ComputeCStatistics(values, validated, results, predictions, settings);
  for (const double value : {values.yGivenZ, values.yGivenX, values.yGivenXWithoutP,
                             values.yGivenXWithoutPMcmc, values.pGivenX, values.pGivenAll}) {
    Require(value >= -1 && value <= 1, "a C-statistic out of range");
  }
}

void CheckReconciliation(const std::vector<Names>& names, const RegressionResults& results) {
  std::set<std::string, std::less<>> xNames;
  std::set<std::string, std::less<>> zNames;
  for (std::int32_t i = 0; i < results.VariableCount(); ++i) {
    xNames.emplace(results.xNames[i].View());
    zNames.emplace(results.zNames[i].View());
  }
  std::vector<std::size_t> staying;
  for (std::size_t j = 0; j < names.size(); ++j) {
    if (xNames.contains(names[j].x) && zNames.contains(names[j].z)) {
      staying.push_back(j);
    }
  }
  DataSet data = MakeDataSet(names);
  const auto* const error = Fuzzing::ErrorOf([&] { Hovar::ReconcileVariables(data, results); });
  Require(error == nullptr || *error == typeid(Vell::Exceptions::Exception), "another error");
  Require(
      (error == nullptr) == (staying.size() == static_cast<std::size_t>(results.VariableCount())),
      "a mismatch that is none, or the other way round");
  Require(data.variableCount == static_cast<std::int32_t>(staying.size()),
          "another number of variables stayed");
  for (std::size_t j = 0; j < staying.size(); ++j) {
    RequireVariable(data, static_cast<std::int32_t>(j), names, staying[j]);
  }
  if (error == nullptr) {
    CheckSweep(data, results);
    CheckRuns(data, results);
  }
}

}  // namespace

// Input: a byte for the size of the stream's block, a line with the names of a data set's
// variables, and the coefficient file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view file = Fuzzing::TextOf(data, size);
  const std::size_t blockSize = Fuzzing::TakeByte(file);
  const std::string_view nameLine = file.substr(0, file.find('\n'));
  file.remove_prefix(std::min(nameLine.size() + 1, file.size()));

  const Reading reading = ReadText(file);
  RequireSameReading(reading, ReadText(file, 1));
  Fuzzing::BlockStream block(file, blockSize);
  RequireSameReading(reading, Read(*block));
  if (reading.error == nullptr) {
    CheckWriting(reading.results);
    if (nameLine.find('\0') == std::string_view::npos) {
      CheckReconciliation(NamesOf(nameLine), reading.results);
    }
  }
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  return Fuzzing::MutateLines(data, size, maxSize, seed);
}
