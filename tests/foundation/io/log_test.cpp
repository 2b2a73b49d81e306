#include "foundation/io/log.h"

#include <gtest/gtest.h>

#include "foundation/io/standard_writers.h"
#include "support/allocation_fault.h"
#include "support/files.h"
#include "support/memory_stream.h"
#include "support/raised.h"

namespace {

using Testing::ExpectRaises;
using Testing::MemoryStream;
using Testing::ScratchFolder;
using Vell::MakeShared;
using Vell::SharedHandle;
using Vell::String;
using Vell::Exceptions::FileOpenException;
using Vell::Exceptions::IOException;
using Vell::IO::LogWriterList;
using Vell::IO::TextWriter;

/// A log with writers on streams in memory.
struct MemoryLog {
  explicit MemoryLog(int writers) {
    for (int i = 0; i < writers; ++i) {
      streams.Append(MakeShared<MemoryStream>());
      log.Attach(MakeShared<TextWriter>(streams[i]));
    }
  }

  Vell::GrowableArray<SharedHandle<MemoryStream>> streams;
  LogWriterList log;
};

TEST(LogTest, WithoutWritersLinesGoNowhere) {
  LogWriterList log;
  log.WriteLine("unheard");
  log.Close();
}

TEST(LogTest, EveryWriterGetsEveryLine) {
  MemoryLog memory(5);
  memory.log.WriteLine("Number of records: ", 12);
  memory.log.WriteLine("Tolerance ", 1e-7, ';');
  memory.log.WriteLine();
  for (const auto& stream : memory.streams) {
    EXPECT_EQ(stream->Content(), "Number of records: 12\nTolerance 1e-07;\n\n");
  }
}

TEST(LogTest, LinesGoToTheWritersInTheOrderOfTheList) {
  const auto shared = MakeShared<MemoryStream>();
  LogWriterList log;
  const auto first = MakeShared<TextWriter>(shared);
  log.Attach(first);
  log.Attach(first);
  log.WriteLine("a");
  log.WriteLine("b");
  EXPECT_EQ(shared->Content(), "a\na\nb\nb\n") << "one line goes to all writers before the next";
}

TEST(LogTest, WritersBehindAFailingOneDoNotGetTheLine) {
  MemoryLog memory(3);
  memory.log.WriteLine("before");
  memory.streams[1]->FailWrites();
  ExpectRaises<IOException>("IO Exception", [&memory] { memory.log.WriteLine("failing"); });
  EXPECT_EQ(memory.streams[0]->Content(), "before\nfailing\n");
  EXPECT_EQ(memory.streams[1]->Content(), "before\n");
  EXPECT_EQ(memory.streams[2]->Content(), "before\n");
}

TEST(LogTest, LaterWritersStartWithTheNextLineAndEarlierOnesGoOn) {
  // As in a batch, where the first log also receives the lines of the later runs.
  const ScratchFolder folder;
  LogWriterList log;
  log.AttachFile(String(std::string_view(folder.File("first.log"))));
  log.WriteLine("run 1");
  log.AttachFile(String(std::string_view(folder.File("second.log"))));
  log.WriteLine("run 2");
  EXPECT_EQ(folder.Read("first.log"), "run 1\nrun 2\n");
  EXPECT_EQ(folder.Read("second.log"), "run 2\n");
  log.Close();
  EXPECT_EQ(folder.Read("first.log"), "run 1\nrun 2\n");
  EXPECT_EQ(folder.Read("second.log"), "run 2\n");
}

TEST(LogTest, FileIsEmptiedWhenItIsAttached) {
  const ScratchFolder folder;
  const std::string file = folder.Write("old.log", "lines of an earlier day\n");
  LogWriterList log;
  log.AttachFile(String(std::string_view(file)));
  EXPECT_EQ(folder.Read("old.log"), "");
}

TEST(LogTest, LineIsInItsFileAsSoonAsItIsWritten) {
  const ScratchFolder folder;
  LogWriterList log;
  log.AttachFile(String(std::string_view(folder.File("run.log"))));
  for (int i = 0; i < 3; ++i) {
    log.WriteLine("line ", i);
    EXPECT_TRUE(folder.Read("run.log").ends_with("line " + std::to_string(i) + "\n"));
  }
}

TEST(LogTest, FileThatCannotBeMadeIsAnOpenErrorAndAttachesNothing) {
  const ScratchFolder folder;
  const std::string file = folder.File("missing") + "\\run.log";
  MemoryLog memory(1);
  ExpectRaises<FileOpenException>("File \"" + file + "\" can not be opened",
                                  [&] { memory.log.AttachFile(String(std::string_view(file))); });
  memory.log.WriteLine("goes on");
  EXPECT_EQ(memory.streams[0]->Content(), "goes on\n");
}

TEST(LogTest, ClosingDetachesAllWriters) {
  MemoryLog memory(2);
  memory.log.WriteLine("a");
  memory.log.Close();
  memory.log.WriteLine("b");
  EXPECT_EQ(memory.streams[0]->Content(), "a\n");
  EXPECT_EQ(memory.streams[1]->Content(), "a\n");
}

TEST(LogTest, ClearingDetachesAllWritersEvenFailingOnes) {
  MemoryLog memory(2);
  memory.streams[0]->FailWrites();
  memory.log.Clear();
  memory.log.WriteLine("b");
  EXPECT_EQ(memory.streams[1]->Content(), "");
}

TEST(LogTest, ClosingAFileWhoseLastBytesAreLostFails) {
  const auto stream = MakeShared<MemoryStream>();
  LogWriterList log;
  log.Attach(MakeShared<TextWriter>(stream));
  stream->FailWrites();
  ExpectRaises<IOException>("IO Exception", [&log] { log.Close(); });
}

TEST(LogTest, LogIsOneForTheProcess) { EXPECT_EQ(&Vell::IO::Log(), &Vell::IO::Log()); }

TEST(LogTest, LogAndStandardOutputShareOneStreamSoThatOrderHolds) {
  Testing::OutputCapture capture;
  LogWriterList log;
  log.Attach(Vell::IO::StandardOutputHandle());
  Vell::IO::StandardOutput().Write("direct;");
  log.WriteLine("logged");
  Vell::IO::StandardOutput().WriteLine("direct again");
  log.WriteLine("logged again");
  EXPECT_EQ(capture.TakeOutput(), "direct;logged\ndirect again\nlogged again\n");
}

TEST(LogTest, FailingAllocationIsOutOfMemory) {
  const ScratchFolder folder;
  const String file{std::string_view(folder.File("run.log"))};
  Testing::ExpectOutOfMemoryAtEachAllocation([&file] {
    LogWriterList log;
    log.AttachFile(file);
    log.WriteLine("line ", 1, 2.5);
  });
}

}  // namespace
