#include "data/data_file_reader.h"

#include <algorithm>

#include "data/cell_reader.h"
#include "data/plain_data_reader.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/io/csv_reader.h"
#include "foundation/io/log.h"
#include "foundation/io/standard_writers.h"
#include "messages/error_texts.h"
#include "messages/output_lines.h"

namespace Hovar {
namespace {

using Vell::Exceptions::Exception;
using Vell::IO::ReadWholeField;
using Vell::IO::SkipField;

/// Measures the file, checks its shape and gives the data set its sizes.
void MeasureDataFile(DataSet& dataSet, Vell::IO::Stream& stream, std::int32_t poaCount) {
  const Vell::IO::CsvShape shape = Vell::IO::MeasureCsv(stream);
  if (shape.minimumFields != shape.maximumFields) {
    throw Exception(Messages::kErrors.variableFieldCount);
  }
  const std::int64_t covariateFields =
      std::int64_t{shape.minimumFields} - poaCount - kFieldsBeforeIndicators;
  if (covariateFields % 2 != 0) {
    throw Exception(Messages::kErrors.wrongIndicatorCount);
  }
  dataSet.recordCount = shape.lineCount - 1;
  dataSet.variableCount = static_cast<std::int32_t>(covariateFields / 2 + 1);
}

void MakeRoomForRecords(DataSet& dataSet) {
  dataSet.y.Resize(dataSet.recordCount);
  dataSet.z = Vell::BitMatrix(dataSet.recordCount, dataSet.variableCount);
  dataSet.p.Resize(dataSet.recordCount);
  dataSet.x = Vell::TernaryMatrix(dataSet.recordCount, dataSet.variableCount);
}

void ReadNames(Vell::StringArray& names, const char* intercept, Vell::IO::Stream& stream) {
  names[0] = Vell::String(intercept);
  for (std::int32_t j = 1; j < names.Count(); ++j) {
    ReadWholeField(names[j], stream);
  }
}

void ReadHeader(DataSet& dataSet, Vell::IO::Stream& stream, std::int32_t poaCount) {
  if (poaCount < 0) {
    return;  // ReadRecords will refuse it; up to 2^30 variables would need names until then
  }
  dataSet.zNames = Vell::StringArray(dataSet.variableCount);
  dataSet.xNames = Vell::StringArray(dataSet.variableCount);
  Vell::IO::SkipFields(stream, std::int64_t{kFieldsBeforeIndicators} + poaCount);
  ReadNames(dataSet.zNames, "ZIntercept", stream);
  ReadNames(dataSet.xNames, "XIntercept", stream);
}

void PrintHospital(const DataSet& dataSet, std::int32_t hospital) {
  Vell::IO::StandardOutput().WriteMessage(Messages::kLines.hospital, dataSet.hospitalIds[hospital],
                                          dataSet.hospitalStart[hospital], dataSet.recordCount);
}

/// Begins a new hospital where the ID differs from the last one's.
void AssignHospital(DataSet& dataSet, std::int32_t record, const Vell::String& id) {
  const std::int32_t last = dataSet.hospitalIds.Size() - 1;
  if (last < 0 || dataSet.hospitalIds[last].View() != id.View()) {
    dataSet.hospitalIds.Append(id);
    dataSet.hospitalStart.Append(record);
    PrintHospital(dataSet, last + 1);
  }
}

/// P is set where some indicator is, and missing where some indicator is; it can be both.
void ReadPresentOnAdmission(DataSet& dataSet, std::int32_t record, Vell::TernaryVector& indicators,
                            Vell::IO::Stream& stream) {
  for (std::int32_t k = 0; k < indicators.Size(); ++k) {
    const Ternary cell = ReadTernaryCell(stream);
    indicators.SetValue(k, cell == Ternary::kOne);
    indicators.SetMissing(k, cell == Ternary::kMissing);
  }
  bool value = false;
  bool isMissing = false;
  for (std::int32_t k = 0; k < indicators.Size(); ++k) {
    value = value || indicators.Value(k);
    isMissing = isMissing || indicators.IsMissing(k);
  }
  dataSet.p.SetValue(record, value);
  dataSet.p.SetMissing(record, isMissing);
}

void ReadRecords(DataSet& dataSet, Vell::IO::Stream& stream, std::int32_t poaCount) {
  Vell::TernaryVector indicators(poaCount);
  Vell::String id;
  Vell::PackedWriter zWriter(dataSet.z.Bytes());
  Vell::PackedWriter xWriter(dataSet.x.Bytes());
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    SkipField(stream);  // the key
    ReadWholeField(id, stream);
    AssignHospital(dataSet, i, id);
    dataSet.y.Set(i, ReadBinaryCell(stream));
    ReadPresentOnAdmission(dataSet, i, indicators, stream);
    zWriter.Append(1, 1);  // the intercepts: set, never missing
    ReadBinaryCells(zWriter, stream, dataSet.variableCount - 1);
    xWriter.Append(1, 2);
    ReadTernaryCells(xWriter, stream, dataSet.variableCount - 1);
  }
  zWriter.Finish();
  xWriter.Finish();
  if (stream.ReadByte() != Vell::IO::kEndOfStream) {
    throw Exception(Messages::kErrors.dataWrongFormat);
  }
}

/// A hospital's records must stand together: no ID may begin a hospital twice.
void CheckGrouping(const DataSet& dataSet) {
  Vell::GrowableArray<Vell::String> sorted(dataSet.hospitalIds);
  const auto byBytes = [](const Vell::String& a, const Vell::String& b) {
    return a.View() < b.View();
  };
  const auto equal = [](const Vell::String& a, const Vell::String& b) {
    return a.View() == b.View();
  };
  std::sort(sorted.begin(), sorted.end(), byBytes);
  if (std::adjacent_find(sorted.begin(), sorted.end(), equal) != sorted.end()) {
    throw Exception(Messages::kErrors.dataNotGrouped);
  }
}

void CorrectPresentOnAdmission(DataSet& dataSet) {
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    if (!dataSet.p.IsMissing(i) && dataSet.p.Value(i) && !dataSet.y.Get(i)) {
      Vell::IO::Log().WriteMessage(Messages::kWarnings.outcomeAbsent, i);
      dataSet.p.SetValue(i, false);
      ++dataSet.contradictionCount;
    }
  }
}

