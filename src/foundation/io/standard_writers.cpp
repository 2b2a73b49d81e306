#include "foundation/io/standard_writers.h"

#include <array>
#include <utility>

#include "foundation/io/file_stream.h"

namespace Vell::IO {
namespace {

/// A standard stream with its buffer and its writer, all in one static object.
class StandardStream {
 public:
  explicit StandardStream(Platform::FileHandle file)
      : stream_(file, Mode::kWriteText, buffer_),
        writer_(SharedHandle<Stream>(streamCount_, stream_), LineEnd::kFlush) {}

  FileStream& File() noexcept { return stream_; }
  TextWriter& Writer() noexcept { return writer_; }
  SharedHandle<TextWriter> Handle() noexcept {
    ++writerCount_.count;
    return SharedHandle<TextWriter>(writerCount_, writer_);
  }

 private:
  // Both counts begin at 1 and so never fall to 0: static objects are not released.
  SharedCount streamCount_{.count = 2};
  SharedCount writerCount_;
  std::array<unsigned char, 8192> buffer_{};
  FileStream stream_;
  TextWriter writer_;
};

StandardStream& Output() {
  static StandardStream output(Platform::kStandardOutput);
  return output;
}

StandardStream& Error() {
  static StandardStream error(Platform::kStandardError);
  return error;
}

// The writers that stand in for the two, if any.
constinit TextWriter* otherOutput = nullptr;
constinit TextWriter* otherError = nullptr;

}  // namespace

TextWriter& StandardOutput() { return otherOutput != nullptr ? *otherOutput : Output().Writer(); }
TextWriter& StandardError() { return otherError != nullptr ? *otherError : Error().Writer(); }

StandardWritersRedirection::StandardWritersRedirection(TextWriter& output,
                                                       TextWriter& error) noexcept
    : earlierOutput_(std::exchange(otherOutput, &output)),
      earlierError_(std::exchange(otherError, &error)) {}

StandardWritersRedirection::~StandardWritersRedirection() {
  otherOutput = earlierOutput_;
  otherError = earlierError_;
}

SharedHandle<TextWriter> StandardOutputHandle() { return Output().Handle(); }
bool TryFlushStandardOutput() noexcept { return Output().File().TryFlush(); }

}  // namespace Vell::IO
