#include "tools/support/error_capture.h"

#include <new>

namespace Hovar {

using Vell::MakeShared;
using Vell::IO::TextSink;

void ErrorLineSink::Write(const void* buffer, std::size_t count) {
  try {
    lines_.append(static_cast<const char*>(buffer), count);
  } catch (const std::bad_alloc&) {
    isLost_ = true;
  }
}

const std::string& ErrorLineSink::Lines() const {
  if (isLost_) {
    throw std::bad_alloc();
  }
  return lines_;
}

CapturedWriters::CapturedWriters()
    : errorSink_(MakeShared<ErrorLineSink>()),
      output_(MakeShared<TextSink>(TextSink::Use::kDrop)),
      error_(errorSink_),
      redirection_(output_, error_) {}

std::string CapturedWriters::ErrorText() const {
  std::string_view text = errorSink_->Lines();
  constexpr std::string_view kPrefix = "Error: ";
  if (text.starts_with(kPrefix)) {
    text.remove_prefix(kPrefix.size());
  }
  if (text.ends_with('\n')) {
    text.remove_suffix(1);
  }
  return std::string(text);
}

std::optional<Mismatch> MismatchIn(std::string_view errorText, std::string_view file) {
  constexpr std::string_view kMiddle = "\", current \"";
  const std::string start = "Invalid input in file \"" + std::string(file) + "\": expected \"";
  const std::size_t middle = errorText.find(kMiddle, start.size());
  if (!errorText.starts_with(start) || middle == std::string_view::npos) {
    return std::nullopt;
  }
  const std::size_t current = middle + kMiddle.size();
  return Mismatch{std::string(errorText.substr(start.size(), middle - start.size())),
                  std::string(errorText.substr(current, errorText.size() - current - 1))};
}

}  // namespace Hovar
