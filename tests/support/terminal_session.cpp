#include "support/terminal_session.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <sstream>

namespace Testing {
namespace {

constexpr int kPolls = 60'000;

termios Settings(int terminal) {
  termios settings{};
  EXPECT_EQ(tcgetattr(terminal, &settings), 0);
  return settings;
}

int BytesToRead(int terminal) {
  int count = -1;
  EXPECT_EQ(ioctl(terminal, FIONREAD, &count), 0);
  return count;
}

void Send(int file, int value) {
  if (write(file, &value, sizeof(value)) != sizeof(value)) {
    _exit(99);
  }
}

bool Receive(int file, int& value, int milliseconds) {
  pollfd entry{file, POLLIN, 0};
  return poll(&entry, 1, milliseconds) == 1 && read(file, &value, sizeof(value)) == sizeof(value);
}

}  // namespace

TerminalSession::TerminalSession(Place place, const std::function<int()>& body,
                                 std::string_view earlierKeys) {
  screen_ = posix_openpt(O_RDWR | O_NOCTTY);
  EXPECT_EQ(grantpt(screen_), 0);
  EXPECT_EQ(unlockpt(screen_), 0);
  terminal_ = open(ptsname(screen_), O_RDWR | O_NOCTTY);
  EXPECT_GE(terminal_, 0);
  termios settings = Settings(terminal_);
  settings.c_cc[VERASE] = 'Q';
  settings.c_cc[VMIN] = 3;
  settings.c_cc[VTIME] = 7;
  EXPECT_EQ(tcsetattr(terminal_, TCSANOW, &settings), 0);
  initialAttributes_ = Attributes();
  if (!earlierKeys.empty()) {
    Type(earlierKeys);
    for (int i = 0; i < kPolls && BytesToRead(terminal_) == 0; ++i) {
      SleepMilliseconds(1);
    }
    EXPECT_EQ(BytesToRead(terminal_), static_cast<int>(earlierKeys.size()));
  }

  leader_ = fork();
  if (leader_ == 0) {
    close(screen_);
    events_.CloseReadEnd();
    life_.CloseWriteEnd();
    Lead(place, body);
  }
  events_.CloseWriteEnd();
  life_.CloseReadEnd();
  EXPECT_TRUE(Receive(events_.ReadEnd(), process_, kPolls)) << "no process was started";
}

void TerminalSession::Lead(Place place, const std::function<int()>& body) {
  setsid();
  ioctl(terminal_, TIOCSCTTY, 0);
  for (const int ignored : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTTOU}) {
    signal(ignored, SIG_IGN);
  }
  Pipe start;
  const int process = fork();
  if (process == 0) {
    for (const int usual : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTTOU}) {
      signal(usual, SIG_DFL);
    }
    setpgid(0, 0);
    ReplaceHandle(STDIN_FILENO, terminal_);
    start.ReadByte();
    _exit(body());
  }
  setpgid(process, process);
  if (place == Place::kForeground) {
    tcsetpgrp(terminal_, process);
  }
  Send(events_.WriteEnd(), process);
  start.Write("!");
  for (bool isEnded = false; !isEnded;) {
    int status = 0;
    if (waitpid(process, &status, WUNTRACED) < 0) {
      break;
    }
    Send(events_.WriteEnd(), status);
    isEnded = !WIFSTOPPED(status);
  }
  life_.ReadByte();  // until the test closes its end
  _exit(0);
}

TerminalSession::~TerminalSession() {
  kill(process_, SIGKILL);
  life_.CloseWriteEnd();
  int status = 0;
  while (waitpid(leader_, &status, 0) < 0 && errno == EINTR) {
  }
  close(terminal_);
  close(screen_);
}

void TerminalSession::Type(std::string_view keys) {
  EXPECT_EQ(write(screen_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

bool TerminalSession::WaitForKeyMode() {
  for (int i = 0; i < kPolls; ++i) {
    if ((Settings(terminal_).c_lflag & ICANON) == 0) {
      return true;
    }
    SleepMilliseconds(1);
  }
  return false;
}

std::string TerminalSession::Attributes() const {
  const termios settings = Settings(terminal_);
  std::ostringstream text;
  text << std::hex << settings.c_iflag << ' ' << settings.c_oflag << ' ' << settings.c_cflag << ' '
       << settings.c_lflag;
  for (const cc_t c : settings.c_cc) {
    text << ' ' << int{c};
  }
  return text.str();
}

bool TerminalSession::HasEcho() const { return (Settings(terminal_).c_lflag & ECHO) != 0; }

std::string TerminalSession::Shown() {
  std::string text;
  for (pollfd entry{screen_, POLLIN, 0};
       poll(&entry, 1, 0) == 1 && (entry.revents & POLLIN) != 0;) {
    char buffer[256];
    const ssize_t count = read(screen_, buffer, sizeof(buffer));
    if (count <= 0) {
      break;
    }
    text.append(buffer, static_cast<std::size_t>(count));
  }
  return text;
}

int TerminalSession::UnreadBytes() {
  // Lines that are not complete count only while keys are delivered one by one.
  termios settings = Settings(terminal_);
  settings.c_lflag &= ~static_cast<tcflag_t>(ICANON);
  EXPECT_EQ(tcsetattr(terminal_, TCSANOW, &settings), 0);
  return BytesToRead(terminal_);
}

void TerminalSession::Signal(int signal) const { EXPECT_EQ(kill(process_, signal), 0); }

TerminalSession::Event TerminalSession::NextEvent(int milliseconds) {
  int status = 0;
  if (!Receive(events_.ReadEnd(), status, milliseconds)) {
    return {};
  }
  if (WIFSTOPPED(status)) {
    return Stopped();
  }
  return WIFEXITED(status) ? Exited(WEXITSTATUS(status)) : Killed(WTERMSIG(status));
}

}  // namespace Testing
