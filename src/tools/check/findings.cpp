#include "tools/check/findings.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "tools/check/finding_messages.h"
#include "tools/support/message.h"

namespace Hovar {
namespace {

bool IsSame(const Finding& a, const Finding& b) {
  return a.severity == b.severity && a.file == b.file && a.place.line == b.place.line &&
         a.place.column == b.place.column && a.text == b.text;
}

/// Errors, then warnings by weight.
int RankOf(const Finding& finding) noexcept {
  return finding.severity == Severity::kError ? -1 : static_cast<int>(finding.weight);
}

std::string LineOf(const Finding& finding) {
  const Place& place = finding.place;
  const std::string file = Printable(finding.file);
  const std::string text = Printable(finding.text);
  return (finding.severity == Severity::kError
              ? Filled(kFindingLines.error, file, place.line, place.column, text)
              : Filled(kFindingLines.warning, file, place.line, place.column, text)) +
         '\n';
}

}  // namespace

void Findings::Add(Finding finding) {
  const auto isSame = [&finding](const Finding& other) { return IsSame(finding, other); };
  if (std::any_of(findings_.begin(), findings_.end(), isSame)) {
    return;
  }
  NoteFile(finding.file);
  ++(finding.severity == Severity::kError ? errors_ : warnings_);
  findings_.push_back(std::move(finding));
}

void Findings::NoteFile(std::string_view file) {
  if (std::find(files_.begin(), files_.end(), file) == files_.end()) {
    files_.emplace_back(file);
  }
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
  return Filled(kFindingLines.summary, Counted(errors_, "error"), Counted(warnings_, "warning")) +
         '\n';
}

}  // namespace Hovar
