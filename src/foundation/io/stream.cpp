#include "foundation/io/stream.h"

#include <algorithm>
#include <utility>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/number_scanner.h"
#include "foundation/io/number_text.h"
#include "messages/error_texts.h"

namespace Vell::IO {

Stream::Stream(std::uint32_t mode, String name) : mode_(mode), name_(std::move(name)) {}

void Stream::RequireSuccess(bool succeeded) {
  if (!succeeded) {
    throw Exceptions::IOException(Messages::kErrors.ioException);
  }
}

int Stream::Peek() {
  if (next_ != end_) {
    return *next_;
  }
  const int byte = ReadByteOfNextBlock();
  next_ -= byte != kEndOfStream ? 1 : 0;
  return byte;
}

std::string_view Stream::Window() {
  if (next_ == end_) {
    Peek();
  }
  return {reinterpret_cast<const char*>(next_), static_cast<std::size_t>(end_ - next_)};
}

std::size_t Stream::Read(void* buffer, std::size_t count) {
  auto* const destination = static_cast<unsigned char*>(buffer);
  std::size_t done = 0;
  while (done < count && Peek() != kEndOfStream) {
    const std::size_t part = std::min(count - done, static_cast<std::size_t>(end_ - next_));
    std::copy_n(next_, part, destination + done);
    next_ += part;
    done += part;
  }
  return done;
}

int Stream::Scan(const char* format, void* destination, std::size_t size) {
  const int result = ScanNumber(*this, format, destination, size);
  RequireSuccess(result == 1 || IsEof());
  return result;
}

int Stream::Print(const char* format, const void* value, std::size_t size) {
  const int count = PrintNumber(*this, format, value, size);
  RequireSuccess(count >= 1);
  return count;
}

}  // namespace Vell::IO
