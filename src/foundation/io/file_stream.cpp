#include "foundation/io/file_stream.h"

#include <algorithm>

#include "foundation/exceptions/exceptions.h"
#include "foundation/memory.h"
#include "messages/error_texts.h"

namespace Vell::IO {
namespace {

constexpr std::size_t kPushBackRoom = 8;
constexpr std::size_t kBlockSize = 65536;

Platform::Access AccessOf(std::uint32_t mode) {
  const bool isRegularOnly = (mode & Mode::kRegular) != 0;
  const std::uint32_t kind = mode & ~0xFFU & ~Mode::kRegular;
  if (isRegularOnly && (mode & 0xFFU) != Mode::kRead) {
    throw Exceptions::IOException(Messages::kErrors.invalidOpenMode);
  }
  if (kind == Mode::kText || kind == Mode::kBinary) {
    switch (mode & 0xFFU) {
      case Mode::kRead:
        return isRegularOnly ? Platform::Access::kReadRegular : Platform::Access::kRead;
      case Mode::kWrite:
        return Platform::Access::kWrite;
      case Mode::kReadWriteExisting:
        return Platform::Access::kReadWriteExisting;
      case Mode::kReadAppend:
        return Platform::Access::kReadAppend;
      case Mode::kReadWriteCreate:
        return Platform::Access::kReadWriteCreate;
      default:
        break;
    }
  }
  throw Exceptions::IOException(Messages::kErrors.invalidOpenMode);
}

}  // namespace

FileStream::FileStream(const String& path, std::uint32_t mode, Platform::LineEnds textLineEnds)
    : Stream(mode, path),
      owns_(true),
      returns_((mode & Mode::kText) != 0 &&
               textLineEnds == Platform::LineEnds::kWithCarriageReturns) {
  const Platform::Access access = AccessOf(mode);
  constexpr std::size_t kSize = kPushBackRoom + kBlockSize;
  buffer_ = {AllocateArray<unsigned char>(kSize), kSize};
  file_ = Platform::OpenFile(path.CStr(), access);
  if (file_ == Platform::kNoFile) {
    ReleaseBlock(buffer_.data());
    throw Exceptions::FileOpenException(path.CStr());
  }
}

FileStream::FileStream(Platform::FileHandle file, std::uint32_t mode,
                       std::span<unsigned char> buffer)
    : Stream(mode, String()),
      file_(file),
      buffer_(buffer),
      position_(Platform::SeekFile(file, 0, Platform::Origin::kCurrent)),
      isPositionAsked_(true),
      returns_(false) {}

FileStream::~FileStream() {
  TryFlush();
  if (owns_) {
    if (file_ != Platform::kNoFile) {
      Platform::CloseFile(file_);
    }
    ReleaseBlock(buffer_.data());
  }
}

void FileStream::Close() {
  bool isStored = TryFlush();
  if (owns_ && file_ != Platform::kNoFile) {
    isStored = (Platform::CloseFile(file_) || !CanWrite()) && isStored;
    file_ = Platform::kNoFile;
  }
  RequireSuccess(isStored);
}

unsigned char* FileStream::Block() const noexcept { return buffer_.data() + kPushBackRoom; }
std::size_t FileStream::BlockSize() const noexcept { return buffer_.size() - kPushBackRoom; }
bool FileStream::CanRead() const noexcept { return (OpenMode() & 0xFFU) != Mode::kWrite; }
bool FileStream::CanWrite() const noexcept { return (OpenMode() & 0xFFU) != Mode::kRead; }

std::size_t FileStream::Pending() const noexcept {
  return room_ != nullptr ? static_cast<std::size_t>(room_ - Block()) : 0;
}

bool FileStream::TryFlush() noexcept {
  const std::size_t size = Pending();
  room_ = roomEnd_ = nullptr;  // what could not be written once is not tried again
  if (size == 0) {
    return true;
  }
  if (!Platform::WriteFile(file_, Block(), size)) {
    return false;
  }
  if ((OpenMode() & 0xFFU) == Mode::kReadAppend) {
    AskPosition(0, Platform::Origin::kCurrent);
  } else if (position_ >= 0) {
    position_ += static_cast<std::int64_t>(size);
  }
  return true;
}

void FileStream::Flush() { RequireSuccess(TryFlush()); }

void FileStream::DropWindow() noexcept {
  next_ = end_ = Block();
  isBlockAltered_ = false;
  returns_.Clear();
}

bool FileStream::FillWindow() {
  RequireSuccess(CanRead() && file_ != Platform::kNoFile);
  Flush();
  returns_.MoveToStart(PlaceOf(end_));
  next_ = end_ = Block();
  isBlockAltered_ = false;
  isEof_ = !ReadAfterWindow();
  return !isEof_;
}

bool FileStream::WidenWindow() {
  if (next_ == end_) {
    return FillWindow();
  }
  if (next_ < Block() || file_ == Platform::kNoFile) {
    return false;
  }
  returns_.MoveToStart(PlaceOf(next_));
  end_ = std::copy(next_, end_, Block());
  next_ = Block();
  return ReadAfterWindow();
}

bool FileStream::ReadAfterWindow() {
  const unsigned char* const before = end_;
  std::int64_t count = 0;
  do {  // again when all that came is a carriage return, which is held
    const std::size_t room = BlockSize() - static_cast<std::size_t>(end_ - Block());
    const std::size_t held = returns_.HeldCount();
    if (room <= held) {
      return false;
    }
    std::fill_n(end_, held, '\r');
    count = Platform::ReadFile(file_, end_ + held, room - held);
    RequireSuccess(count >= 0);
    if (position_ >= 0) {
      position_ += count;
    }
    end_ = returns_.Drop(Block(), end_, end_ + held + count);
  } while (end_ == before && count > 0);
  return end_ != before;
}

int FileStream::ReadByteOfNextBlock() { return FillWindow() ? *next_++ : kEndOfStream; }

void FileStream::Unget(int byte) {
  RequireSuccess(byte != kEndOfStream && CanRead() && Pending() == 0);
  if (next_ == nullptr) {
    DropWindow();
  }
  RequireSuccess(next_ != buffer_.data());
  --next_;
  isBlockAltered_ = isBlockAltered_ || next_ < Block() || *next_ != byte;
  *next_ = static_cast<unsigned char>(byte);
  isEof_ = false;
}

void FileStream::StartWriting() {
  RequireSuccess(CanWrite() && file_ != Platform::kNoFile);
  if (next_ != end_) {
    Seek(0, 1);  // the system's position is ahead of ours by the window
  }
  DropWindow();
  if ((OpenMode() & 0xFFU) == Mode::kReadAppend) {
    AskPosition(0, Platform::Origin::kEnd);
  }
  room_ = Block();
  roomEnd_ = Block() + BlockSize();
}

void FileStream::Write(const void* buffer, std::size_t count) {
  const auto* source = static_cast<const unsigned char*>(buffer);
  while (count > 0) {
    if (room_ == roomEnd_) {
      Flush();
      StartWriting();
    }
    const std::size_t part = std::min(count, static_cast<std::size_t>(roomEnd_ - room_));
    room_ = std::copy_n(source, part, room_);
    source += part;
    count -= part;
  }
}

std::int64_t FileStream::Length() {
  Flush();
  const std::int64_t length = Platform::FileLength(file_);
  RequireSuccess(length >= 0);
  return length;
}

void FileStream::AskPosition(std::int64_t offset, Platform::Origin origin) noexcept {
  position_ = Platform::SeekFile(file_, offset, origin);
  isPositionAsked_ = true;
}

/// A pipe has no position, whatever number of bytes was read.
bool FileStream::HasPosition() noexcept {
  if (!isPositionAsked_) {
    AskPosition(0, Platform::Origin::kCurrent);
  }
  return position_ >= 0;
}

std::int64_t FileStream::TellOr(std::int64_t other) noexcept {
  return HasPosition() ? position_ - (end_ - next_) - returns_.CountFrom(PlaceOf(next_)) +
                             static_cast<std::int64_t>(Pending())
                       : other;
}

std::int64_t FileStream::Tell() {
  const std::int64_t position = TellOr(-1);
  RequireSuccess(position >= 0);
  return position;
}

void FileStream::Seek(std::int64_t offset, int origin) {
  Flush();
  if (origin == 1) {
    offset += Tell();
  } else if (origin == 2) {
    offset += Length();
  }
  RequireSuccess(offset >= 0);
  const std::int64_t distance = position_ - offset;  // from the target to the window's end
  const bool isBlockOfFile = !isBlockAltered_ && returns_.IsEmpty();
  if (next_ != nullptr && isBlockOfFile && CanRead() && !CanWrite() && distance >= 0 &&
      distance <= end_ - Block()) {
    RequireSuccess(HasPosition());
    next_ = end_ - distance;
  } else {
    AskPosition(offset, Platform::Origin::kStart);
    DropWindow();
    RequireSuccess(position_ >= 0);
  }
  isEof_ = false;
}

}  // namespace Vell::IO
