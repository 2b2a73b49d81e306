#include "app/launcher/definition_text.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "foundation/io/number_text.h"
#include "foundation/string.h"

namespace Hovar {
namespace {

struct Tag {
  std::string_view name;  // with the '/' of an end tag, the '?' of a declaration
  std::string type;
  bool isEmpty = false;
};

/// Walks the tags of a text from front to back.
class TagScanner {
 public:
  explicit TagScanner(std::string_view text) : text_(text) {}

  /// The next tag behind white space and comments; nothing when none stands there.
  std::optional<Tag> Next() {
    SkipComments();
    if (next_ >= text_.size() || text_[next_] != '<') {
      return std::nullopt;
    }
    const std::size_t start = ++next_;
    next_ = std::min(text_.find_first_of(" \t\r\n>", next_), text_.size());
    Tag tag{text_.substr(start, next_ - start), {}, false};
    return ReadAttributes(tag) ? std::optional<Tag>(std::move(tag)) : std::nullopt;
  }

  /// The text up to the next '<', which is next then.
  std::string_view TakeText() {
    const std::size_t start = next_;
    next_ = std::min(text_.find('<', next_), text_.size());
    return text_.substr(start, next_ - start);
  }

  std::size_t Offset() const noexcept { return next_; }

 private:
  void SkipBlanks() {
    next_ = std::min(text_.find_first_not_of(Vell::kWhitespace, next_), text_.size());
  }

  void SkipComments() {
    constexpr std::string_view kBegin = "<!--";
    constexpr std::string_view kEnd = "-->";
    for (SkipBlanks(); text_.substr(next_).starts_with(kBegin); SkipBlanks()) {
      const std::size_t end = text_.find(kEnd, next_ + kBegin.size());
      next_ = end == std::string_view::npos ? text_.size() : end + kEnd.size();
    }
  }

  /// Reads name="value" pairs up to the end of the tag; false when it has none.
  bool ReadAttributes(Tag& tag) {
    for (SkipBlanks(); next_ < text_.size() && text_[next_] != '>'; SkipBlanks()) {
      if (text_[next_] == '/' || text_[next_] == '?') {
        tag.isEmpty = tag.isEmpty || text_[next_] == '/';
        ++next_;
        continue;
      }
      const std::size_t equals = text_.find('=', next_);
      const std::size_t open = text_.find('"', next_);
      if (equals == std::string_view::npos || open == std::string_view::npos) {
        return false;
      }
      const std::size_t close = text_.find('"', open + 1);
      if (close == std::string_view::npos) {
        return false;
      }
      if (Trimmed(text_.substr(next_, equals - next_)) == "xsi:type") {
        tag.type = text_.substr(open + 1, close - open - 1);
      }
      next_ = close + 1;
    }
    return next_ < text_.size() && text_[next_++] == '>';
  }

  static std::string_view Trimmed(std::string_view text) {
    const std::size_t last = text.find_last_not_of(Vell::kWhitespace);
    return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
  }

  std::string_view text_;
  std::size_t next_ = 0;
};

std::string PathOf(const std::vector<std::string>& open) {
  std::string path;
  for (std::size_t level = 1; level < open.size(); ++level) {
    path += (level > 1 ? "/" : "") + open[level];
  }
  return path;
}

}  // namespace

DefinitionText::DefinitionText(std::string bytes) : bytes_(std::move(bytes)) {
  TagScanner scanner(bytes_);
  std::vector<std::string> open;
  while (!isComplete_) {
    const std::optional<Tag> tag = scanner.Next();
    if (!tag) {
      return;
    }
    if (tag->name.starts_with('?')) {
      continue;
    }
    if (tag->name.starts_with('/')) {
      if (open.empty() || tag->name.substr(1) != open.back()) {
        return;
      }
      open.pop_back();
      isComplete_ = open.empty();
      continue;
    }
    if (open.empty()) {
      root_ = tag->name;
    }
    open.emplace_back(tag->name);
    const std::size_t offset = scanner.Offset();
    const std::string_view value = tag->isEmpty ? std::string_view() : scanner.TakeText();
    if (open.size() > 1) {
      elements_.push_back({PathOf(open), std::string(value), offset, tag->type});
    }
    if (tag->isEmpty) {
      open.pop_back();
    }
  }
}

const DefinitionElement* DefinitionText::Find(std::string_view path) const noexcept {
  for (const DefinitionElement& element : elements_) {
    if (element.path == path) {
      return &element;
    }
  }
  return nullptr;
}

std::string DefinitionText::Value(std::string_view path) const {
  const DefinitionElement* const element = Find(path);
  return element != nullptr ? element->value : std::string();
}

std::int32_t DefinitionText::Integer(std::string_view path) const {
  const std::string text = Value(path);
  const std::string_view number = LeadingInteger(text);
  return number.empty() ? 0 : Vell::IO::ParseInteger(number);
}

std::string_view LeadingInteger(std::string_view text) noexcept {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n\v\f"), text.size()));
  const std::size_t sign = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
  const std::size_t end = std::min(text.find_first_not_of("0123456789", sign), text.size());
  return end > sign ? text.substr(0, end) : std::string_view();
}

std::string WithValues(const DefinitionText& definition,
                       const std::vector<Replacement>& replacements) {
  const std::string& bytes = definition.Bytes();
  std::string text;
  std::size_t next = 0;
  for (const Replacement& replacement : replacements) {
    text.append(bytes, next, replacement.element->offset - next);
    text.append(replacement.value);
    next = replacement.element->offset + replacement.element->value.size();
  }
  return text.append(bytes, next);
}

}  // namespace Hovar
