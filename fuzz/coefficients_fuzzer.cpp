// The coefficient file reader, and the reconciliation of a data set with what it read.

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "data/data_set.h"
#include "foundation/io/text_writer.h"
#include "foundation/shared_handle.h"
#include "fuzz_support.h"
#include "regression/coefficient_file.h"
#include "regression/regression_results.h"
#include "support/memory_stream.h"

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

// The cells of variable j are the bits of its number, so that a column can be told from the others.
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
  data.hospitalComplete.Resize(1);
  data.hospitalCompleteP0.Resize(1);
  data.hospitalHasMissing.Resize(1);
  data.recordHasMissing.Resize(kRecords);
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
