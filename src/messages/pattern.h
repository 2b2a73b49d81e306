#pragma once

// A message as docs/messages.md shows it, with its changing parts in angle brackets. Messages are
// members of tables: structs that hold nothing but patterns. So a test can list all messages of a
// table and compare them with the document; none can be left out.
//
// This layer is below all others: the layer that prints a line and the one that recognises it later
// use the same pattern, whatever lies between them.

#include <array>
#include <cstddef>
#include <string_view>

namespace Messages {

/// A text such as "Hospital: <ID> record: <record> / <records>". Each "<" in it begins a
/// placeholder, which the next ">" ends.
class Pattern {
 public:
  /// `text` must outlive the pattern, as a literal does. Null is no text.
  constexpr explicit Pattern(const char* text) noexcept : text_(text) {}

  /// The text with its placeholders as they are written.
  constexpr std::string_view Text() const noexcept { return text_ != nullptr ? text_ : ""; }

  constexpr std::size_t PlaceholderCount() const noexcept {
    std::size_t count = 0;
    for (const char c : Text()) {
      count += c == '<' ? 1 : 0;
    }
    return count;
  }

  /// The text between two placeholders: piece 0 stands before the first one, the last piece, whose
  /// index is the number of placeholders, behind the last one.
  constexpr std::string_view Piece(std::size_t index) const noexcept {
    std::string_view rest = Text();
    for (; index > 0; --index) {
      rest.remove_prefix(rest.find('>', rest.find('<')) + 1);
    }
    return rest.substr(0, rest.find('<'));
  }

  /// True when a text is the pattern's; meant for patterns without placeholders.
  constexpr bool operator==(std::string_view text) const noexcept { return Text() == text; }

 private:
  const char* text_;
};

/// Called, and so reported by the compiler, where the parts of a message are not as many as the
/// placeholders of its pattern. It has no definition.
void PartsDoNotMatchThePlaceholders();

/// A pattern at a call that fills it: made from a constant, when the call is compiled, and only if
/// the pattern has so many placeholders.
template <std::size_t kParts>
class PatternWithParts {
 public:
  // Not explicit: it takes the place of the pattern in the parameters of a function.
  consteval PatternWithParts(const Pattern& pattern) {
    if (pattern.PlaceholderCount() != kParts) {
      PartsDoNotMatchThePlaceholders();
    }
    for (std::size_t i = 0; i <= kParts; ++i) {
      pieces_[i] = pattern.Piece(i);
    }
  }

  constexpr std::string_view Piece(std::size_t index) const noexcept { return pieces_[index]; }

  /// Hands the pieces and, between them, the parts to `take`, one by one.
  template <typename Take, typename... Parts>
  void Fill(Take take, const Parts&... parts) const {
    static_assert(sizeof...(Parts) == kParts);
    std::size_t index = 0;
    take(pieces_[0]);
    ((take(parts), take(pieces_[++index])), ...);
  }

 private:
  std::array<std::string_view, kParts + 1> pieces_;
};

}  // namespace Messages
