#pragma once

// The tables of tests/reference/damage.py: how a run must end when one file is damaged.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Testing {

/// `content` cut at an offset (change "cut"), or with the byte there replaced; or with a line,
/// whose number from 0 is the offset, dropped, repeated, swapped with the next one, or alone with
/// the first one.
std::string Damaged(const std::string& content, std::string_view change, std::size_t offset);

/// True for a change of whole lines.
bool IsLineChange(std::string_view change);

/// The number of damages of this kind: bytes or lines.
std::size_t DamageCount(const std::string& content, std::string_view change);

/// How a run must end.
class DamageEnd {
 public:
  /// `text` as it stands in a table. The lines of the XML reader name the definition `file` and
  /// show a part of its `content`, which is damaged then.
  DamageEnd(std::string_view text, const std::string& file, std::string_view content);

  /// True when the input is valid still.
  bool IsValid() const { return isValid_; }
  /// True when the run may end without an error.
  bool MayEndWell() const { return isValid_ || isNumeric_; }
  /// True when it may end with this error line.
  bool MayEndWith(std::string_view line) const;

 private:
  bool isValid_ = false;
  bool isNumeric_ = false;
  std::vector<std::string> lines_;
};

/// The offsets (or lines) up to `last` that no range before has, and their end.
struct DamageRange {
  std::size_t last;
  std::string end;
};

struct DamageTable {
  std::string definition;
  std::string file;
  std::string change;
  std::vector<DamageRange> ranges;
};

std::vector<DamageTable> ReadDamageTables();

struct DamageCase {
  std::string file;
  std::string change;
  std::size_t offset;
  std::string end;
};

/// The sample for the files of the quick start.
std::vector<DamageCase> ReadQuickstartDamage();

}  // namespace Testing
