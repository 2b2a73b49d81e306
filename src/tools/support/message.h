#pragma once

// How the tools speak: messages of the tables messages.h, one beside each tool, with their parts.

#include <concepts>
#include <string>
#include <string_view>

#include "messages/pattern.h"
#include "tools/support/sentence_parts.h"

namespace Hovar {

inline void AppendPart(std::string& text, std::string_view part) { text += Printable(part); }
inline void AppendPart(std::string& text, std::integral auto part) { text += std::to_string(part); }

/// A message with the parts, texts or whole numbers, in the place of its placeholders. Texts become
/// printable, whatever file or command line they come from.
template <typename... Parts>
std::string Filled(const Messages::PatternWithParts<sizeof...(Parts)>& message,
                   const Parts&... parts) {
  std::string text;
  message.Fill([&text](const auto& part) { AppendPart(text, part); }, parts...);
  return text;
}

/// Writes a line, made printable, on standard error. A failure to write it is ignored.
void SayLine(std::string_view line);

/// Writes a message as a line on standard error.
template <typename... Parts>
void Say(const Messages::PatternWithParts<sizeof...(Parts)>& message, const Parts&... parts) {
  SayLine(Filled(message, parts...));
}

/// Writes a message without parts as Say does, but needs no memory.
void SayWithoutMemory(const Messages::Pattern& message) noexcept;

/// Writes a text on standard output. False when that fails, which a line on standard error says.
bool Print(std::string_view text);

}  // namespace Hovar
