#include "data_file.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace Hovar::Simulate {
namespace {

// Bytes collected before the stream is called.
constexpr std::size_t kBlockSize = 65536;

constexpr int kKeyDigits = 7;
constexpr int kHospitalDigits = 4;

// Bounds the bytes of key, hospital ID, Y, their commas and the line end.
constexpr std::size_t kFixedLineSize = 64;

// Writes a positive number with at least `digits` digits; returns the place after it.
char* WritePadded(char* out, std::int32_t number, int digits) {
  char text[16];
  const char* const end = std::to_chars(text, text + sizeof text, number).ptr;
  const std::size_t length = static_cast<std::size_t>(end - text);
  for (std::size_t i = length; i < static_cast<std::size_t>(digits); ++i) {
    *out++ = '0';
  }
  std::memcpy(out, text, length);
  return out + length;
}

char* WriteCell(char* out, std::uint8_t value) {
  *out++ = ',';
  *out++ = static_cast<char>('0' + value);
  return out;
}

char* WriteCell(char* out, std::uint8_t value, bool hidden) {
  *out++ = ',';
  *out = static_cast<char>('0' + value);
  return hidden ? out : out + 1;
}

}  // namespace

DataFileWriter::DataFileWriter(std::ostream& stream, const StudyModel& model,
                               const Options& options)
    : stream_(stream),
      model_(model),
      indicatorCount_(static_cast<std::size_t>(options.indicators)),
      block_(kBlockSize + kFixedLineSize + 2 * (indicatorCount_ + 2 * model.variables.size())) {}

void DataFileWriter::WriteHeader() {
  std::string header = "Key,HospitalID,Y";
  for (std::size_t k = 1; k <= indicatorCount_; ++k) {
    header += ",POA" + std::to_string(k);
  }
  for (const std::string_view prefix : {",Z", ",X"}) {
    for (const Variable& variable : model_.variables) {
      header.append(prefix).append(variable.name);
    }
  }
  header += '\n';
  WriteBlock();
  stream_.write(header.data(), static_cast<std::streamsize>(header.size()));
}

bool DataFileWriter::Write(const Record& record) {
  char* out = block_.data() + used_;
  *out++ = 'R';
  out = WritePadded(out, record.index + 1, kKeyDigits);
  *out++ = ',';
  *out++ = 'H';
  out = WritePadded(out, record.hospital + 1, kHospitalDigits);
  out = WriteCell(out, record.outcome ? 1 : 0);
  for (std::size_t k = 0; k < record.indicators.size(); ++k) {
    out =
        WriteCell(out, record.indicators[k], record.indicatorHidden && k == record.hiddenIndicator);
  }
  for (const std::uint8_t z : record.z) {
    out = WriteCell(out, z);
  }
  for (std::size_t j = 0; j < record.x.size(); ++j) {
    out = WriteCell(out, record.x[j], record.xHidden[j] != 0);
  }
  *out++ = '\n';
  used_ = static_cast<std::size_t>(out - block_.data());
  if (used_ >= kBlockSize) {
    WriteBlock();
  }
  return stream_.good();
}

bool DataFileWriter::Finish() {
  WriteBlock();
  stream_.flush();
  return stream_.good();
}

void DataFileWriter::WriteBlock() {
  stream_.write(block_.data(), static_cast<std::streamsize>(used_));
  used_ = 0;
}

bool WriteDataFile(std::ostream& stream, const Options& options) {
  const StudyModel model = DrawStudyModel(options);
  RecordSampler sampler(model, options);
  DataFileWriter writer(stream, model, options);
  writer.WriteHeader();
  Record record;
  while (sampler.Next(record)) {
    if (!writer.Write(record)) {
      return false;
    }
  }
  return writer.Finish();
}

}  // namespace Hovar::Simulate
