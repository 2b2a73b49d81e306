#include "tools/support/json_text.h"

#include <cstddef>

#include "tools/support/base64.h"
#include "tools/support/utf8.h"

namespace Hovar {
namespace {

std::string EscapeOf(char character) {
  switch (character) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      break;
  }
  const auto code = static_cast<unsigned char>(character);
  if (code >= 0x20 && code != 0x7F && character != '<') {
    return {};
  }
  constexpr std::string_view kDigits = "0123456789abcdef";
  return std::string("\\u00") + kDigits[code >> 4] + kDigits[code & 0xF];
}

}  // namespace

std::string JsonString(std::string_view text) {
  std::string json("\"");
  while (!text.empty()) {
    const std::size_t length = FirstCharacter(text).length;
    if (length == 0) {
      json += "\\ufffd";
      text.remove_prefix(1);
      continue;
    }
    const std::string escape = length == 1 ? EscapeOf(text.front()) : std::string();
    json += escape.empty() ? text.substr(0, length) : escape;
    text.remove_prefix(length);
  }
  return json + "\"";
}

void JsonWriter::BeginMember(std::string_view name) {
  if (depth_ > 0) {
    text_ += isFirst_ ? "\n" : ",\n";
    text_.append(2 * depth_, ' ');
  }
  isFirst_ = false;
  if (!name.empty()) {
    text_ += JsonString(name) + ": ";
  }
}

void JsonWriter::Begin(std::string_view name, char bracket) {
  BeginMember(name);
  text_.push_back(bracket);
  ++depth_;
  isFirst_ = true;
}

void JsonWriter::End(char bracket) {
  --depth_;
  if (!isFirst_) {
    text_.push_back('\n');
    text_.append(2 * depth_, ' ');
  }
  text_.push_back(bracket);
  isFirst_ = false;
}

void JsonWriter::Text(std::string_view name, std::string_view value) {
  BeginMember(name);
  text_ += JsonString(value);
}

void JsonWriter::Number(std::string_view name, std::int64_t value) {
  BeginMember(name);
  text_ += std::to_string(value);
}

void JsonWriter::Boolean(std::string_view name, bool value) {
  BeginMember(name);
  text_ += value ? "true" : "false";
}

void JsonWriter::Null(std::string_view name) {
  BeginMember(name);
  text_ += "null";
}

void JsonWriter::Numbers(std::string_view name, const std::vector<std::int64_t>& values) {
  BeginMember(name);
  text_.push_back('[');
  for (std::size_t i = 0; i < values.size(); ++i) {
    text_ += (i > 0 ? ", " : "") + std::to_string(values[i]);
  }
  text_.push_back(']');
}

void JsonWriter::Bytes(std::string_view name, std::string_view value) {
  Text(name, value);
  if (!IsUtf8(value)) {
    Text(std::string(name) + "Base64", Base64Of(value));
  }
}

}  // namespace Hovar
