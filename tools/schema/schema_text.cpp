#include "schema_text.h"

#include <sstream>

namespace Hovar {
namespace {

constexpr std::size_t kWidth = 100;
constexpr std::size_t kIndent = 2;

/// A text with the characters of XML's own as entities.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '<') {
      escaped += "&lt;";
    } else if (c == '>') {
      escaped += "&gt;";
    } else if (c == '&') {
      escaped += "&amp;";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string Tag(std::string_view name, std::string_view attributes) {
  return std::string(name) + (attributes.empty() ? "" : " ") + std::string(attributes);
}

}  // namespace

void SchemaText::Line(std::string_view line) {
  if (!line.empty()) {
    text_.append(depth_ * kIndent, ' ').append(line);
  }
  text_ += '\n';
}

void SchemaText::Begin(std::string_view name, std::string_view attributes) {
  Line('<' + Tag(name, attributes) + '>');
  ++depth_;
}

void SchemaText::End(std::string_view name) {
  --depth_;
  Line("</" + std::string(name) + '>');
}

void SchemaText::Empty(std::string_view name, std::string_view attributes) {
  Line('<' + Tag(name, attributes) + "/>");
}

void SchemaText::Section(std::string_view comment) {
  Line("");
  Line("<!-- " + std::string(comment) + " -->");
}

void SchemaText::Annotate(std::string_view text) {
  Begin("xs:annotation");
  std::istringstream words("<xs:documentation>" + Escaped(text) + "</xs:documentation>");
  std::string line;
  std::size_t further = 0;  // lines after the first one lie deeper
  for (std::string word; words >> word;) {
    if (!line.empty() && depth_ * kIndent + line.size() + 1 + word.size() > kWidth) {
      Line(line);
      line.clear();
      depth_ += 1 - further;
      further = 1;
    }
    line += (line.empty() ? "" : " ") + word;
  }
  Line(line);
  depth_ -= further;
  End("xs:annotation");
}

}  // namespace Hovar
