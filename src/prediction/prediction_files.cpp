#include "prediction/prediction_files.h"

#include <optional>

#include "foundation/io/csv_reader.h"
#include "foundation/io/csv_writer.h"
#include "foundation/io/file_stream.h"
#include "foundation/io/text_writer.h"

namespace Hovar {
namespace {

using Vell::IO::FileStream;
using Vell::IO::ReadRealField;
using Vell::IO::SkipFields;
using Vell::IO::TextWriter;
using Vell::IO::WriteField;

void WritePredictionNames(TextWriter& writer) {
  for (const std::string_view name : kPredictionNames) {
    writer.Write(',');
    WriteField(writer, name);
  }
  writer.EndLine();
}

void WriteCell(TextWriter& writer, std::int32_t value) {
  writer.Write(',');
  writer.Write(value);
}

/// Prints the cells of a record one after the other to a place with enough room.
class RecordPrinter {
 public:
  /// Room for the cells of one record with their commas.
  static constexpr std::size_t kRoom = kPredictionNames.size() * (Vell::IO::kRealRoom + 1);

  explicit RecordPrinter(char* place) : end_(place) {}

  void PrintEmpty() noexcept { *end_++ = ','; }
  void Print(bool value) noexcept {
    PrintEmpty();
    *end_++ = value ? '1' : '0';
  }
  void Print(double value) noexcept {
    PrintEmpty();
    end_ = Vell::IO::WriteReal(end_, value);
  }
  char* End() const noexcept { return end_; }

 private:
  char* end_;
};

/// Prints the cells after key and hospital and returns their end.
char* PrintRecord(char* place, const IndividualPredictions& predictions, const DataSet& dataSet,
                  std::int32_t record) {
  RecordPrinter printer(place);
  const bool y = dataSet.y.Get(record);
  printer.Print(y);
  printer.Print(predictions.yGivenZ[record]);
  printer.Print(predictions.yGivenX[record]);
  printer.Print((y ? 1.0 : 0.0) * (1.0 - predictions.pGivenAll[record]));
  printer.Print(predictions.yGivenXWithoutP[record]);
  printer.Print(predictions.yGivenXWithoutPMcmc[record]);
  if (dataSet.p.IsMissing(record)) {
    printer.PrintEmpty();
  } else {
    printer.Print(dataSet.p.Value(record));
  }
  printer.Print(predictions.pGivenX[record]);
  printer.Print(predictions.pGivenAll[record]);
  return printer.End();
}

/// The keys of the records, one after the other: those that the data set has kept, or the data
/// file's.
class KeySource {
 public:
  KeySource(const DataSet& dataSet, const Vell::String& dataFilePath)
      : kept_(dataSet.keys.begin(), static_cast<std::size_t>(dataSet.keys.Size())) {
    if (kept_.empty()) {
      file_.emplace(dataFilePath, Vell::IO::Mode::kReadText);
      Vell::IO::SkipRecord(*file_);  // the header
    }
  }

  void WriteNext(TextWriter& writer) {
    if (!file_.has_value()) {
      const std::size_t length = kept_.find('\n');
      writer.Write(kept_.substr(0, length));
      kept_.remove_prefix(length + 1);
      return;
    }
    Vell::IO::ReadField(key_, *file_);
    Vell::IO::SkipRecord(*file_);
    WriteField(writer, key_);
  }

 private:
  std::string_view kept_;
  std::optional<FileStream> file_;
  Vell::String key_;
};

}  // namespace

void WriteIndividualPredictions(const IndividualPredictions& predictions, const DataSet& dataSet,
                                const Vell::String& dataFilePath, TextWriter& writer) {
  KeySource keys(dataSet, dataFilePath);
  writer.Write("Key,Hospital ID");
  WritePredictionNames(writer);
  for (std::int32_t h = 0; h < dataSet.hospitalCount; ++h) {
    for (std::int32_t i = dataSet.hospitalStart[h]; i < dataSet.hospitalStart[h + 1]; ++i) {
      keys.WriteNext(writer);
      writer.Write(',');
      WriteField(writer, dataSet.hospitalIds[h]);
      writer.WritePrinted<RecordPrinter::kRoom>(
          [&](char* place) { return PrintRecord(place, predictions, dataSet, i); });
      writer.EndLine();
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
