#include "support/running_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace Testing {
namespace {

constexpr std::chrono::seconds kPatience{60};

/// The descriptors that a process starts with as its standard streams; -1 for a closed one.
using StandardStreams = std::array<int, 3>;

int Checked(int result, const char* what) {
  if (result < 0) {
    throw std::runtime_error(what);
  }
  return result;
}

std::pair<int, int> NewPipe() {
  std::array<int, 2> ends{};
  Checked(pipe2(ends.data(), O_CLOEXEC), "pipe2");
  return {ends[0], ends[1]};
}

void CloseIfOpen(int& descriptor) {
  if (descriptor >= 0) {
    close(descriptor);
    descriptor = -1;
  }
}

void WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written <= 0) {
      return;  // the process has gone
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

int NewFileWith(std::string_view text) {
  std::string name = (std::filesystem::temp_directory_path() / "hovar-input-XXXXXX").string();
  const int file = Checked(mkostemp(name.data(), O_CLOEXEC), "mkostemp");
  unlink(name.c_str());
  WriteAll(file, text);
  lseek(file, 0, SEEK_SET);
  return file;
}

std::string ReadAvailable(int descriptor) {
  std::string text;
  pollfd ready{descriptor, POLLIN, 0};
  std::array<char, 4096> block{};
  while (poll(&ready, 1, 0) > 0 && (ready.revents & POLLIN) != 0) {
    const ssize_t count = read(descriptor, block.data(), block.size());
    if (count <= 0) {
      break;
    }
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  return text;
}

/// The child's half of the start.
[[noreturn]] void BecomeCommand(const char* program, char* const* arguments,
                                char* const* environment, const char* folder,
                                const StandardStreams& streams, std::int64_t fileSizeLimit) {
  // As a shell starts it, whatever the test's own parent ignores.
  std::signal(SIGPIPE, SIG_DFL);
  std::signal(SIGXFSZ, SIG_DFL);
  if (fileSizeLimit >= 0) {
    const auto size = static_cast<rlim_t>(fileSizeLimit);
    const rlimit limit{size, size};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  for (int stream = 0; stream < 3; ++stream) {
    const int source = streams[static_cast<std::size_t>(stream)];
    if (source < 0) {
      close(stream);
    } else {
      dup2(source, stream);
    }
  }
  if (chdir(folder) == 0) {
    execve(program, arguments, environment);
  }
  _exit(127);
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> EnvironmentWith(
    const std::vector<std::pair<std::string, std::string>>& additions) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string_view text(*variable);
    const bool isReplaced = std::any_of(
        additions.begin(), additions.end(),
        [text](const auto& addition) { return text.starts_with(addition.first + "="); });
    if (!isReplaced) {
      variables.emplace_back(text);
    }
  }
  for (const auto& [name, value] : additions) {
    variables.push_back(name + "=" + value);
  }
  return variables;
}

}  // namespace

Process::Process(const Command& command) : deadline_(Clock::now() + kPatience) {
  std::signal(SIGPIPE, SIG_IGN);
  StandardStreams streams{-1, -1, -1};
  switch (command.input) {
    case Input::kNull:
      streams[0] = Checked(open("/dev/null", O_RDONLY | O_CLOEXEC), "/dev/null");
      break;
    case Input::kClosed:
      break;
    case Input::kText:
    case Input::kOpenPipe: {
      const auto [reader, writer] = NewPipe();
      streams[0] = reader;
      inputPipe_ = writer;
      WriteAll(inputPipe_, command.inputText);
      if (command.input == Input::kText) {
        CloseIfOpen(inputPipe_);
      }
      break;
    }
    case Input::kFile:
      streams[0] = NewFileWith(command.inputText);
      break;
    case Input::kTerminal:
      terminal_ = Checked(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "posix_openpt");
      grantpt(terminal_);
      unlockpt(terminal_);
      terminalLine_ = Checked(open(ptsname(terminal_), O_RDWR | O_NOCTTY | O_CLOEXEC), "terminal");
      streams[0] = fcntl(terminalLine_, F_DUPFD_CLOEXEC, 3);
      settingsAtStart_ = TerminalSettings();
      WriteAll(terminal_, command.inputText);
      break;
  }
  const auto openOutput = [&streams](Output kind, std::size_t stream, int& reader) {
    if (kind == Output::kFull) {
      streams[stream] = Checked(open("/dev/full", O_WRONLY | O_CLOEXEC), "/dev/full");
    } else if (kind == Output::kBroken) {
      const auto [readEnd, writeEnd] = NewPipe();
      close(readEnd);
      streams[stream] = writeEnd;
    } else if (kind == Output::kWithStandard) {
      streams[stream] = fcntl(streams[1], F_DUPFD_CLOEXEC, 3);
    } else if (kind == Output::kCaptured) {
      const auto [readEnd, writeEnd] = NewPipe();
      reader = readEnd;
      streams[stream] = writeEnd;
    }
  };
  openOutput(command.output, 1, outputPipe_);
  openOutput(command.error, 2, errorPipe_);

  std::vector<std::string> arguments = command.arguments;
  std::vector<std::string> environment = EnvironmentWith(command.environment);
  const std::vector<char*> argumentPointers = Pointers(arguments);
  const std::vector<char*> environmentPointers = Pointers(environment);
  const std::string program = command.program.string();
  const std::string folder = command.folder.string();
  const auto becomeProgram = [&] {
    BecomeCommand(program.c_str(), argumentPointers.data(), environmentPointers.data(),
                  folder.c_str(), streams, command.fileSizeLimit);
  };
  if (command.input == Input::kTerminal) {
    StartOnTerminal(becomeProgram, streams);
  } else {
    id_ = Checked(fork(), "fork");
    if (id_ == 0) {
      becomeProgram();
    }
  }
  for (int& stream : streams) {
    CloseIfOpen(stream);
  }
}

void Process::StartOnTerminal(const std::function<void()>& becomeProgram,
                              StandardStreams& streams) {
  const auto [reportReader, reportWriter] = NewPipe();
  const auto [stayReader, stayWriter] = NewPipe();
  leader_ = Checked(fork(), "fork");
  if (leader_ == 0) {
    setsid();
    ioctl(streams[0], TIOCSCTTY, 0);
    const int program = fork();
    if (program == 0) {
      becomeProgram();
    }
    // Signals of the terminal, its end included, are the program's matter.
    for (const int signal : {SIGINT, SIGQUIT, SIGHUP, SIGTERM, SIGTTOU}) {
      std::signal(signal, SIG_IGN);
    }
    for (int* descriptor : {&streams[1], &streams[2], &terminal_, &outputPipe_, &errorPipe_}) {
      CloseIfOpen(*descriptor);
    }
    close(stayWriter);
    int status = 0;
    char byte = 0;
    const bool isReported = write(reportWriter, &program, sizeof program) == sizeof program &&
                            waitpid(program, &status, 0) == program &&
                            write(reportWriter, &status, sizeof status) == sizeof status;
    _exit(isReported && read(stayReader, &byte, 1) == 0 ? 0 : 1);
  }
  close(reportWriter);
  close(stayReader);
  leaderReports_ = reportReader;
  leaderStays_ = stayWriter;
  if (read(leaderReports_, &id_, sizeof id_) != sizeof id_) {
    throw std::runtime_error("no process on the terminal");
  }
}

Process::~Process() {
  if (!isReaped_) {
    kill(id_, SIGKILL);
    if (leader_ < 0) {
      waitpid(id_, nullptr, 0);
    }
  }
  for (int* descriptor : {&terminal_, &terminalLine_, &inputPipe_, &outputPipe_, &errorPipe_,
                          &leaderReports_, &leaderStays_}) {
    CloseIfOpen(*descriptor);
  }
  if (leader_ >= 0) {
    waitpid(leader_, nullptr, 0);
  }
}

bool Process::TakeStatus(int& status) {
  if (leader_ < 0) {
    return waitpid(id_, &status, WNOHANG) == id_;
  }
  pollfd ready{leaderReports_, POLLIN, 0};
  return poll(&ready, 1, 0) > 0 && read(leaderReports_, &status, sizeof status) == sizeof status;
}

void Process::ReadOnce(Clock::time_point deadline) {
  // A closed pipe stands as -1, which poll passes over.
  std::array<pollfd, 2> pipes{{{outputPipe_, POLLIN, 0}, {errorPipe_, POLLIN, 0}}};
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
  if (poll(pipes.data(), pipes.size(), static_cast<int>(std::max<long>(left.count(), 0))) <= 0) {
    return;
  }
  const auto take = [](const pollfd& ready, int& pipe, std::string& text) {
    std::array<char, 65536> block{};
    if (ready.revents != 0) {
      const ssize_t count = read(pipe, block.data(), block.size());
      if (count > 0) {
        text.append(block.data(), static_cast<std::size_t>(count));
      } else {
        CloseIfOpen(pipe);
      }
    }
  };
  take(pipes[0], outputPipe_, result_.output);
  take(pipes[1], errorPipe_, result_.error);
}

bool Process::Reap(Clock::time_point deadline) {
  while (!isReaped_) {
    int status = 0;
    if (TakeStatus(status)) {
      isReaped_ = true;
      result_.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      result_.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    } else if (Clock::now() >= deadline) {
      return false;
    } else {
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  }
  return true;
}

bool Process::WaitForOutput(std::string_view text) {
  while (result_.output.find(text) == std::string::npos) {
    if (outputPipe_ < 0 || Clock::now() >= deadline_) {
      return false;
    }
    ReadOnce(deadline_);
  }
  return true;
}

void Process::CloseOutput() { CloseIfOpen(outputPipe_); }

bool Process::EndsWithin(std::chrono::milliseconds time) {
  const Clock::time_point deadline = Clock::now() + time;
  while (IsReading() && Clock::now() < deadline) {
    ReadOnce(deadline);
  }
  return Reap(deadline);
}

void Process::Type(std::string_view text) const {
  WriteAll(terminal_ >= 0 ? terminal_ : inputPipe_, text);
}

void Process::Signal(int signal) const {
  if (!isReaped_) {
    kill(id_, signal);
  }
}

ProcessResult Process::Wait() {
  while (IsReading() && Clock::now() < deadline_) {
    ReadOnce(deadline_);
  }
  if (!Reap(deadline_)) {
    ADD_FAILURE() << "the process did not end; its output so far: " << result_.output;
    kill(id_, SIGKILL);
    Reap(Clock::now() + kPatience);
  }
  return result_;
}

std::string Process::TerminalText() const { return ReadAvailable(terminal_); }

int Process::UnreadTerminalBytes() const {
  // Without line editing typed bytes can be counted as they are.
  termios settings{};
  tcgetattr(terminalLine_, &settings);
  termios raw = settings;
  raw.c_lflag &= ~static_cast<tcflag_t>(ICANON);
  tcsetattr(terminalLine_, TCSANOW, &raw);
  int count = -1;
  ioctl(terminalLine_, FIONREAD, &count);
  tcsetattr(terminalLine_, TCSANOW, &settings);
  return count;
}

std::string Process::TerminalSettings() const {
  termios settings{};
  tcgetattr(terminalLine_, &settings);
  std::string text;
  for (const tcflag_t flags :
       {settings.c_iflag, settings.c_oflag, settings.c_cflag, settings.c_lflag}) {
    text += std::to_string(flags) + " ";
  }
  for (const cc_t character : settings.c_cc) {
    text += std::to_string(character) + " ";
  }
  return text;
}

ProcessResult RunProcess(const Command& command) { return Process(command).Wait(); }

}  // namespace Testing
