#include "prediction/prediction_files.h"

#include "foundation/io/csv_reader.h"
#include "foundation/io/csv_writer.h"
#include "foundation/io/file_stream.h"
#include "foundation/io/text_writer.h"

namespace Hovar {
namespace {

using Vell::IO::FileStream;
using Vell::IO::ReadRealField;
using Vell::IO::TextWriter;
using Vell::IO::WriteField;

void WritePredictionNames(TextWriter& writer) {
  for (const std::string_view name : kPredictionNames) {
    writer.Write(',');
    WriteField(writer, name);
  }
  writer.EndLine();
}

void WriteCell(TextWriter& writer, double value) {
  writer.Write(',');
  writer.Write(value);
}

void WriteCell(TextWriter& writer, std::int32_t value) {
  writer.Write(',');
  writer.Write(value);
}

void WriteCell(TextWriter& writer, bool value) {
  writer.Write(',');
  writer.Write(value ? '1' : '0');
}

/// The cells behind key and hospital.
void WriteRecord(TextWriter& writer, const IndividualPredictions& predictions,
                 const DataSet& dataSet, std::int32_t record) {
  const bool y = dataSet.y.Get(record);
  WriteCell(writer, y);
  WriteCell(writer, predictions.yGivenZ[record]);
  WriteCell(writer, predictions.yGivenX[record]);
  WriteCell(writer, (y ? 1.0 : 0.0) * (1.0 - predictions.pGivenAll[record]));
  WriteCell(writer, predictions.yGivenXWithoutP[record]);
  WriteCell(writer, predictions.yGivenXWithoutPMcmc[record]);
  if (dataSet.p.IsMissing(record)) {
    writer.Write(',');
  } else {
    WriteCell(writer, dataSet.p.Value(record));
  }
  WriteCell(writer, predictions.pGivenX[record]);
  WriteCell(writer, predictions.pGivenAll[record]);
  writer.EndLine();
}

void SkipFields(Vell::IO::Stream& stream, int count) {
  for (int i = 0; i < count; ++i) {
    Vell::IO::SkipField(stream);
  }
}

}  // namespace

void WriteIndividualPredictions(const IndividualPredictions& predictions, const DataSet& dataSet,
                                const Vell::String& dataFilePath, TextWriter& writer) {
  FileStream data(dataFilePath, Vell::IO::Mode::kReadText);
  writer.Write("Key,Hospital ID");
  WritePredictionNames(writer);
  Vell::IO::SkipRecord(data);  // the header
  Vell::String key;
  for (std::int32_t h = 0; h < dataSet.hospitalCount; ++h) {
    for (std::int32_t i = dataSet.hospitalStart[h]; i < dataSet.hospitalStart[h + 1]; ++i) {
      Vell::IO::ReadField(key, data);
      Vell::IO::SkipRecord(data);
      WriteField(writer, key);
      writer.Write(',');
      WriteField(writer, dataSet.hospitalIds[h]);
      WriteRecord(writer, predictions, dataSet, i);
    }
  }
}

void ReadIndividualPredictions(IndividualPredictions& predictions, Vell::IO::Stream& stream) {
  const std::int32_t records = Vell::IO::MeasureCsv(stream).lineCount - 1;
  predictions.Resize(records);
  stream.Seek(0);
  Vell::IO::SkipLine(stream);
  for (std::int32_t i = 0; i < records; ++i) {
    SkipFields(stream, 3);  // key, hospital and Y
    predictions.yGivenZ[i] = ReadRealField(stream);
    predictions.yGivenX[i] = ReadRealField(stream);
    SkipFields(stream, 1);  // E[Y|P=0]
    predictions.yGivenXWithoutP[i] = ReadRealField(stream);
    predictions.yGivenXWithoutPMcmc[i] = ReadRealField(stream);
    SkipFields(stream, 1);  // P
    predictions.pGivenX[i] = ReadRealField(stream);
    predictions.pGivenAll[i] = ReadRealField(stream);
  }
}

void WriteHospitalPredictions(const HospitalPredictions& hospitalPredictions,
                              const DataSet& dataSet, TextWriter& writer) {
  // The file's order differs from the one in which the means are stored.
  constexpr std::array kFileOrder = {HospitalMeans::kY,
                                     HospitalMeans::kYGivenZ,
                                     HospitalMeans::kYGivenX,
                                     HospitalMeans::kYWithoutP,
                                     HospitalMeans::kYGivenXWithoutP,
                                     HospitalMeans::kYGivenXWithoutPMcmc,
                                     HospitalMeans::kP,
                                     HospitalMeans::kPGivenX,
                                     HospitalMeans::kPGivenAll};
  static_assert(kFileOrder.size() == kPredictionNames.size());
  writer.Write("Hospital ID,Nr. records,Nr. non missing records,Nr. non missing records P=0");
  WritePredictionNames(writer);
  for (std::int32_t h = 0; h < dataSet.hospitalCount; ++h) {
    WriteField(writer, dataSet.hospitalIds[h]);
    WriteCell(writer, dataSet.hospitalSize[h]);
    WriteCell(writer, dataSet.hospitalComplete[h]);
    WriteCell(writer, dataSet.hospitalCompleteP0[h]);
    for (const HospitalMeans::Column column : kFileOrder) {
      const HospitalMean& mean = hospitalPredictions[h].columns[column];
      writer.Write(',');
      if (mean.count > 0) {
        writer.Write(mean.mean);
      }
    }
    writer.EndLine();
  }
}

}  // namespace Hovar
