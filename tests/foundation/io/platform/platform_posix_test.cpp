// The platform where it shows in what POSIX systems have: descriptors, copies of a process.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "foundation/io/platform/platform.h"
#include "foundation/io/platform/processes.h"
#include "support/child_process.h"
#include "support/files.h"

namespace {

namespace Platform = Vell::IO::Platform;
using Platform::Access;
using Testing::ProcessEnd;
using Testing::RunInChild;
using Testing::ScratchFolder;

TEST(OpenFileTest, NeverGivesAStandardHandle) {
  const ScratchFolder folder;
  const std::string file = folder.Write("f", "abc");
  for (int closed = 1; closed < 8; ++closed) {  // one bit for each of the three
    SCOPED_TRACE(closed);
    const ProcessEnd end = RunInChild([&] {
      for (int handle = 0; handle < 3; ++handle) {
        if ((closed >> handle & 1) != 0) {
          Testing::CloseHandle(handle);
        }
      }
      for (const Access access : {Access::kRead, Access::kWrite, Access::kReadAppend}) {
        const Platform::FileHandle opened = Platform::OpenFile(file.c_str(), access);
        if (opened < 3 || !Testing::IsOpenHandle(static_cast<int>(opened))) {
          return 1;
        }
      }
      return 0;
    });
    EXPECT_EQ(end, ProcessEnd{0});
  }
}

TEST(OpenFileTest, OpenedFilesAreNotHandedToProgramsThatAreStarted) {
  const ScratchFolder folder;
  const std::string file = folder.Write("f", "abc");
  const ProcessEnd end = RunInChild([&] {
    const auto opened = Platform::OpenFile(file.c_str(), Access::kRead);
    const std::string path = "/proc/self/fd/" + std::to_string(opened);
    const char* const arguments[] = {"test", "-e", path.c_str(), nullptr};
    Platform::BecomeProgram("/usr/bin/test", arguments);
    return 99;
  });
  EXPECT_EQ(end, ProcessEnd{1}) << "the file is still open in the other program";
}

/// Writes three bytes into a pipe that nobody reads; true when that succeeds.
bool WriteIntoBrokenPipe() {
  Testing::Pipe pipe;
  pipe.CloseReadEnd();
  return Platform::WriteFile(pipe.WriteEnd(), "abc", 3);
}

TEST(WriteSignalsTest, AreIgnoredFromTheCallOn) {
  EXPECT_EQ(RunInChild([] {
              static_cast<void>(std::signal(SIGPIPE, SIG_DFL));
              return WriteIntoBrokenPipe() ? 1 : 0;
            }).signal,
            SIGPIPE);
  EXPECT_EQ(RunInChild([] {
              Platform::IgnoreWriteSignals();
              return WriteIntoBrokenPipe() ? 1 : 0;
            }),
            ProcessEnd{0});
}

TEST(WriteSignalsTest, ALimitForFilesMakesAWriteFailWhenTheRoomIsUsed) {
  const ScratchFolder folder;
  const std::string path = folder.File("f");
  const ProcessEnd end = RunInChild([&] {
    Platform::IgnoreWriteSignals();
    const rlimit limit{5, 5};
    setrlimit(RLIMIT_FSIZE, &limit);
    const Platform::FileHandle file = Platform::OpenFile(path.c_str(), Access::kWrite);
    return Platform::WriteFile(file, "123", 3) && !Platform::WriteFile(file, "456", 3) ? 0 : 1;
  });
  EXPECT_EQ(end, ProcessEnd{0});
  EXPECT_EQ(folder.Read("f"), "12345");
}

TEST(WriteSignalsTest, AreIgnoredByProgramsThatAreStarted) {
  const ProcessEnd end = RunInChild([] {
    Platform::IgnoreWriteSignals();
    const char* const arguments[] = {"sh", "-c", "kill -PIPE $$; kill -XFSZ $$; exit 7", nullptr};
    return Platform::WaitForProcess(Platform::StartProcess("/bin/sh", arguments, {}));
  });
  EXPECT_EQ(end, ProcessEnd{7});
}

TEST(ProgramFileTest, IsTheFileOfThisTest) {
  char path[4096];
  ASSERT_TRUE(Platform::ProgramFile(path, sizeof(path)));
  EXPECT_TRUE(std::filesystem::equivalent(path, "/proc/self/exe")) << path;
  EXPECT_EQ(path, std::filesystem::canonical(path).string());
}

TEST(BecomeProgramTest, RunsAnotherProgramWithItsExitStatus) {
  EXPECT_EQ(RunInChild([] {
              const char* const arguments[] = {"false", nullptr};
              Platform::BecomeProgram("/bin/false", arguments);
              return 99;
            }),
            ProcessEnd{1});
}

TEST(BecomeProgramTest, ReturnsWhenThereIsNoSuchProgram) {
  EXPECT_EQ(RunInChild([] {
              const char* const arguments[] = {"none", nullptr};
              Platform::BecomeProgram("/no/such/program", arguments);
              return 99;
            }),
            ProcessEnd{99});
}

TEST(StartProcessTest, WithoutAFreeDescriptorNothingIsStarted) {
  const char* const arguments[] = {"true", nullptr};
  const Testing::NoFreeDescriptors none;
  EXPECT_EQ(Platform::StartProcess("/bin/true", arguments, {}), Platform::kNoProcess);
}

TEST(WaitForProcessTest, AProcessOfAnotherIsNotWaitedFor) {
  constexpr Platform::ProcessHandle kFirstProcess = 1;
  EXPECT_EQ(Platform::WaitForProcess(kFirstProcess), -1);
}

TEST(StandardInputTest, DetachedInputIsEmpty) {
  const Testing::Pipe pipe;
  pipe.Write("typed");
  EXPECT_EQ(RunInChild([&pipe] {
              Testing::ReplaceHandle(0, pipe.ReadEnd());
              Platform::DetachStandardInput();
              char byte;
              return Platform::ReadFile(Platform::kStandardInput, &byte, 1) == 0 ? 0 : 1;
            }),
            ProcessEnd{0});
  EXPECT_EQ(pipe.ReadByte(), 't');
}

void LimitToOneProcessor() {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
  sched_setaffinity(0, sizeof one, &one);
}

TEST(ProcessorCountTest, CountsThoseThatMayBeUsed) {
  EXPECT_GE(Platform::ProcessorCount(), 1);
  EXPECT_EQ(RunInChild([] {
              LimitToOneProcessor();
              return Platform::ProcessorCount();
            }),
            (ProcessEnd{1, -1}));
}

}  // namespace
