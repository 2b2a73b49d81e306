#pragma once

// JSON (RFC 8259) as text.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Hovar {

/// A text as a JSON string, with its quotes. Control characters are escaped, and so is '<', so that
/// the text can be part of a page. Bytes that are not UTF-8 become U+FFFD, one each.
std::string JsonString(std::string_view text);

/// Builds indented JSON. Members and elements come between Begin and End of their object or array;
/// the name of an element of an array is empty.
class JsonWriter {
 public:
  void BeginObject(std::string_view name = {}) { Begin(name, '{'); }
  void EndObject() { End('}'); }
  void BeginArray(std::string_view name = {}) { Begin(name, '['); }
  void EndArray() { End(']'); }

  void Text(std::string_view name, std::string_view value);
  void Number(std::string_view name, std::int64_t value);
  void Boolean(std::string_view name, bool value);
  void Null(std::string_view name);
  /// A list of numbers on one line.
  void Numbers(std::string_view name, const std::vector<std::int64_t>& values);
  /// A text that may hold any bytes, such as a path: when it is not UTF-8, a member NAMEBase64 with
  /// its exact bytes follows.
  void Bytes(std::string_view name, std::string_view value);

  /// What was built, with a line feed at its end.
  std::string Finish() const { return text_ + "\n"; }

 private:
  void Begin(std::string_view name, char bracket);
  void End(char bracket);
  void BeginMember(std::string_view name);

  std::string text_;
  std::size_t depth_ = 0;
  bool isFirst_ = true;
};

}  // namespace Hovar
