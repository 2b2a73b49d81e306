#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <filesystem>

#include "foundation/io/platform/processes.h"
#include "support/files.h"
#include "support/process.h"

namespace Testing {
namespace {

namespace Platform = Vell::IO::Platform;
using Platform::Access;
using Platform::FileHandle;

constexpr std::chrono::seconds kPatience{60};

FileHandle Open(const std::string& path, Access access) {
  const FileHandle file = Platform::OpenFile(path.c_str(), access);
  EXPECT_NE(file, Platform::kNoFile) << path;
  return file;
}

/// The standard streams of a process. What it writes goes to files, which have room for everything.
class Streams {
 public:
  explicit Streams(const Command& command) {
    streams_.input = OpenInput(command);
    streams_.output = OpenOutput(command.output, "output");
    streams_.error = OpenOutput(command.error, "error");
  }
  ~Streams() {
    for (const FileHandle file : {streams_.input, streams_.output, writer_}) {
      Platform::CloseFile(file);
    }
    if (streams_.error != streams_.output) {
      Platform::CloseFile(streams_.error);
    }
  }
  Streams(const Streams&) = delete;
  Streams& operator=(const Streams&) = delete;

  const Platform::ProcessStreams& Get() const { return streams_; }
  std::string OutputText() const { return TextOf("output"); }
  std::string ErrorText() const { return TextOf("error"); }

 private:
  FileHandle OpenInput(const Command& command) {
    switch (command.input) {
      case Input::kNull:
        return Open("NUL", Access::kRead);
      case Input::kFile:
        return Open(folder_.Write("input", command.inputText), Access::kRead);
      case Input::kText:
      case Input::kOpenPipe:
        return OpenPipe(command);
      case Input::kClosed:
        break;
      case Input::kTerminal:
        ADD_FAILURE() << "there are no terminals for tests";
        break;
    }
    return Platform::kNoFile;
  }

  FileHandle OpenPipe(const Command& command) {
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    EXPECT_NE(CreatePipe(&reader, &writer, nullptr, 0), 0);
    writer_ = reinterpret_cast<FileHandle>(writer);
    EXPECT_TRUE(Platform::WriteFile(writer_, command.inputText.data(), command.inputText.size()));
    if (command.input == Input::kText) {
      Platform::CloseFile(writer_);
      writer_ = Platform::kNoFile;
    }
    return reinterpret_cast<FileHandle>(reader);
  }

  FileHandle OpenOutput(Output kind, const char* name) const {
    switch (kind) {
      case Output::kCaptured:
        return Open(folder_.File(name), Access::kWrite);
      case Output::kFull:
        return Open("NUL", Access::kRead);  // nothing can be written to it
      case Output::kBroken:
        return OpenBrokenPipe();
      case Output::kWithStandard:
        return streams_.output;
      case Output::kClosed:
        break;
    }
    return Platform::kNoFile;
  }

  static FileHandle OpenBrokenPipe() {
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    EXPECT_NE(CreatePipe(&reader, &writer, nullptr, 0), 0);
    CloseHandle(reader);
    return reinterpret_cast<FileHandle>(writer);
  }

  std::string TextOf(const char* name) const { return folder_.Has(name) ? folder_.Read(name) : ""; }

  ScratchFolder folder_;
  Platform::ProcessStreams streams_;
  FileHandle writer_ = Platform::kNoFile;
};

/// The folder and the environment of this process, which a new one takes over, as a command wants
/// them for one scope.
class Surroundings {
 public:
  explicit Surroundings(const Command& command)
      : command_(command), folder_(std::filesystem::current_path()) {
    std::filesystem::current_path(command.folder);
    for (const auto& [name, value] : command.environment) {
      SetEnvironmentVariableA(name.c_str(), value.c_str());
    }
  }
  ~Surroundings() {
    std::filesystem::current_path(folder_);
    for (const auto& [name, value] : command_.environment) {
      SetEnvironmentVariableA(name.c_str(), nullptr);
    }
  }
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;

 private:
  const Command& command_;
  std::filesystem::path folder_;
};

Platform::ProcessHandle Start(const Command& command, const Streams& streams) {
  std::vector<const char*> arguments;
  for (const std::string& argument : command.arguments) {
    arguments.push_back(argument.c_str());
  }
  arguments.push_back(nullptr);
  const Surroundings surroundings(command);
  const std::u8string program = command.program.u8string();
  const auto start = [&] {
    return Platform::StartProcess(reinterpret_cast<const char*>(program.c_str()), arguments.data(),
                                  streams.Get());
  };
  // One process in ten thousand dies before its first instruction on a busy machine under Wine,
  // which calls that an internal error.
  const Platform::ProcessHandle process = start();
  const bool isWinesFault =
      process == Platform::kNoProcess && GetLastError() == ERROR_INTERNAL_ERROR;
  return isWinesFault ? start() : process;
}

}  // namespace

ProcessResult RunProcess(const Command& command) {
  const Streams streams(command);
  ProcessResult result;
  const Platform::ProcessHandle process = Start(command, streams);
  if (process == Platform::kNoProcess) {
    ADD_FAILURE() << "cannot start " << command.program << ", error " << GetLastError();
    return result;
  }
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  std::optional<int> status = Platform::PollProcess(process);
  while (!status && std::chrono::steady_clock::now() < deadline) {
    Platform::Sleep(1);
    status = Platform::PollProcess(process);
  }
  if (!status) {
    ADD_FAILURE() << "the process did not end; its output so far: " << streams.OutputText();
    Platform::StopProcess(process);
    Platform::WaitForProcess(process);
  }
  result.exitStatus = status.value_or(-1);
  result.output = streams.OutputText();
  result.error = streams.ErrorText();
  return result;
}

}  // namespace Testing
