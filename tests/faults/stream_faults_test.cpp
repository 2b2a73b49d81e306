// Every operation of a file stream with the system call below it failing.

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <string>

#include "faults/system_calls.h"
#include "foundation/io/file_stream.h"
#include "support/files.h"
#include "support/raised.h"

namespace Testing {
namespace {

namespace Mode = Vell::IO::Mode;
using Vell::String;
using Vell::Exceptions::FileOpenException;
using Vell::Exceptions::IOException;
using Vell::IO::FileStream;

constexpr std::uint32_t kUpdate = Mode::kReadWriteExisting | Mode::kBinary;

/// More than two blocks of numbers.
const std::string& Content() {
  static const std::string content = [] {
    std::string text;
    for (int i = 0; i < 80'000; ++i) {
      text += i % 2 == 0 ? "7 " : "8\n";
    }
    return text;
  }();
  return content;
}

struct Operation {
  const char* name;
  SystemCall call;
  std::uint32_t mode;
  std::function<void(FileStream&)> prepare;
  std::function<void(FileStream&)> use;
};

void Nothing(FileStream& /*stream*/) {}

void FillBlock(FileStream& stream) {
  const std::string block(65536, 'x');
  stream.Write(block.data(), block.size());
}

void WriteSome(FileStream& stream) { stream.Write("abc", 3); }

const std::vector<Operation>& Operations() {
  static const std::vector<Operation> operations = {
      {"Peek", SystemCall::kRead, Mode::kReadText, Nothing, [](FileStream& s) { s.Peek(); }},
      {"ReadByte", SystemCall::kRead, Mode::kReadText, Nothing,
       [](FileStream& s) { s.ReadByte(); }},
      {"Window", SystemCall::kRead, Mode::kReadText, Nothing, [](FileStream& s) { s.Window(); }},
      {"WidenWindow", SystemCall::kRead, Mode::kReadText,
       [](FileStream& s) {
         s.Window();
         s.TakeFromWindow(1000);
       },
       [](FileStream& s) { s.WidenWindow(); }},
      {"Read", SystemCall::kRead, Mode::kReadText, [](FileStream& s) { s.ReadByte(); },
       [](FileStream& s) {
         std::string bytes(100'000, '\0');
         s.Read(bytes.data(), bytes.size());
       }},
      {"Scan", SystemCall::kRead, Mode::kReadText, Nothing,
       [](FileStream& s) {
         std::int32_t value = 0;
         s.Scan("%d", &value, sizeof value);
       }},
      {"WriteByte", SystemCall::kWrite, Mode::kWriteText, FillBlock,
       [](FileStream& s) { s.WriteByte('x'); }},
      {"Write", SystemCall::kWrite, Mode::kWriteText, FillBlock, WriteSome},
      {"Put", SystemCall::kWrite, Mode::kWriteText, FillBlock, [](FileStream& s) { s.Put("x"); }},
      {"Print", SystemCall::kWrite, Mode::kWriteText, FillBlock,
       [](FileStream& s) {
         const std::int32_t value = 12;
         s.Print("%d", &value, sizeof value);
       }},
      {"Flush", SystemCall::kWrite, Mode::kWriteText, WriteSome, [](FileStream& s) { s.Flush(); }},
      {"reading what follows what was written", SystemCall::kWrite, kUpdate, WriteSome,
       [](FileStream& s) { s.ReadByte(); }},
      {"Close, writing", SystemCall::kWrite, Mode::kWriteText, WriteSome,
       [](FileStream& s) { s.Close(); }},
      {"Close", SystemCall::kClose, Mode::kWriteText, WriteSome, [](FileStream& s) { s.Close(); }},
      {"Seek", SystemCall::kSeek, kUpdate, [](FileStream& s) { s.ReadByte(); },
       [](FileStream& s) { s.Seek(0); }},
      {"Seek to another block", SystemCall::kSeek, Mode::kReadText,
       [](FileStream& s) { s.ReadByte(); }, [](FileStream& s) { s.Seek(150'000); }},
      {"Seek, writing", SystemCall::kWrite, kUpdate, WriteSome, [](FileStream& s) { s.Seek(0); }},
      {"Seek from the end", SystemCall::kLength, Mode::kReadText, Nothing,
       [](FileStream& s) { s.Seek(0, 2); }},
      {"writing after a read", SystemCall::kSeek, kUpdate, [](FileStream& s) { s.ReadByte(); },
       WriteSome},
      {"Length", SystemCall::kLength, Mode::kReadText, Nothing, [](FileStream& s) { s.Length(); }},
      {"Length, writing", SystemCall::kWrite, kUpdate, WriteSome,
       [](FileStream& s) { s.Length(); }},
      {"Tell", SystemCall::kSeek, Mode::kReadAppend | Mode::kBinary, WriteSome,
       [](FileStream& s) {
         s.Flush();
         s.Tell();
       }},
  };
  return operations;
}

class StreamFaultTest : public testing::Test {
 protected:
  StreamFaultTest() : path_(folder_.Write("file", Content())) {}

  String Path() const { return String(std::string_view(path_)); }

  /// Uses a stream while one call fails.
  void Use(FileStream& stream, const Operation& operation, int error) {
    faults_.Clear();
    faults_.Arm({.only = operation.call, .failing = 1, .error = error});
    operation.use(stream);
  }

  ScratchFolder folder_;
  std::string path_;
  SystemCallFaults faults_;
};

TEST_F(StreamFaultTest, AFailingCallIsAnIOException) {
  for (const Operation& operation : Operations()) {
    for (const int error : {EIO, ENOSPC}) {
      SCOPED_TRACE(operation.name + (" " + std::to_string(error)));
      FileStream stream(Path(), operation.mode);
      operation.prepare(stream);
      ExpectRaises<IOException>("IO Exception", [&] { Use(stream, operation, error); });
      faults_.Disarm();
      EXPECT_TRUE(faults_.Report().hasFired);
    }
  }
}

TEST_F(StreamFaultTest, AnInterruptedCallIsNoFailure) {
  for (const Operation& operation : Operations()) {
    SCOPED_TRACE(operation.name);
    folder_.Write("file", Content());
    FileStream stream(Path(), operation.mode);
    operation.prepare(stream);
    EXPECT_NO_THROW(Use(stream, operation, EINTR));
    faults_.Disarm();
    EXPECT_TRUE(faults_.Report().hasFired);
  }
}

TEST_F(StreamFaultTest, OpeningNamesTheFile) {
  folder_.Write("file", "abc");
  for (const std::uint32_t mode : {Mode::kReadText, Mode::kWriteText, kUpdate}) {
    ExpectRaises<FileOpenException>("File \"" + path_ + "\" can not be opened", [&] {
      faults_.Arm({.only = SystemCall::kOpen, .failing = 1, .error = EIO});
      FileStream(Path(), mode);
    });
    faults_.Disarm();
    EXPECT_EQ(folder_.Read("file"), "abc");
    faults_.Clear();
  }
}

TEST_F(StreamFaultTest, ClosingAFileThatWasOnlyReadLosesNothing) {
  FileStream stream(Path(), Mode::kReadText);
  stream.ReadByte();
  faults_.Arm({.only = SystemCall::kClose, .failing = 1, .error = EIO});
  OutputCapture capture;
  EXPECT_NO_THROW(stream.Close());
  EXPECT_TRUE(faults_.Report().hasFired);
  EXPECT_EQ(capture.TakeError(), "");
}

TEST_F(StreamFaultTest, AReadThatFailedOnceLosesNothing) {
  FileStream stream(Path(), Mode::kReadText);
  std::string bytes(65536, '\0');
  stream.Read(bytes.data(), bytes.size());
  ExpectRaises<IOException>("IO Exception", [&] {
    faults_.Arm({.only = SystemCall::kRead, .failing = 1, .error = EIO});
    stream.ReadByte();
  });
  faults_.Disarm();
  EXPECT_EQ(stream.Tell(), 65536);
  for (int byte = stream.ReadByte(); byte >= 0; byte = stream.ReadByte()) {
    bytes += static_cast<char>(byte);
  }
  EXPECT_TRUE(bytes == Content());
}

TEST_F(StreamFaultTest, PuttingBackNeedsRoomAndAStreamThatReads) {
  FileStream stream(Path(), Mode::kReadText);
  stream.ReadByte();
  int room = 0;
  ExpectRaises<IOException>("IO Exception", [&] {
    for (; room < 1000; ++room) {
      stream.Unget('x');
    }
  });
  EXPECT_GE(room, 1);
  for (int i = 0; i < room; ++i) {
    EXPECT_EQ(stream.ReadByte(), 'x');
  }
  EXPECT_EQ(stream.ReadByte(), Content()[1]);
  FileStream written(String(std::string_view(folder_.File("new"))), Mode::kWriteText);
  ExpectRaises<IOException>("IO Exception", [&] { written.Unget('x'); });
  FileStream unsaved(Path(), kUpdate);
  unsaved.WriteByte('x');
  ExpectRaises<IOException>("IO Exception", [&] { unsaved.Unget('x'); });
}

}  // namespace
}  // namespace Testing
