#include "app/launcher/silent_reading.h"

namespace Hovar {

using Vell::MakeShared;
using Vell::IO::TextSink;

SilentWriters::SilentWriters()
    : errorSink_(MakeShared<TextSink>(TextSink::Use::kKeep)),
      output_(MakeShared<TextSink>(TextSink::Use::kDrop)),
      error_(errorSink_),
      redirection_(output_, error_) {}

std::string SilentWriters::ErrorText() const {
  std::string_view text = errorSink_->Text();
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
