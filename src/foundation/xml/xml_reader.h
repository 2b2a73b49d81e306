#pragma once

// A pull reader for the subset of XML that definition files need: elements with text, attributes in
// double quotes, comments between tags, declaration tags. The caller asks for what it expects next.
// There is no document tree, no validation and no decoding of entities. docs/definitions.md
// describes the files. Bytes outside ASCII are taken as they stand, whatever encoding a declaration
// names.
//
// A tag begins with '<', '</' or '<?' and its name directly after it.

#include <cstdint>
#include <string_view>

#include "foundation/growable_array.h"
#include "foundation/io/stream.h"
#include "foundation/shared_handle.h"
#include "foundation/string.h"

namespace Vell {

/// An attribute of a tag, its value as it stands between the double quotes.
struct XmlAttribute {
  String name;
  String value;
};

/// One tag as it was read.
struct XmlTag {
  enum class Kind { kDeclaration, kStart, kEnd };

  Kind kind = Kind::kStart;
  /// A start tag closed by "/>".
  bool isEmpty = false;
  String name;
  GrowableArray<XmlAttribute> attributes;  // in file order, names unique

  /// True for a start tag, or an end tag, of this name; an empty tag is a start tag.
  bool IsStart(std::string_view wanted) const noexcept;
  bool IsEnd(std::string_view wanted) const noexcept;

  /// The value of an attribute; valid as long as the tag.
  /// Errors: InvalidArgumentException "Attribute not found in XML tag".
  const String& Attribute(std::string_view wanted) const;
};

/// Errors of all reading operations: MatchException<char> where a certain character is required and
/// another one stands, MatchException<String> for a wrong tag name, EndOfStreamException
/// "Unexpected end of stream" where the file ends too early, InvalidInputException "Invalid input
/// string" for a NUL byte in a text or a tag, "IO Exception", "Out of memory".
class XmlReader {
 public:
  /// Reads from the stream's position on. The stream is shared; comments need one that can seek.
  explicit XmlReader(SharedHandle<IO::Stream> stream);

  /// Skips white space and comments and reads one tag of any kind. The name ends at white space or
  /// '>', so a slash directly after it belongs to the name ("<Seed/>" has the name "Seed/").
  /// Errors: also InvalidArgumentException "Duplicate attributes not allowed in XML tag".
  XmlTag ReadTag();

  /// Skips white space and comments and reads a start or an end tag that must have this name and no
  /// attributes. As many bytes as the name has are compared; what follows must be white space or
  /// '>'. A NUL byte among them is InvalidArgumentException "Invalid argument".
  void ReadStartTag(std::string_view name);
  void ReadEndTag(std::string_view name);

  /// The text up to the next '<', which stays, or the end of the stream, exactly as it stands.
  String ReadText();

  /// Elements that hold one value, from the start tag to the end tag, both without attributes. A
  /// text is given exactly as it stands, untrimmed. Numbers are read as Stream::Scan reads "%d" and
  /// "%lg"; between a number and the end tag only white space and comments may stand. A number that
  /// cannot be read is "IO Exception", or "Unexpected end of stream" at the end of the file.
  String ReadTextElement(std::string_view name);
  std::int32_t ReadIntegerElement(std::string_view name);
  double ReadRealElement(std::string_view name);

  /// The stream, at the first byte that was not taken: for reading a value of another kind.
  IO::Stream& Source() const noexcept { return *stream_; }

 private:
  void SkipWhitespace();
  void SkipWhitespaceAndComments();
  bool SkipComment();
  void RequireByte(char expected);
  void RequireName(std::string_view name);
  String ReadUntil(std::string_view delimiters);
  void ReadAttributes(GrowableArray<XmlAttribute>& attributes);
  void ScanValue(const char* format, void* value, std::size_t size);

  SharedHandle<IO::Stream> stream_;
};

}  // namespace Vell
