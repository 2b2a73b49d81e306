#pragma once

// A second, careful look at comma-separated text, for places and counts. Quotes are interpreted as
// they are meant: a comma or a line feed within a pair of them separates nothing.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/io/file_stream.h"

namespace Hovar {

/// Whether commas within quotes separate: in fields that the program skips they do.
enum class QuoteUse { kHonour, kIgnore };

/// The offsets of the first bytes of a record's fields.
std::vector<std::size_t> FieldStarts(std::string_view record, QuoteUse quotes);

/// The offset after `count` > 0 fields from the offset `start` of a field on, with the comma after
/// the last one; the end of the record when it has no such comma. Quotes are honoured.
std::size_t FieldsEnd(std::string_view record, std::size_t start, int count) noexcept;

/// The field at an index, as written between its commas; empty where there is none.
std::string_view FieldOf(std::string_view record, std::size_t index, QuoteUse quotes);

/// A field as the program's readers decode it: one that begins with a double quote without its
/// quotes, and with each doubled one once.
std::string DecodedField(std::string_view field);

/// Walks through the records of a file that was read before.
/// Errors: UnreadableFile; OutOfMemoryException.
class RecordWalker {
 public:
  /// Opens the file.
  explicit RecordWalker(const std::string& path);

  /// The next record without its line feed, or nothing at the end. A last one without a line feed
  /// is a record too.
  bool Next();
  const std::string& Record() const noexcept { return record_; }
  /// The offset of the record's first byte in the file.
  std::int64_t Offset() const noexcept { return offset_; }
  bool HasLineFeed() const noexcept { return hasLineFeed_; }

 private:
  std::string path_;
  std::optional<Vell::IO::FileStream> stream_;
  std::string record_;
  std::int64_t offset_ = 0;
  std::int64_t next_ = 0;
  bool hasLineFeed_ = false;
};

/// The first record of a file.
/// Errors: as of RecordWalker.
std::string HeaderOf(const std::string& path);

/// A double quote that breaks the rules of the program's reader.
struct WrongQuote {
  enum class Kind {
    kOpen,    // opens a field and is never closed
    kWithin,  // stands in a field that does not begin with one
    kOther    // closes a field, and something else than a comma or a line feed follows
  };
  Kind kind = Kind::kOther;
  std::int64_t offset = 0;  // where to look
  std::int64_t stop = 0;    // of the byte that the program would read next
};

/// The first one of a file, or nothing.
std::optional<WrongQuote> WrongQuoteIn(const std::string& path);

}  // namespace Hovar
