#include "foundation/xml/xml_reader.h"

#include <utility>

#include "foundation/exceptions/exceptions.h"
#include "messages/error_texts.h"

namespace Vell {
namespace {

constexpr std::string_view kEndOfTagName = " \t\r\n>";
constexpr std::string_view kEndOfAttributeName = " \t\r\n=";

bool IsOneOf(std::string_view bytes, int c) noexcept {
  return c != IO::kEndOfStream && bytes.find(static_cast<char>(c)) != std::string_view::npos;
}

}  // namespace

bool XmlTag::IsStart(std::string_view wanted) const noexcept {
  return kind == Kind::kStart && name.View() == wanted;
}

bool XmlTag::IsEnd(std::string_view wanted) const noexcept {
  return kind == Kind::kEnd && name.View() == wanted;
}

const String& XmlTag::Attribute(std::string_view wanted) const {
  for (const XmlAttribute& attribute : attributes) {
    if (attribute.name.View() == wanted) {
      return attribute.value;
    }
  }
  throw Exceptions::InvalidArgumentException(Messages::kErrors.attributeNotFound);
}

XmlReader::XmlReader(SharedHandle<IO::Stream> stream) : stream_(std::move(stream)) {}

XmlTag XmlReader::ReadTag() {
  XmlTag tag;
  SkipWhitespaceAndComments();
  RequireByte('<');
  switch (stream_->Peek()) {
    case '?':
      tag.kind = XmlTag::Kind::kDeclaration;
      RequireByte('?');
      break;
    case '/':
      tag.kind = XmlTag::Kind::kEnd;
      RequireByte('/');
      break;
    default:
      break;
  }
  tag.name = ReadUntil(kEndOfTagName);
  SkipWhitespace();
  if (tag.kind != XmlTag::Kind::kEnd) {
    ReadAttributes(tag.attributes);
    SkipWhitespace();
  }
  if (tag.kind == XmlTag::Kind::kDeclaration) {
    RequireByte('?');
  } else if (tag.kind == XmlTag::Kind::kStart && stream_->Peek() == '/') {
    tag.isEmpty = true;
    RequireByte('/');
  }
  RequireByte('>');
  return tag;
}

void XmlReader::ReadStartTag(std::string_view name) {
  SkipWhitespaceAndComments();
  RequireByte('<');
  RequireName(name);
}

void XmlReader::ReadEndTag(std::string_view name) {
  SkipWhitespaceAndComments();
  RequireByte('<');
  RequireByte('/');
  RequireName(name);
}

String XmlReader::ReadText() { return ReadUntil("<"); }

String XmlReader::ReadTextElement(std::string_view name) {
  ReadStartTag(name);
  String text = ReadText();
  ReadEndTag(name);
  return text;
}

std::int32_t XmlReader::ReadIntegerElement(std::string_view name) {
  std::int32_t value = 0;
  ReadStartTag(name);
  ScanValue("%d", &value, sizeof value);
  ReadEndTag(name);
  return value;
}

double XmlReader::ReadRealElement(std::string_view name) {
  double value = 0;
  ReadStartTag(name);
  ScanValue("%lg", &value, sizeof value);
  ReadEndTag(name);
  return value;
}

void XmlReader::ScanValue(const char* format, void* value, std::size_t size) {
  if (stream_->Scan(format, value, size) != 1) {
    throw Exceptions::EndOfStreamException(Messages::kErrors.unexpectedEnd);
  }
}

void XmlReader::SkipWhitespace() {
  int c = stream_->ReadByte();
  while (IsOneOf(kWhitespace, c)) {
    c = stream_->ReadByte();
  }
  if (c != IO::kEndOfStream) {
    stream_->Unget(c);
  }
}

void XmlReader::SkipWhitespaceAndComments() {
  do {
    SkipWhitespace();
  } while (SkipComment());
}

/// Skips one comment if one begins here; otherwise the position stays.
bool XmlReader::SkipComment() {
  constexpr std::string_view kOpening = "<!--";
  constexpr std::string_view kClosing = "-->";
  if (stream_->Peek() != kOpening.front()) {
    return false;
  }
  const std::int64_t start = stream_->Tell();
  for (const char expected : kOpening) {
    if (stream_->ReadByte() != expected) {
      stream_->Seek(start);
      return false;
    }
  }
  // The closing is found by its two hyphens: a longer row of them still ends in two.
  std::size_t matched = 0;
  while (matched < kClosing.size()) {
    const int c = stream_->ReadByte();
    if (c == IO::kEndOfStream) {
      return true;
    }
    if (c == kClosing[matched]) {
      ++matched;
    } else if (c != '-') {
      matched = 0;
    }
  }
  return true;
}

void XmlReader::RequireByte(char expected) {
  const int c = stream_->ReadByte();
  if (c == IO::kEndOfStream) {
    throw Exceptions::EndOfStreamException(Messages::kErrors.unexpectedEnd);
  }
  const char current = static_cast<char>(c);
  if (current != expected) {
    throw Exceptions::MatchException<char>(expected, current, *stream_);
  }
}

/// Reads as many bytes as the name has, which must be the name, and the end of the tag.
void XmlReader::RequireName(std::string_view name) {
  String current;
  while (current.View().size() < name.size()) {
    const int c = stream_->ReadByte();
    if (c == IO::kEndOfStream) {
      break;
    }
    if (c == '\0') {
      throw Exceptions::InvalidArgumentException(Messages::kErrors.invalidArgument);
    }
    current.Append(static_cast<char>(c));
  }
  if (current.View() != name) {
    throw Exceptions::MatchException<String>(String(name), current, *stream_);
  }
  SkipWhitespace();
  RequireByte('>');
}

String XmlReader::ReadUntil(std::string_view delimiters) {
  String text;
  for (;;) {
    const int c = stream_->ReadByte();
    if (c == IO::kEndOfStream) {
      return text;
    }
    if (c == '\0') {
      throw Exceptions::InvalidInputException(Messages::kErrors.invalidInputString);
    }
    if (IsOneOf(delimiters, c)) {
      stream_->Unget(c);
      return text;
    }
    text.Append(static_cast<char>(c));
  }
}

void XmlReader::ReadAttributes(GrowableArray<XmlAttribute>& attributes) {
  for (;;) {
    SkipWhitespace();
    if (IsOneOf(">/?", stream_->Peek())) {
      return;
    }
    XmlAttribute attribute;
    attribute.name = ReadUntil(kEndOfAttributeName);
    SkipWhitespace();
    RequireByte('=');
    SkipWhitespace();
    RequireByte('"');
    attribute.value = ReadUntil("\"");
    RequireByte('"');
    for (const XmlAttribute& earlier : attributes) {
      if (earlier.name.View() == attribute.name.View()) {
        throw Exceptions::InvalidArgumentException(Messages::kErrors.duplicateAttributes);
      }
    }
    attributes.Append(std::move(attribute));
  }
}

}  // namespace Vell
