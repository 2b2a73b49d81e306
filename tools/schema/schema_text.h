#pragma once

#include <string>
#include <string_view>

namespace Hovar {

/// The text of a schema as it grows, an element to a line, indented by two blanks for each element
/// that it stands in.
class SchemaText {
 public:
  /// Begins an element; `attributes` as they stand in its tag.
  void Begin(std::string_view name, std::string_view attributes = {});
  /// Ends the element that was begun last and not ended.
  void End(std::string_view name);
  /// An element that holds nothing.
  void Empty(std::string_view name, std::string_view attributes);
  /// An annotation with a text, of which the lines have 100 characters at most.
  void Annotate(std::string_view text);
  /// An empty line, and a comment within one line.
  void Section(std::string_view comment);
  /// A line as it stands, or an empty one.
  void Line(std::string_view line);

  const std::string& Text() const noexcept { return text_; }

 private:
  std::string text_;
  std::size_t depth_ = 0;
};

}  // namespace Hovar
