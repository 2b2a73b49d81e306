#include "faults/damage_tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <utility>

#include "support/files.h"

namespace Testing {
namespace {

/// What a run on valid input that is no longer a full study may end with: fewer records can leave a
/// variable without a table, or columns that depend on each other.
constexpr std::array<std::string_view, 5> kNumericLines = {
    "Cannot compute XZ table", "Error in eliminating dependent columns", "Invalid argument",
    "Non positive matrix in Cholesky decomposition", "Rank is not maximal"};

constexpr std::array<std::pair<std::string_view, char>, 6> kReplacements = {
    {{"nul", '\0'}, {"quote", '"'}, {"comma", ','}, {"feed", '\n'}, {"less", '<'}, {"ff", '\xff'}}};

/// Takes the text up to `separator` off the front.
std::string_view Take(std::string_view& text, char separator) {
  const std::size_t end = std::min(text.find(separator), text.size());
  const std::string_view part = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return part;
}

std::size_t TakeNumber(std::string_view& text, char separator) {
  const std::string_view digits = Take(text, separator);
  std::size_t number = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  EXPECT_EQ(read.ptr, digits.data() + digits.size()) << digits;
  return number;
}

std::string Unescaped(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    if (text.starts_with("\\x")) {
      int value = 0;
      std::from_chars(text.data() + 2, text.data() + 4, value, 16);
      bytes += static_cast<char>(value);
      text.remove_prefix(4);
    } else {
      bytes += text[0];
      text.remove_prefix(1);
    }
  }
  return bytes;
}

constexpr std::string_view kExpected = "expected \"";

/// The line that `expected "X" at N` stands for.
std::string MatchLine(std::string_view text, const std::string& file, std::string_view content) {
  constexpr std::string_view kAt = "\" at ";
  text.remove_prefix(kExpected.size());
  const std::string_view expected = text.substr(0, text.rfind(kAt));
  text.remove_prefix(expected.size() + kAt.size());
  const std::size_t begin = std::min(TakeNumber(text, '\n'), content.size());
  const std::string_view current = content.substr(begin, expected.size());
  return "Invalid input in file \"" + file + "\": expected \"" + std::string(expected) +
         "\", current \"" + std::string(current) + "\"";
}

constexpr std::array<std::string_view, 4> kLineChanges = {"drop", "repeat", "swap", "alone"};

/// `content` consists of whole lines.
std::string WithChangedLine(std::string_view content, std::string_view change, std::size_t line) {
  std::vector<std::string> lines;
  while (!content.empty()) {
    lines.push_back(std::string(Take(content, '\n')) + '\n');
  }
  const std::string changed = lines.at(line);
  const auto place = lines.begin() + static_cast<std::ptrdiff_t>(line);
  if (change == "drop") {
    lines.erase(place);
  } else if (change == "repeat") {
    lines.insert(place, changed);
  } else if (change == "swap") {
    std::swap(lines[line], lines[std::min(line + 1, lines.size() - 1)]);
  } else {
    lines.resize(1);
    if (line > 0) {
      lines.push_back(changed);
    }
  }
  std::string text;
  for (const std::string& each : lines) {
    text += each;
  }
  return text;
}

}  // namespace

bool IsLineChange(std::string_view change) {
  return std::find(kLineChanges.begin(), kLineChanges.end(), change) != kLineChanges.end();
}

std::size_t DamageCount(const std::string& content, std::string_view change) {
  return IsLineChange(change)
             ? static_cast<std::size_t>(std::count(content.begin(), content.end(), '\n'))
             : content.size();
}

std::string Damaged(const std::string& content, std::string_view change, std::size_t offset) {
  if (IsLineChange(change)) {
    return WithChangedLine(content, change, offset);
  }
  if (change == "cut") {
    return content.substr(0, offset);
  }
  std::string damaged = content;
  const auto* const replacement =
      std::find_if(kReplacements.begin(), kReplacements.end(),
                   [change](const auto& entry) { return entry.first == change; });
  if (replacement == kReplacements.end()) {
    ADD_FAILURE() << "no such change: " << change;
    return damaged;
  }
  damaged.at(offset) = replacement->second;
  return damaged;
}

DamageEnd::DamageEnd(std::string_view text, const std::string& file, std::string_view content) {
  while (!text.empty()) {
    const std::string line = Unescaped(Take(text, '|'));
    if (line == "ok") {
      isValid_ = true;
    } else if (line == "numeric") {
      isNumeric_ = true;
    } else {
      lines_.push_back(line.starts_with(kExpected) ? MatchLine(line, file, content) : line);
    }
  }
}

bool DamageEnd::MayEndWith(std::string_view line) const {
  return std::find(lines_.begin(), lines_.end(), line) != lines_.end() ||
         (isNumeric_ &&
          std::find(kNumericLines.begin(), kNumericLines.end(), line) != kNumericLines.end());
}

std::vector<DamageTable> ReadDamageTables() {
  std::vector<DamageTable> tables;
  std::ifstream file(ReferenceFile("damage/ends.csv"), std::ios::binary);
  for (std::string line; std::getline(file, line);) {
    std::string_view rest = line;
    if (rest.starts_with("> ")) {
      rest.remove_prefix(2);
      DamageTable& table = tables.emplace_back();
      table.definition = Take(rest, ',');
      table.file = Take(rest, ',');
      table.change = rest;
    } else {
      DamageRange& range = tables.back().ranges.emplace_back();
      range.last = TakeNumber(rest, ',');
      range.end = rest;
    }
  }
  return tables;
}

std::vector<DamageCase> ReadQuickstartDamage() {
  std::vector<DamageCase> cases;
  std::ifstream file(ReferenceFile("damage/quickstart.csv"), std::ios::binary);
  for (std::string line; std::getline(file, line);) {
    std::string_view rest = line;
    DamageCase& damage = cases.emplace_back();
    damage.file = Take(rest, ',');
    damage.change = Take(rest, ',');
    damage.offset = TakeNumber(rest, ',');
    damage.end = rest;
  }
  return cases;
}

}  // namespace Testing
