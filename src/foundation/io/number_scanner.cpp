#include "foundation/io/number_scanner.h"

#include <array>
#include <string_view>

#include "foundation/ascii.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/io/number_text.h"
#include "foundation/string.h"
#include "messages/error_texts.h"

namespace Vell::IO {
namespace {

/// The bytes of a number while it is being read: short ones, that is nearly all, without asking for
/// memory.
class Token {
 public:
  void Append(int byte) {
    if (size_ < short_.size()) {
      short_[size_] = static_cast<char>(byte);
    } else {
      if (size_ == short_.size()) {
        long_.Append(std::string_view(short_.data(), size_));
      }
      long_.Append(static_cast<char>(byte));
    }
    ++size_;
  }
  std::size_t Size() const noexcept { return size_; }
  std::string_view View() const noexcept {
    return size_ <= short_.size() ? std::string_view(short_.data(), size_) : long_.View();
  }
  char Last() const noexcept { return View().back(); }

 private:
  std::array<char, 64> short_{};
  std::size_t size_ = 0;
  String long_;
};

int SkipBlanks(Stream& stream) {
  int c = stream.ReadByte();
  while (IsBlank(c)) {
    c = stream.ReadByte();
  }
  return c;
}

void PutBack(Stream& stream, int c) {
  if (c != kEndOfStream) {
    stream.Unget(c);
  }
}

/// Reads a sign and digits into `token`.
ScanResult ReadDigits(Stream& stream, Token& token) {
  int c = SkipBlanks(stream);
  if (c == kEndOfStream) {
    return ScanResult::kEnd;
  }
  if (c == '-' || c == '+') {
    token.Append(c);
    c = stream.ReadByte();
  }
  const std::size_t signs = token.Size();
  for (; IsDigit(c); c = stream.ReadByte()) {
    token.Append(c);
  }
  PutBack(stream, c);
  return token.Size() > signs ? ScanResult::kNumber : ScanResult::kNoNumber;
}

template <typename Whole>
ScanResult ScanWhole(Stream& stream, Whole& value, Whole (*parse)(std::string_view) noexcept) {
  Token token;
  const ScanResult result = ReadDigits(stream, token);
  if (result == ScanResult::kNumber) {
    value = parse(token.View());
  }
  return result;
}

/// Takes the letters of `word`, of either case, beginning with `c`, which was read already. The
/// first byte that differs is taken too. True when the whole word was there.
bool ReadWord(Stream& stream, Token& token, int c, std::string_view word) {
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (i > 0) {
      c = stream.ReadByte();
    }
    if (ToLower(c) != word[i]) {
      return false;
    }
    token.Append(c);
  }
  return true;
}

/// "inf" or "infinity"; a letter i after "inf" commits to the longer word.
bool ReadInfinity(Stream& stream, Token& token, int c) {
  if (!ReadWord(stream, token, c, "inf")) {
    return false;
  }
  c = stream.ReadByte();
  if (ToLower(c) == 'i') {
    return ReadWord(stream, token, c, "inity");
  }
  PutBack(stream, c);
  return true;
}

/// Digits with a point and an exponent. The first byte that cannot continue the number is put back,
/// but an exponent letter without digits after it stays taken.
bool ReadDigitsAndExponent(Stream& stream, Token& token, int c) {
  const std::size_t signs = token.Size();
  bool isHexadecimal = false;
  bool hasDigit = false;
  if (c == '0') {
    token.Append(c);
    hasDigit = true;
    c = stream.ReadByte();
    if (ToLower(c) == 'x') {
      token.Append(c);
      isHexadecimal = true;
      hasDigit = false;
      c = stream.ReadByte();
    }
  }
  const char exponentLetter = isHexadecimal ? 'p' : 'e';
  bool hasPoint = false;
  bool hasExponent = false;
  for (;; c = stream.ReadByte()) {
    if (IsDigit(c) || (isHexadecimal && !hasExponent && IsHexDigit(c))) {
      hasDigit = true;
    } else if (hasExponent && token.Last() == exponentLetter && (c == '-' || c == '+')) {
      // The exponent's sign.
    } else if (hasDigit && !hasExponent && ToLower(c) == exponentLetter) {
      hasExponent = hasPoint = true;
      c = static_cast<unsigned char>(exponentLetter);
    } else if (!hasPoint && c == '.') {
      hasPoint = true;
    } else {
      break;
    }
    token.Append(c);
  }
  PutBack(stream, c);
  constexpr std::size_t kPrefix = 2;  // "0x" alone is no number
  return token.Size() > signs && !(isHexadecimal && token.Size() == signs + kPrefix);
}

}  // namespace

ScanResult ScanInteger(Stream& stream, std::int32_t& value) {
  return ScanWhole(stream, value, ParseInteger);
}

ScanResult ScanUnsigned(Stream& stream, std::uint32_t& value) {
  return ScanWhole(stream, value, ParseUnsigned);
}

ScanResult ScanReal(Stream& stream, double& value) {
  int c = SkipBlanks(stream);
  if (c == kEndOfStream) {
    return ScanResult::kEnd;
  }
  Token token;
  if (c == '-' || c == '+') {
    token.Append(c);
    c = stream.ReadByte();
  }
  bool isRead = false;
  if (ToLower(c) == 'n') {
    isRead = ReadWord(stream, token, c, "nan");
  } else if (ToLower(c) == 'i') {
    isRead = ReadInfinity(stream, token, c);
  } else if (c != kEndOfStream) {
    isRead = ReadDigitsAndExponent(stream, token, c);
  }
  std::size_t used = 0;
  const double read = isRead ? ParseReal(token.View(), &used) : 0.0;
  if (used == 0) {
    return ScanResult::kNoNumber;
  }
  value = read;
  return ScanResult::kNumber;
}

int ScanNumber(Stream& stream, const char* format, void* destination, std::size_t size) {
  const std::string_view text(format);
  if (text == "%d" && size == sizeof(std::int32_t)) {
    return static_cast<int>(ScanInteger(stream, *static_cast<std::int32_t*>(destination)));
  }
  if (text == "%u" && size == sizeof(std::uint32_t)) {
    return static_cast<int>(ScanUnsigned(stream, *static_cast<std::uint32_t*>(destination)));
  }
  if (text == "%lg" && size == sizeof(double)) {
    return static_cast<int>(ScanReal(stream, *static_cast<double*>(destination)));
  }
  throw Exceptions::InvalidFormatException(Messages::kErrors.invalidFormat);
}

}  // namespace Vell::IO
