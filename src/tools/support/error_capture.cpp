#include "tools/support/error_capture.h"

#include <new>

#include "messages/error_texts.h"

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
  if (text.starts_with(Messages::kErrorPrefix)) {
    text.remove_prefix(Messages::kErrorPrefix.size());
  }
  if (text.ends_with('\n')) {
    text.remove_suffix(1);
  }
  return std::string(text);
}

std::optional<Mismatch> MismatchIn(std::string_view errorText, std::string_view file) {
  constexpr const Messages::Pattern& kMismatch = Messages::kErrors.mismatch;
  constexpr std::string_view kMiddle = kMismatch.Piece(2);
  std::string start(kMismatch.Piece(0));
  start.append(file).append(kMismatch.Piece(1));
  const std::size_t middle = errorText.find(kMiddle, start.size());
  if (!errorText.starts_with(start) || middle == std::string_view::npos) {
    return std::nullopt;
  }
  const std::size_t current = middle + kMiddle.size();
  const std::size_t end = errorText.size() - kMismatch.Piece(3).size();
  return Mismatch{std::string(errorText.substr(start.size(), middle - start.size())),
                  std::string(errorText.substr(current, end - current))};
}

}  // namespace Hovar
