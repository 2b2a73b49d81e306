#pragma once

// A second, careful look at a text file: the line and column of a byte, the bytes around it, and
// traits of the whole file. The program's readers stop at a byte; users look for lines and columns.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/exceptions/exceptions.h"

namespace Hovar {

/// A file that was read before cannot be read again.
class UnreadableFile final : public std::exception {
 public:
  explicit UnreadableFile(std::string path) : path_(std::move(path)) {}
  const char* what() const noexcept override { return path_.c_str(); }
  const std::string& Path() const noexcept { return path_; }

 private:
  std::string path_;
};

/// Calls what reads a file again and finds no fault in what it holds. Its result is the call's.
/// Errors: UnreadableFile; OutOfMemoryException.
template <typename Call>
auto LookAgain(const std::string& path, Call call) {
  try {
    return call();
  } catch (const Vell::Exceptions::OutOfMemoryException&) {
    throw;
  } catch (const Vell::Exceptions::Exception&) {
    throw UnreadableFile(path);
  }
}

/// The text that is looked at: the bytes of a file that was read before, or a file, which each look
/// opens anew. Errors of all looks: UnreadableFile.
class TextSource {
 public:
  TextSource() = default;
  TextSource(const char* path) : path_(path) {}
  TextSource(std::string path) : path_(std::move(path)) {}
  /// Without bytes, a file.
  TextSource(std::string path, std::optional<std::string> bytes)
      : path_(std::move(path)), bytes_(std::move(bytes)) {}

  const std::string& Path() const noexcept { return path_; }
  const std::optional<std::string>& Bytes() const noexcept { return bytes_; }

 private:
  std::string path_;
  std::optional<std::string> bytes_;
};

/// A place in a text file: line and column, both from 1. A column is one character of UTF-8; bytes
/// that are not UTF-8 count one each.
struct Place {
  std::int64_t line = 1;
  std::int64_t column = 1;
};

/// A line of a file and a byte within it.
struct LineAt {
  Place place;              // of the byte
  std::int64_t offset = 0;  // of the line's first byte
  std::string text;         // the line without its line feed, 1 MiB at most
};

/// The place of the byte at `offset`; beyond the end of the file, the place after its last byte.
Place PlaceOf(const TextSource& text, std::int64_t offset);

/// The line that holds the byte at `offset`.
LineAt LineOf(const TextSource& text, std::int64_t offset);

/// The offset of the last '<' before `offset`, or `offset` when there is none near.
std::int64_t TagBefore(const TextSource& text, std::int64_t offset);

/// Up to `size` bytes from `offset` on.
std::string BytesAt(const TextSource& text, std::int64_t offset, std::size_t size);

struct FileTraits {
  bool hasByteOrderMark = false;
  bool endsWithLineFeed = true;                   // an empty file too
  std::int64_t length = 0;                        // bytes
  std::int64_t firstCarriageReturnLineFeed = -1;  // offset of the first CR LF, or -1
};

FileTraits TraitsOf(const TextSource& text);

/// True when the program reads a carriage return before a line feed as a byte of the line; on
/// Windows it belongs to the line's end.
bool KeepsCarriageReturns() noexcept;

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace Hovar