void IndexHospitals(DataSet& dataSet) {
  dataSet.hospitalStart.Append(dataSet.recordCount);
  dataSet.hospitalStart.Reserve(dataSet.hospitalStart.Size());
  dataSet.hospitalIds.Reserve(dataSet.hospitalIds.Size());
  dataSet.hospitalSize.Resize(dataSet.hospitalCount);
  dataSet.recordHospital.Resize(dataSet.recordCount);
  for (std::int32_t h = 0; h < dataSet.hospitalCount; ++h) {
    const std::int32_t first = dataSet.hospitalStart[h];
    dataSet.hospitalSize[h] = dataSet.hospitalStart[h + 1] - first;
    std::fill_n(dataSet.recordHospital.begin() + first, dataSet.hospitalSize[h], h);
  }
}

}  // namespace

void ReadDataFile(DataSet& dataSet, Vell::IO::Stream& stream, std::int32_t poaCount,
                  KeyUse keyUse) {
  Vell::IO::StandardOutput().WriteMessage(Messages::kLines.readingDataFile);
  dataSet = DataSet();
  const bool isPlain = ReadPlainDataFile(dataSet, stream, poaCount, keyUse);
  stream.Seek(0);
  if (!isPlain) {
    dataSet = DataSet();
    MeasureDataFile(dataSet, stream, poaCount);
    stream.Seek(0);
  }
  Vell::IO::Log().WriteMessage(Messages::kLines.recordCount, dataSet.recordCount);
  Vell::IO::Log().WriteMessage(Messages::kLines.variableCount, dataSet.variableCount);
  if (!isPlain) {
    MakeRoomForRecords(dataSet);
  }
  ReadHeader(dataSet, stream, poaCount);
  Vell::IO::StandardOutput().WriteMessage(Messages::kLines.readingData);
  if (isPlain) {
    for (std::int32_t h = 0; h < dataSet.hospitalIds.Size(); ++h) {
      PrintHospital(dataSet, h);
    }
  } else {
    ReadRecords(dataSet, stream, poaCount);
  }
  dataSet.hospitalCount = dataSet.hospitalIds.Size();
  CheckGrouping(dataSet);
  Vell::IO::Log().WriteMessage(Messages::kLines.hospitalCount, dataSet.hospitalCount);
  CorrectPresentOnAdmission(dataSet);
  IndexHospitals(dataSet);
  CountNonMissing(dataSet);
}

}  // namespace Hovar
