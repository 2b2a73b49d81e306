// The data file reader. A file without anything unusual is read in one pass and any other one
// carefully, so a file that is read in one pass must give the same data set when it is read
// carefully: through a stream that gives one byte at a time, which one pass never takes, and with
// quotes around the header's first name. Then the columns of a small data set are eliminated.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "data/column_elimination.h"
#include "data/data_file_reader.h"
#include "data/data_set.h"
#include "data/plain_data_reader.h"
#include "fuzz_support.h"
#include "support/memory_stream.h"

namespace {

using Fuzzing::Require;
using Hovar::DataSet;
using Hovar::KeyUse;
using Testing::MemoryStream;

struct Reading {
  const std::type_info* error = nullptr;
  DataSet data;
};

Reading Read(Vell::IO::Stream& stream, std::int32_t poaCount, KeyUse keyUse) {
  Reading reading;
  reading.error =
      Fuzzing::ErrorOf([&] { Hovar::ReadDataFile(reading.data, stream, poaCount, keyUse); });
  return reading;
}

bool AreEqual(const Vell::IndexVector& a, const Vell::IndexVector& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

bool AreEqual(const Vell::BitVector& a, const Vell::BitVector& b) {
  bool isEqual = a.Size() == b.Size();
  for (std::int32_t i = 0; isEqual && i < a.Size(); ++i) {
    isEqual = a.Get(i) == b.Get(i);
  }
  return isEqual;
}

bool AreEqual(const Vell::StringArray& a, const Vell::StringArray& b) {
  bool isEqual = a.Count() == b.Count();
  for (std::int32_t i = 0; isEqual && i < a.Count(); ++i) {
    isEqual = a[i].View() == b[i].View();
  }
  return isEqual;
}

void RequireSameCells(const DataSet& a, const DataSet& b) {
  Require(AreEqual(a.y, b.y), "other outcomes");
  Require(a.p.Size() == b.p.Size(), "another number of indicators");
  for (std::int32_t i = 0; i < a.recordCount; ++i) {
    Require(a.p.Value(i) == b.p.Value(i) && a.p.IsMissing(i) == b.p.IsMissing(i), "another P");
    for (std::int32_t j = 0; j < a.variableCount; ++j) {
      Require(a.z.Get(i, j) == b.z.Get(i, j), "another cell of Z");
      Require(a.x.Value(i, j) == b.x.Value(i, j) && a.x.IsMissing(i, j) == b.x.IsMissing(i, j),
              "another cell of X");
    }
  }
}

void RequireSameData(const DataSet& a, const DataSet& b) {
  Require(a.hospitalCount == b.hospitalCount && a.recordCount == b.recordCount &&
              a.variableCount == b.variableCount,
          "another size");
  RequireSameCells(a, b);
  Require(std::equal(a.hospitalIds.begin(), a.hospitalIds.end(), b.hospitalIds.begin(),
                     b.hospitalIds.end(),
                     [](const auto& x, const auto& y) { return x.View() == y.View(); }),
          "other hospitals");
  Require(AreEqual(a.hospitalStart, b.hospitalStart) &&
              AreEqual(a.recordHospital, b.recordHospital) &&
              AreEqual(a.hospitalSize, b.hospitalSize),
          "other records of the hospitals");
  Require(AreEqual(a.hospitalComplete, b.hospitalComplete) &&
              AreEqual(a.hospitalCompleteP0, b.hospitalCompleteP0) &&
              a.completeCount == b.completeCount && a.completeP0Count == b.completeP0Count &&
              AreEqual(a.hospitalHasMissing, b.hospitalHasMissing) &&
              AreEqual(a.recordHasMissing, b.recordHasMissing),
          "other counts");
  Require(AreEqual(a.zNames, b.zNames) && AreEqual(a.xNames, b.xNames), "other names");
}

void RequireSameReading(const Reading& a, const Reading& b) {
  Require(Fuzzing::AreSameError(a.error, b.error), "another error");
  if (a.error == nullptr) {
    RequireSameData(a.data, b.data);
  }
}

/// What must hold in every data set, however its file looks.
void RequireConsistency(const DataSet& data) {
  Require(data.hospitalIds.Size() == data.hospitalCount &&
              data.hospitalStart.Size() == data.hospitalCount + 1 &&
              data.hospitalStart[data.hospitalCount] == data.recordCount,
          "the hospitals do not end with the records");
  std::int32_t complete = 0;
  std::int32_t completeP0 = 0;
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    const std::int32_t hospital = data.recordHospital[i];
    Require(hospital >= 0 && hospital < data.hospitalCount && data.hospitalStart[hospital] <= i &&
                i < data.hospitalStart[hospital + 1],
            "a record outside its hospital");
    bool isMissing = data.p.IsMissing(i);
    for (std::int32_t j = 0; j < data.variableCount; ++j) {
      isMissing = isMissing || data.x.IsMissing(i, j);
    }
    Require(data.recordHasMissing.Get(i) == isMissing, "a record's missing flag");
    Require(data.p.IsMissing(i) || !data.p.Value(i) || data.y.Get(i), "P without Y");
    complete += isMissing ? 0 : 1;
    completeP0 += isMissing || data.p.Value(i) ? 0 : 1;
  }
  Require(data.completeCount == complete && data.completeP0Count == completeP0,
          "counts of complete records");
}

/// An Analysis imputes with the intercept in column 0: it stays, unless no variable does.
void CheckElimination(DataSet data) {
  constexpr std::int32_t kMost = 12;  // keeps the time of the decomposition low
  constexpr double kTolerance = 1e-9;
  if (data.variableCount > kMost) {
    return;
  }
  const auto* const error = Fuzzing::ErrorOf([&] { EliminateColumns(data, kTolerance); });
  if (error == nullptr && data.variableCount > 0) {
    Require(data.xNames[0].View() == "XIntercept" && data.zNames[0].View() == "ZIntercept",
            "the intercept was removed");
    for (std::int32_t i = 0; i < data.recordCount; ++i) {
      Require(data.x.Value(i, 0) && !data.x.IsMissing(i, 0) && data.z.Get(i, 0),
              "another column is the first one");
    }
    RequireConsistency(data);
  }
}

/// The first field of each record of a file without quotes, each with a line feed.
std::string KeysOf(std::string_view file) {
  std::string keys;
  file.remove_prefix(file.find('\n') + 1);
  while (!file.empty()) {
    keys.append(file.substr(0, file.find(','))).push_back('\n');
    file.remove_prefix(file.find('\n') + 1);
  }
  return keys;
}

void CheckPlainFile(std::string_view file, std::int32_t poaCount, std::size_t blockSize) {
  Fuzzing::BlockStream block(file, blockSize);
  const Reading plain = Read(*block, poaCount, KeyUse::kKeep);
  if (plain.error == nullptr) {
    Require(std::string_view(plain.data.keys.begin(),
                             static_cast<std::size_t>(plain.data.keys.Size())) == KeysOf(file),
            "other keys");
  }
  const std::size_t keyEnd = file.find(',');
  std::string quoted;
  quoted.append("\"").append(file.substr(0, keyEnd)).append("\"").append(file.substr(keyEnd));
  Fuzzing::BlockStream quotedBlock(quoted, blockSize);
  RequireSameReading(plain, Read(*quotedBlock, poaCount, KeyUse::kDrop));
}

/// A small number, a few of which are below 0.
std::int32_t TakePoaCount(std::string_view& input) {
  const std::int32_t byte = Fuzzing::TakeByte(input);
  return byte >= '0' && byte <= '9' ? byte - '0' : byte % 32 - 8;
}

}  // namespace

// Input: the number of indicators as a digit, the size of the stream's block in sixteens of bytes,
// and the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view file = Fuzzing::TextOf(data, size);
  const std::int32_t poaCount = TakePoaCount(file);
  const std::size_t blockSize = 16 * std::size_t{Fuzzing::TakeByte(file)};

  MemoryStream bytes(file, 1);
  const Reading careful = Read(bytes, poaCount, KeyUse::kDrop);
  Fuzzing::BlockStream block(file, blockSize);
  RequireSameReading(careful, Read(*block, poaCount, KeyUse::kDrop));
  if (careful.error == nullptr) {
    RequireConsistency(careful.data);
    CheckElimination(careful.data);
  }

  DataSet plain;
  bool isPlain = false;
  (*block).Seek(0);
  const auto* const error = Fuzzing::ErrorOf(
      [&] { isPlain = Hovar::ReadPlainDataFile(plain, *block, poaCount, KeyUse::kDrop); });
  Require(error == nullptr, "reading in one pass raises an error");
  if (isPlain) {
    CheckPlainFile(file, poaCount, blockSize);
  }
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  return Fuzzing::MutateLines(data, size, maxSize, seed);
}
