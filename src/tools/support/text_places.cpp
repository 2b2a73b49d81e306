#include "tools/support/text_places.h"

#include <algorithm>
#include <optional>

#include "foundation/io/file_stream.h"
#include "foundation/io/platform/platform.h"
#include "tools/support/inputs.h"

namespace Hovar {
namespace {

using Vell::IO::FileStream;

constexpr std::size_t kLongestLine = std::size_t{1} << 20;

/// Passes the bytes of a text from `offset` on to `take`, block by block, until it returns false.
template <typename Take>
void ReadBlocks(const TextSource& text, std::int64_t offset, Take take) {
  if (const std::optional<std::string>& bytes = text.Bytes(); bytes.has_value()) {
    if (const auto start = static_cast<std::size_t>(offset); start < bytes->size()) {
      take(std::string_view(*bytes).substr(start));
    }
    return;
  }
  LookAgain(text.Path(), [&] {
    FileStream stream(Vell::String(std::string_view(text.Path())), kReadInputBytes);
    stream.Seek(offset);
    for (std::string_view block = stream.Window(); !block.empty(); block = stream.Window()) {
      if (!take(block)) {
        return;
      }
      stream.TakeFromWindow(block.size());
    }
  });
}

/// True for the bytes of a UTF-8 character after its first one.
bool IsContinuation(char c) noexcept { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

std::int64_t ColumnAfter(std::string_view text) noexcept {
  return 1 + std::count_if(text.begin(), text.end(), [](char c) { return !IsContinuation(c); });
}

/// The bytes of the line at `start`, up to its line feed.
std::string LineText(const TextSource& text, std::int64_t start) {
  std::string line;
  ReadBlocks(text, start, [&line](std::string_view block) {
    const std::size_t end = block.find('\n');
    line += block.substr(0, end);
    return end == std::string_view::npos && line.size() < kLongestLine;
  });
  return line.substr(0, kLongestLine);
}

}  // namespace

Place PlaceOf(const TextSource& text, std::int64_t offset) { return LineOf(text, offset).place; }

LineAt LineOf(const TextSource& text, std::int64_t offset) {
  LineAt line;
  std::int64_t position = 0;
  ReadBlocks(text, 0, [&](std::string_view block) {
    const auto wanted = static_cast<std::size_t>(std::max<std::int64_t>(offset - position, 0));
    const std::string_view before = block.substr(0, wanted);
    line.place.line += std::count(before.begin(), before.end(), '\n');
    if (const std::size_t last = before.rfind('\n'); last != std::string_view::npos) {
      line.offset = position + static_cast<std::int64_t>(last) + 1;
    }
    position += static_cast<std::int64_t>(block.size());
    return position < offset;
  });
  line.text = LineText(text, line.offset);
  const auto within = static_cast<std::size_t>(std::max<std::int64_t>(offset - line.offset, 0));
  line.place.column = ColumnAfter(std::string_view(line.text).substr(0, within));
  return line;
}

std::string BytesAt(const TextSource& text, std::int64_t offset, std::size_t size) {
  std::string bytes;
  ReadBlocks(text, offset, [&](std::string_view block) {
    bytes += block.substr(0, size - bytes.size());
    return bytes.size() < size;
  });
  return bytes;
}

std::int64_t TagBefore(const TextSource& text, std::int64_t offset) {
  constexpr std::int64_t kLongestTag = 1 << 16;
  const std::int64_t start = std::max<std::int64_t>(offset - kLongestTag, 0);
  const std::size_t tag = BytesAt(text, start, static_cast<std::size_t>(offset - start)).rfind('<');
  return tag != std::string::npos ? start + static_cast<std::int64_t>(tag) : offset;
}

FileTraits TraitsOf(const TextSource& text) {
  FileTraits traits;
  char last = '\n';
  ReadBlocks(text, 0, [&](std::string_view block) {
    traits.hasByteOrderMark =
        traits.hasByteOrderMark || (traits.length == 0 && block.starts_with(kByteOrderMark));
    if (traits.firstCarriageReturnLineFeed < 0) {
      // The pair may lie across two blocks.
      if (last == '\r' && block.front() == '\n') {
        traits.firstCarriageReturnLineFeed = traits.length - 1;
      } else if (const std::size_t pair = block.find("\r\n"); pair != std::string_view::npos) {
        traits.firstCarriageReturnLineFeed = traits.length + static_cast<std::int64_t>(pair);
      }
    }
    last = block.back();
    traits.length += static_cast<std::int64_t>(block.size());
    return true;
  });
  traits.endsWithLineFeed = last == '\n';
  return traits;
}

bool KeepsCarriageReturns() noexcept {
  return Vell::IO::Platform::TextLineEnds() == Vell::IO::Platform::LineEnds::kLineFeeds;
}

}  // namespace Hovar
