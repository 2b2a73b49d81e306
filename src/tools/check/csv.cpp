#include "tools/check/csv.h"

#include <algorithm>

#include "foundation/io/csv_rules.h"
#include "tools/support/inputs.h"
#include "tools/support/text_places.h"

namespace Hovar {

namespace {

using Vell::IO::kQuote;
using Vell::IO::kSeparator;

bool EndsField(int c) noexcept { return c == kSeparator || c == '\n'; }

/// Walks through the fields by the rules of the program's reader, up to the first one that breaks
/// them.
std::optional<WrongQuote> FirstWrongQuote(const std::string& path) {
  enum class At { kFieldStart, kPlain, kQuoted, kBehindQuote };
  Vell::IO::FileStream stream(Vell::String(std::string_view(path)), kReadInputBytes);
  At at = At::kFieldStart;
  std::int64_t opened = 0;
  bool hasLineFeed = false;  // the quoted field
  for (std::int64_t offset = 0;; ++offset) {
    const int c = stream.ReadByte();
    if (c == Vell::IO::kEndOfStream) {
      return at == At::kQuoted ? std::optional(WrongQuote{WrongQuote::Kind::kOpen, opened, offset})
                               : std::nullopt;
    }
    const bool isQuote = c == kQuote;
    if (at == At::kQuoted) {
      hasLineFeed = hasLineFeed || c == '\n';
      at = isQuote ? At::kBehindQuote : At::kQuoted;
    } else if (EndsField(c)) {
      at = At::kFieldStart;
    } else if (at == At::kFieldStart) {
      opened = offset;
      hasLineFeed = false;
      at = isQuote ? At::kQuoted : At::kPlain;
    } else if (at == At::kBehindQuote && isQuote) {
      at = At::kQuoted;
    } else if (at == At::kBehindQuote) {
      // Over several lines the opening quote is rather the wrong one.
      return WrongQuote{WrongQuote::Kind::kOther, hasLineFeed ? opened : offset, offset + 1};
    } else if (isQuote) {
      return WrongQuote{WrongQuote::Kind::kWithin, offset, offset + 1};
    }
  }
}

}  // namespace

std::vector<std::size_t> FieldStarts(std::string_view record, QuoteUse quotes) {
  std::vector<std::size_t> starts = {0};
  bool isQuoted = false;
  for (std::size_t i = 0; i < record.size(); ++i) {
    if (record[i] == kQuote && quotes == QuoteUse::kHonour) {
      isQuoted = !isQuoted;  // a doubled quote turns twice
    } else if (record[i] == kSeparator && !isQuoted) {
      starts.push_back(i + 1);
    }
  }
  return starts;
}

std::size_t FieldsEnd(std::string_view record, std::size_t start, int count) noexcept {
  bool isQuoted = false;
  for (std::size_t i = start; i < record.size(); ++i) {
    if (record[i] == kQuote) {
      isQuoted = !isQuoted;
    } else if (record[i] == kSeparator && !isQuoted && --count == 0) {
      return i + 1;
    }
  }
  return record.size();
}

std::string_view FieldOf(std::string_view record, std::size_t index, QuoteUse quotes) {
  const std::vector<std::size_t> starts = FieldStarts(record, quotes);
  if (index >= starts.size()) {
    return {};
  }
  const std::size_t end = index + 1 < starts.size() ? starts[index + 1] - 1 : record.size();
  return record.substr(starts[index], end - starts[index]);
}

std::string DecodedField(std::string_view field) {
  if (!field.starts_with(kQuote)) {
    return std::string(field);
  }
  field.remove_prefix(1);
  std::string decoded;
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] != kQuote) {
      decoded += field[i];
    } else if (i + 1 < field.size() && field[i + 1] == kQuote) {
      decoded += field[i++];
    }
  }
  return decoded;
}

RecordWalker::RecordWalker(const std::string& path) : path_(path) {
  LookAgain(path_,
            [this] { stream_.emplace(Vell::String(std::string_view(path_)), kReadInputBytes); });
}

bool RecordWalker::Next() {
  record_.clear();
  offset_ = next_;
  hasLineFeed_ = false;
  std::int64_t quotes = 0;
  while (!hasLineFeed_) {
    const std::string_view window = LookAgain(path_, [this] { return stream_->Window(); });
    if (window.empty()) {
      return !record_.empty();
    }
    const std::size_t end = window.find('\n');
    const std::string_view part = window.substr(0, end);
    quotes += std::count(part.begin(), part.end(), kQuote);
    record_ += part;
    std::size_t taken = part.size();
    if (end != std::string_view::npos) {
      ++taken;
      // An odd number of quotes leaves one open, and the line feed belongs to its field.
      hasLineFeed_ = quotes % 2 == 0;
      if (!hasLineFeed_) {
        record_ += '\n';
      }
    }
    stream_->TakeFromWindow(taken);
    next_ += static_cast<std::int64_t>(taken);
  }
  return true;
}

std::string HeaderOf(const std::string& path) {
  RecordWalker walker(path);
  return walker.Next() ? walker.Record() : std::string();
}

std::optional<WrongQuote> WrongQuoteIn(const std::string& path) {
  return LookAgain(path, [&path] { return FirstWrongQuote(path); });
}

}  // namespace Hovar
