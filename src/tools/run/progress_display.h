#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Hovar {

/// A line of progress and the share of the work, from 0 to 1, that it reports.
struct ProgressItem {
  std::string name;  // identifies the line; not shown
  std::string text;
  double share = 0;
};

/// Shows lines of progress on standard error. On a terminal they are at the bottom and change in
/// place; anywhere else a line is written now and then: for each tenth of the work, and when half a
/// minute has passed.
class ProgressDisplay {
 public:
  ProgressDisplay();

  /// Columns that a line may have.
  int Columns() const noexcept { return columns_; }
  /// Shows the lines in place of those before.
  void Show(const std::vector<ProgressItem>& items, double now);
  /// Writes a line that stays, above the changing ones.
  void Print(std::string_view line);
  /// Removes the changing lines.
  void Clear();

 private:
  struct Reported {
    double share = 0;
    double time = 0;
  };

  std::string ErasedLines();

  bool changesInPlace_;
  int columns_;
  std::size_t shown_ = 0;
  std::map<std::string, Reported, std::less<>> reported_;
};

}  // namespace Hovar
