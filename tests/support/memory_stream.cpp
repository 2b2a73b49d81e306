#include "support/memory_stream.h"

#include <algorithm>

#include "foundation/exceptions/exceptions.h"

namespace Testing {
namespace {

[[noreturn]] void Fail() { throw Vell::Exceptions::IOException(Messages::Pattern("IO Exception")); }

}  // namespace

MemoryStream::MemoryStream(std::string_view content, std::size_t windowSize, std::string_view name)
    : Stream(Vell::IO::Mode::kReadWriteExisting | Vell::IO::Mode::kText, Vell::String(name)),
      content_(content),
      windowSize_(windowSize) {
  MoveTo(0);
}

std::size_t MemoryStream::Position() const {
  return windowEnd_ - static_cast<std::size_t>(end_ - next_);
}

void MemoryStream::MoveTo(std::size_t position) {
  next_ = end_ = reinterpret_cast<unsigned char*>(content_.data()) + position;
  windowEnd_ = position;
}

int MemoryStream::ReadByteOfNextBlock() {
  const std::size_t count = std::min(windowSize_, content_.size() - windowEnd_);
  if (failingOffset_ >= windowEnd_ && failingOffset_ <= windowEnd_ + count &&
      (count == 0 || failingOffset_ < windowEnd_ + count)) {
    hasFailed_ = true;
    Fail();
  }
  if (count == 0) {
    isEof_ = true;
    return Vell::IO::kEndOfStream;
  }
  end_ = next_ + count;
  windowEnd_ += count;
  return *next_++;
}

void MemoryStream::Flush() {
  if (writesFail_) {
    Fail();
  }
  ++flushCount_;
}

void MemoryStream::Unget(int byte) {
  if (byte == Vell::IO::kEndOfStream || Position() == 0) {
    Fail();
  }
  *--next_ = static_cast<unsigned char>(byte);
  isEof_ = false;
}

void MemoryStream::Write(const void* buffer, std::size_t count) {
  if (writesFail_) {
    Fail();
  }
  const std::size_t position = Position();
  content_.replace(position, std::min(count, content_.size() - position),
                   static_cast<const char*>(buffer), count);
  MoveTo(position + count);
}

void MemoryStream::Seek(std::int64_t offset, int origin) {
  const std::int64_t start = origin == 1 ? Tell() : origin == 2 ? Length() : 0;
  if (start + offset < 0 || start + offset > Length()) {
    Fail();
  }
  MoveTo(static_cast<std::size_t>(start + offset));
  isEof_ = false;
}

}  // namespace Testing
