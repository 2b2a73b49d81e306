#include "app/launcher/check/findings.h"

#include <algorithm>

namespace Hovar {
namespace {

std::string Printable(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n' || c == '\r' || c == '\t') {
      result += c == '\n' ? "\\n" : c == '\r' ? "\\r" : "\\t";
    } else if (byte < 0x20 || byte == 0x7F) {
      result += "\\x";
      result += kDigits[byte >> 4];
      result += kDigits[byte & 15];
    } else {
      result += c;
    }
  }
  return result;
}

bool IsSame(const Finding& a, const Finding& b) {
  return a.severity == b.severity && a.file == b.file && a.place.line == b.place.line &&
         a.place.column == b.place.column && a.text == b.text;
}

bool IsEarlier(const Place& a, const Place& b) noexcept {
  return a.line != b.line ? a.line < b.line : a.column < b.column;
}

}  // namespace

void Findings::Add(Finding finding) {
  const auto isSame = [&finding](const Finding& other) { return IsSame(finding, other); };
  if (std::any_of(findings_.begin(), findings_.end(), isSame)) {
    return;
  }
  if (std::find(files_.begin(), files_.end(), finding.file) == files_.end()) {
    files_.push_back(finding.file);
  }
  ++(finding.severity == Severity::kError ? errors_ : warnings_);
  findings_.push_back(std::move(finding));
}

void Findings::AddError(std::string_view file, Place place, std::string text) {
  Add({Severity::kError, std::string(file), place, std::move(text)});
}

void Findings::AddWarning(std::string_view file, Place place, std::string text) {
  Add({Severity::kWarning, std::string(file), place, std::move(text)});
}

std::string Findings::Lines() const {
  std::string lines;
  for (const std::string& file : files_) {
    std::vector<const Finding*> ofFile;
    for (const Finding& finding : findings_) {
      if (finding.file == file) {
        ofFile.push_back(&finding);
      }
    }
    std::stable_sort(ofFile.begin(), ofFile.end(), [](const Finding* a, const Finding* b) {
      return IsEarlier(a->place, b->place);
    });
    for (const Finding* finding : ofFile) {
      lines += Printable(file) + ':' + std::to_string(finding->place.line) + ':' +
               std::to_string(finding->place.column) +
               (finding->severity == Severity::kError ? ": error: " : ": warning: ") +
               Printable(finding->text) + '\n';
    }
  }
  return lines;
}

std::string Findings::Summary() const {
  return Counted(errors_, "error") + ", " + Counted(warnings_, "warning") + '\n';
}

std::string Quoted(std::string_view text) {
  constexpr std::size_t kLongest = 60;
  const bool isCut = text.size() > kLongest;
  return '"' + Printable(text.substr(0, kLongest)) + (isCut ? "...\"" : "\"");
}

std::string Counted(std::int64_t count, std::string_view noun) {
  return std::to_string(count) + ' ' + std::string(noun) + (count == 1 ? "" : "s");
}

}  // namespace Hovar
