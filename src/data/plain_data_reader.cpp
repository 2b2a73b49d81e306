#include "data/plain_data_reader.h"

#include <algorithm>
#include <string_view>

#include "foundation/io/csv_rules.h"
#include "linalg/kernels/plain_cells.h"

namespace Hovar {
namespace {

using Vell::IO::TakePlainField;

/// The whole lines at the front of the window, which widens for that; nothing when the stream ends
/// before a line does.
std::string_view WholeLines(Vell::IO::Stream& stream) {
  do {
    const std::string_view window = stream.Window();
    if (const std::size_t last = window.rfind('\n'); last != std::string_view::npos) {
      return window.substr(0, last + 1);
    }
  } while (stream.WidenWindow());
  return {};
}

/// The number of variables, the intercept included, of a file with this header line, or 0 if it is
/// not plain or does not suit the number of indicators.
std::int32_t CountVariables(std::string_view header, std::int32_t poaCount) noexcept {
  std::int64_t fields = 1;
  std::string_view name;
  while (TakePlainField(header, name)) {
    ++fields;
  }
  // The last name ends the line.
  const bool isPlain = !Vell::IO::NeedsRules(header);
  const std::int64_t covariateFields = fields - kFieldsBeforeIndicators - poaCount;
  const bool isShaped = poaCount >= 0 && covariateFields >= 2 && covariateFields % 2 == 0;
  return isPlain && isShaped ? static_cast<std::int32_t>(covariateFields / 2 + 1) : 0;
}

/// Reads the records of a plain file, of which it does not know the number until the end.
class PlainRecords {
 public:
  /// Makes room for about as many records as the rest of the file holds.
  PlainRecords(DataSet& dataSet, std::int32_t poaCount, KeyUse keyUse, std::int64_t expectedRecords)
      : dataSet_(dataSet),
        poaCount_(poaCount),
        keyUse_(keyUse),
        mostRecords_(INT32_MAX / dataSet.variableCount),
        zWriter_({}),
        xWriter_({}) {
    dataSet_.z = Vell::BitMatrix(0, dataSet.variableCount);
    dataSet_.x = Vell::TernaryMatrix(0, dataSet.variableCount);
    zWriter_ = Vell::PackedWriter(dataSet_.z.Bytes());
    xWriter_ = Vell::PackedWriter(dataSet_.x.Bytes());
    ChangeRecordCount(
        static_cast<std::int32_t>(std::clamp<std::int64_t>(expectedRecords, 1, mostRecords_)));
  }

  /// Takes whole lines; false when one of them is not plain or there are too many.
  bool Take(std::string_view lines) {
    while (!lines.empty()) {
      if (record_ == dataSet_.recordCount) {
        if (record_ > mostRecords_ / 2) {
          return false;
        }
        ChangeRecordCount(2 * record_);
      }
      if (!TakeRecord(lines)) {
        return false;
      }
      ++record_;
    }
    return true;
  }

  void Finish() {
    zWriter_.Finish();
    xWriter_.Finish();
    ChangeRecordCount(record_);
  }

 private:
  void ChangeRecordCount(std::int32_t count) {
    dataSet_.y.ChangeSize(count);
    dataSet_.p.ChangeSize(count);
    dataSet_.z.ChangeRowCount(count);
    dataSet_.x.ChangeRowCount(count);
    zWriter_.MoveTo(dataSet_.z.Bytes());
    xWriter_.MoveTo(dataSet_.x.Bytes());
    dataSet_.recordCount = count;
  }

  bool TakeRecord(std::string_view& text) {
    std::string_view key;
    std::string_view id;
    return TakePlainField(text, key) && TakePlainField(text, id) && TakeKey(key) &&
           TakeHospital(id) && TakeOutcome(text) && TakePresentOnAdmission(text) &&
           TakeCovariates(text);
  }

  bool TakeKey(std::string_view key) {
    if (keyUse_ == KeyUse::kKeep) {
      const std::size_t size = key.size() + 1;
      if (size > static_cast<std::size_t>(INT32_MAX - dataSet_.keys.Size())) {
        keyUse_ = KeyUse::kDrop;  // more than an array holds; the file still has them
        dataSet_.keys.Clear();
        return true;
      }
      char* const to = dataSet_.keys.AppendUninitialised(static_cast<std::int32_t>(size));
      *std::copy(key.begin(), key.end(), to) = '\n';
    }
    return true;
  }

