#include "tools/run/progress_display.h"

#include "foundation/io/platform/processes.h"
#include "tools/support/sentence_parts.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

constexpr int kNoLimit = 1000;

void WriteError(std::string_view text) {
  Platform::WriteFile(Platform::kStandardError, text.data(), text.size());
}

}  // namespace

ProgressDisplay::ProgressDisplay()
    : changesInPlace_(Platform::StandardErrorTakesEscapes()),
      // The last column stays free: some terminals begin a new line when it is filled.
      columns_(changesInPlace_ ? Platform::TerminalColumns() - 1 : kNoLimit) {}

/// What moves to the first of the changing lines and erases them.
std::string ProgressDisplay::ErasedLines() {
  std::string text;
  if (shown_ > 0) {
    text = "\x1b[" + std::to_string(shown_) + "A\r\x1b[J";
    shown_ = 0;
  }
  return text;
}

void ProgressDisplay::Show(const std::vector<ProgressItem>& items, double now) {
  if (changesInPlace_) {
    std::string text = ErasedLines();
    for (const ProgressItem& item : items) {
      text += item.text + "\n";
    }
    shown_ = items.size();
    WriteError(text);
    return;
  }
  constexpr double kStep = 0.1;
  constexpr double kLongestSilence = 30;
  for (const ProgressItem& item : items) {
    const auto [place, isNew] = reported_.try_emplace(item.name, Reported{0, now});
    Reported& reported = place->second;
    const bool isEnd = item.share >= 1 && reported.share < 1;
    if (isEnd || item.share >= reported.share + kStep || now >= reported.time + kLongestSilence) {
      WriteError(item.text + "\n");
      reported = {item.share, now};
    }
  }
}

void ProgressDisplay::Print(std::string_view line) {
  WriteError(ErasedLines().append(Printable(line)).append("\n"));
}

void ProgressDisplay::Clear() { WriteError(ErasedLines()); }

}  // namespace Hovar
