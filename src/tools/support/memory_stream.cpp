#include "tools/support/memory_stream.h"

#include <algorithm>
#include <utility>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/number_scanner.h"
#include "messages/error_texts.h"

namespace Hovar {
namespace {

constexpr std::string_view kReturnLineFeed = "\r\n";

void Require(bool succeeded) {
  if (!succeeded) {
    throw Vell::Exceptions::IOException(Messages::kErrors.ioException);
  }
}

}  // namespace

// The window lies in the bytes themselves. Where returns are dropped it ends before each of them, so
// that the place of the window's next byte is always its place in the file.

MemoryStream::MemoryStream(std::string bytes, std::string_view name,
                           Vell::IO::Platform::LineEnds textLineEnds)
    : Stream(Vell::IO::Mode::kReadText, Vell::String(name)),
      bytes_(std::move(bytes)),
      dropsReturns_(textLineEnds == Vell::IO::Platform::LineEnds::kWithCarriageReturns) {
  next_ = end_ = reinterpret_cast<unsigned char*>(bytes_.data());
}

int MemoryStream::ReadByteOfNextBlock() {
  const auto start = static_cast<std::size_t>(next_ - Begin());
  const std::string_view rest = std::string_view(bytes_).substr(start);
  if (rest.empty()) {
    isEof_ = true;
    return Vell::IO::kEndOfStream;
  }
  std::size_t size = rest.size();
  if (dropsReturns_) {
    const std::size_t skipped = rest.starts_with(kReturnLineFeed) ? 1 : 0;
    next_ += skipped;
    size = std::min(rest.find(kReturnLineFeed, skipped), rest.size()) - skipped;
  }
  end_ = next_ + size;
  return *next_++;
}

int MemoryStream::Peek() {
  if (next_ != end_) {
    return *next_;
  }
  const int byte = ReadByteOfNextBlock();
  next_ -= byte != Vell::IO::kEndOfStream ? 1 : 0;
  return byte;
}

/// True when the window has been filled from the line feed of a pair on, or that was put back.
bool MemoryStream::IsWithinPair() const noexcept {
  return dropsReturns_ && next_ != end_ && next_ != Begin() && next_[-1] == '\r' && *next_ == '\n';
}

void MemoryStream::Unget(int byte) {
  if (IsWithinPair()) {
    end_ = --next_;
  }
  Require(byte != Vell::IO::kEndOfStream && next_ != Begin());
  *--next_ = static_cast<unsigned char>(byte);
  isEof_ = false;
}

std::size_t MemoryStream::Read(void* buffer, std::size_t count) {
  auto* const destination = static_cast<unsigned char*>(buffer);
  std::size_t done = 0;
  while (done < count && Peek() != Vell::IO::kEndOfStream) {
    const std::size_t part = std::min(count - done, static_cast<std::size_t>(end_ - next_));
    std::copy_n(next_, part, destination + done);
    next_ += part;
    done += part;
  }
  return done;
}

void MemoryStream::Write(const void* /*buffer*/, std::size_t /*count*/) { Require(false); }

int MemoryStream::Scan(const char* format, void* destination, std::size_t size) {
  const int result = Vell::IO::ScanNumber(*this, format, destination, size);
  Require(result == 1 || isEof_);
  return result;
}

int MemoryStream::Print(const char* /*format*/, const void* /*value*/, std::size_t /*size*/) {
  Require(false);
  return 0;
}

std::int64_t MemoryStream::Tell() { return next_ - Begin() - (IsWithinPair() ? 1 : 0); }

void MemoryStream::Seek(std::int64_t offset, int origin) {
  const std::int64_t start = origin == 1 ? Tell() : origin == 2 ? Length() : 0;
  Require(start + offset >= 0);
  next_ = end_ =
      reinterpret_cast<unsigned char*>(bytes_.data()) + std::min(start + offset, Length());
  isEof_ = false;
}

}  // namespace Hovar