  bool TakeHospital(std::string_view id) {
    if (hospitalCount_ == 0 || dataSet_.hospitalIds[hospitalCount_ - 1].View() != id) {
      dataSet_.hospitalIds.Append(Vell::String(id));
      dataSet_.hospitalStart.Append(record_);
      ++hospitalCount_;
    }
    return true;
  }

  bool TakeOutcome(std::string_view& text) noexcept {
    if (!IsDigitAndComma(text)) {
      return false;
    }
    dataSet_.y.Set(record_, text[0] == '1');
    text.remove_prefix(2);
    return true;
  }

  bool TakePresentOnAdmission(std::string_view& text) noexcept {
    bool value = false;
    bool isMissing = false;
    for (std::int32_t k = 0; k < poaCount_; ++k) {
      const bool isEmpty = text.starts_with(',');
      if (!isEmpty && !IsDigitAndComma(text)) {
        return false;
      }
      isMissing = isMissing || isEmpty;
      value = value || text[0] == '1';
      text.remove_prefix(isEmpty ? 1 : 2);
    }
    dataSet_.p.SetValue(record_, value);
    dataSet_.p.SetMissing(record_, isMissing);
    return true;
  }

  bool TakeCovariates(std::string_view& text) noexcept {
    zWriter_.Append(1, 1);  // the intercepts: set, never missing
    xWriter_.Append(1, 2);
    std::int32_t zCells = dataSet_.variableCount - 1;
    std::int32_t xCells = zCells - 1;  // the last one ends the line
    text = Vell::TakeBinaryCells(zWriter_, text, zCells);
    text = Vell::TakeTernaryCells(xWriter_, text, xCells);
    return zCells == 0 && xCells == 0 && TakeLastCell(text);
  }

  bool TakeLastCell(std::string_view& text) noexcept {
    const bool isDigit = text.starts_with('0') || text.starts_with('1');
    xWriter_.Append(!isDigit ? 2 : text[0] == '1' ? 1 : 0, 2);
    text.remove_prefix(isDigit ? 1 : 0);
    text.remove_prefix(text.starts_with("\r\n") ? 1 : 0);
    if (!text.starts_with('\n')) {
      return false;
    }
    text.remove_prefix(1);
    return true;
  }

  static bool IsDigitAndComma(std::string_view text) noexcept {
    return text.size() >= 2 && (text[0] == '0' || text[0] == '1') && text[1] == ',';
  }

  DataSet& dataSet_;
  std::int32_t poaCount_;
  KeyUse keyUse_;
  std::int32_t mostRecords_;  // a matrix has fewer than 2^31 cells
  std::int32_t record_ = 0;
  std::int32_t hospitalCount_ = 0;
  Vell::PackedWriter zWriter_;
  Vell::PackedWriter xWriter_;
};

}  // namespace

bool ReadPlainDataFile(DataSet& dataSet, Vell::IO::Stream& stream, std::int32_t poaCount,
                       KeyUse keyUse) {
  std::string_view lines = WholeLines(stream);
  const std::string_view header = lines.substr(0, lines.find('\n') + 1);
  dataSet.variableCount = CountVariables(header, poaCount);
  if (dataSet.variableCount == 0) {
    return false;
  }
  const std::size_t headerSize = header.size();
  lines.remove_prefix(headerSize);

  const std::int64_t lineCount = std::count(lines.begin(), lines.end(), '\n');
  const std::int64_t lineLength =
      static_cast<std::int64_t>(lines.size()) / std::max<std::int64_t>(lineCount, 1);
  // A hundredth more, because the lines of the rest are not all of the same length.
  const std::int64_t expected = stream.Length() / std::max<std::int64_t>(lineLength, 1);
  PlainRecords records(dataSet, poaCount, keyUse, expected + expected / 100);
  stream.TakeFromWindow(headerSize);
  for (;;) {
    lines = WholeLines(stream);
    if (lines.empty()) {
      break;
    }
    if (!records.Take(lines)) {
      return false;
    }
    stream.TakeFromWindow(lines.size());
    stream.WidenWindow();
  }
  if (!stream.Window().empty()) {
    return false;  // a line without its end
  }
  records.Finish();
  return true;
}

}  // namespace Hovar
