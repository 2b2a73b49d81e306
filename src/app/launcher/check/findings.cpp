#include "app/launcher/check/findings.h"

#include <algorithm>
#include <map>
#include <tuple>

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

/// Errors, then warnings by weight.
int RankOf(const Finding& finding) noexcept {
  return finding.severity == Severity::kError ? -1 : static_cast<int>(finding.weight);
}

std::string LineOf(const Finding& finding) {
  return Printable(finding.file) + ':' + std::to_string(finding.place.line) + ':' +
         std::to_string(finding.place.column) +
         (finding.severity == Severity::kError ? ": error: " : ": warning: ") +
         Printable(finding.text) + '\n';
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
  Add({Severity::kError, std::string(file), place, std::move(text), {}});
}

void Findings::AddWarning(std::string_view file, Place place, std::string text, Weight weight) {
  Add({Severity::kWarning, std::string(file), place, std::move(text), weight});
}

std::string Findings::Lines() const {
  std::map<std::string_view, std::size_t> fileNumbers;
  for (const std::string& file : files_) {
    fileNumbers.emplace(file, fileNumbers.size());
  }
  const auto keyOf = [&fileNumbers](const Finding& finding) {
    return std::tuple(RankOf(finding), fileNumbers.at(finding.file), finding.place.line,
                      finding.place.column);
  };
  std::vector<const Finding*> sorted;
  for (const Finding& finding : findings_) {
    sorted.push_back(&finding);
  }
  std::stable_sort(sorted.begin(), sorted.end(),
                   [&keyOf](const Finding* a, const Finding* b) { return keyOf(*a) < keyOf(*b); });
  std::string lines;
  for (const Finding* finding : sorted) {
    lines += LineOf(*finding);
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
