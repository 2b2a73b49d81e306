#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/io/file_stream.h"
#include "foundation/io/text_writer.h"
#include "foundation/shared_handle.h"

namespace Testing {

/// A readable stream with this content: a file of its own that is gone with the stream.
class InputStream {
 public:
  explicit InputStream(std::string_view content);
  ~InputStream();
  InputStream(const InputStream&) = delete;
  InputStream& operator=(const InputStream&) = delete;

  Vell::IO::Stream& operator*() const { return *stream_; }
  Vell::IO::Stream* operator->() const { return &*stream_; }
  const Vell::SharedHandle<Vell::IO::Stream>& Handle() const { return stream_; }
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
  Vell::SharedHandle<Vell::IO::Stream> stream_;
};

/// A writable stream whose content can be read back.
class OutputStream {
 public:
  OutputStream();
  ~OutputStream();
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;

  Vell::IO::TextWriter& Writer() { return writer_; }
  Vell::IO::Stream& operator*() const { return *stream_; }
  Vell::IO::Stream* operator->() const { return &*stream_; }
  /// Flushes and returns everything written so far.
  std::string Content();

 private:
  std::string path_;
  Vell::SharedHandle<Vell::IO::Stream> stream_;
  Vell::IO::TextWriter writer_;
};

}  // namespace Testing
