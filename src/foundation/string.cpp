#include "foundation/string.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

#include "foundation/exceptions/exceptions.h"
#include "foundation/integer_size.h"
#include "foundation/memory.h"
#include "messages/error_texts.h"

namespace Vell {
namespace {

std::string_view RequireText(const char* text) {
  if (text == nullptr) {
    throw Exceptions::InvalidArgumentException(Messages::kErrors.invalidArgument);
  }
  return text;
}

}  // namespace

String::String(const char* text) : String(RequireText(text)) {}

String::String(std::string_view text) {
  const std::int32_t length = CheckedSize(text.size());
  Reserve(CheckedSize(text.size() + 1));
  std::copy(text.begin(), text.end(), data_);
  length_ = length;
}

String::String(const String& other) {
  Reserve(other.capacity_);
  std::copy_n(other.data_, other.capacity_, data_);
  length_ = other.length_;
}

String::String(String&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)),
      capacity_(std::exchange(other.capacity_, 0)),
      length_(std::exchange(other.length_, 0)) {}

String& String::operator=(const String& other) {
  if (this != &other) {
    *this = String(other);
  }
  return *this;
}

String& String::operator=(String&& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(capacity_, other.capacity_);
  std::swap(length_, other.length_);
  return *this;
}

String::~String() { ReleaseBlock(data_); }

void String::Reserve(std::int32_t capacity) {
  RequireNotNegative(capacity);
  ReleaseBlock(std::exchange(data_, nullptr));
  capacity_ = 0;
  length_ = 0;
  data_ = AllocateArray<char>(capacity);
  capacity_ = capacity;
}

void String::ResizeBuffer(std::int32_t capacity) {
  char* const block = AllocateArray<char>(capacity);
  std::copy_n(data_, std::min(capacity_, capacity), block);
  ReleaseBlock(data_);
  data_ = block;
  capacity_ = capacity;
  length_ = std::min(length_, std::max(capacity - 1, 0));
  if (capacity > 0) {
    data_[length_] = '\0';  // a byte of the text stood there if it had to be cut
  }
}

void String::MakeRoomFor(std::uint64_t bytes) {
  if (bytes > static_cast<std::uint64_t>(capacity_)) {
    const std::uint64_t doubled = 2 * static_cast<std::uint64_t>(capacity_);
    ResizeBuffer(CheckedSize(std::max(bytes, std::min<std::uint64_t>(doubled, INT32_MAX))));
  }
}

void String::Append(char byte) {
  if (length_ + 1 >= capacity_) {
    MakeRoomFor(static_cast<std::uint64_t>(length_) + 2);
  }
  data_[length_++] = byte;
}

void String::Append(std::string_view text) {
  MakeRoomFor(static_cast<std::uint64_t>(length_) + text.size() + 1);
  std::copy(text.begin(), text.end(), data_ + length_);
  length_ += static_cast<std::int32_t>(text.size());
}

void String::Clear() noexcept { Truncate(0); }

void String::Truncate(std::int32_t length) noexcept {
  assert(length >= 0 && length <= length_);
  std::fill_n(data_ + length, length_ - length, '\0');
  length_ = length;
}

void String::Trim() noexcept {
  const std::string_view text = View();
  const std::size_t first = text.find_first_not_of(kWhitespace);
  if (first == std::string_view::npos) {
    Clear();
    return;
  }
  const std::size_t size = text.find_last_not_of(kWhitespace) - first + 1;
  std::copy_n(data_ + first, size, data_);
  Truncate(static_cast<std::int32_t>(size));
}

std::int32_t String::FindFirst(char byte) const noexcept {
  const std::size_t found = View().find(byte);
  return found == std::string_view::npos ? -1 : static_cast<std::int32_t>(found);
}

std::int32_t String::FindLast(char byte) const noexcept {
  const std::size_t found = View().rfind(byte);
  return found == std::string_view::npos ? -1 : static_cast<std::int32_t>(found);
}

String Concatenate(std::string_view a, std::string_view b) {
  String result;
  result.Reserve(CheckedSize(a.size() + b.size() + 1));
  result.Append(a);
  result.Append(b);
  return result;
}

String JoinPath(std::string_view folder, std::string_view name) {
  String path(folder);
  path.Append('\\');
  path.Append(name);
  return path;
}

}  // namespace Vell
