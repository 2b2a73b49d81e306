#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/io/stream.h"

namespace Testing {

/// A stream over bytes in memory, for tests that read very many short texts. It reads ahead in
/// windows of a chosen size, so that every place of a block boundary can be tried on a short text,
/// and it can be made to fail.
class MemoryStream final : public Vell::IO::Stream {
 public:
  static constexpr std::size_t kWhole = static_cast<std::size_t>(-1);

  explicit MemoryStream(std::string_view content = "", std::size_t windowSize = kWhole,
                        std::string_view name = "");

  const std::string& Content() const { return content_; }
  /// How often Flush was called.
  int FlushCount() const { return flushCount_; }
  /// From now on writing and flushing fail.
  void FailWrites() { writesFail_ = true; }
  /// Reading ahead over the byte at `offset` fails; offset Content().size() is the end itself.
  void FailReadAt(std::size_t offset) { failingOffset_ = offset; }
  /// True once a read failed.
  bool HasFailed() const { return hasFailed_; }

  void Flush() override;
  void Close() override { Flush(); }
  void Unget(int byte) override;
  void Write(const void* buffer, std::size_t count) override;
  bool IsEof() const noexcept override { return isEof_; }
  std::int64_t Length() override { return static_cast<std::int64_t>(content_.size()); }
  std::int64_t Tell() override { return static_cast<std::int64_t>(Position()); }
  void Seek(std::int64_t offset, int origin) override;
  using Stream::Seek;

 protected:
  int ReadByteOfNextBlock() override;

 private:
  std::size_t Position() const;
  void MoveTo(std::size_t position);

  std::string content_;
  std::size_t windowSize_;
  std::size_t windowEnd_ = 0;  // offset of the byte after the window
  std::size_t failingOffset_ = kWhole;
  int flushCount_ = 0;
  bool isEof_ = false;
  bool writesFail_ = false;
  bool hasFailed_ = false;
};

}  // namespace Testing
