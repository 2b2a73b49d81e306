#include "watched_run.h"

#include <unistd.h>

#include <charconv>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "support/running_process.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

constexpr char kMarkName[] = "HOVAR_TEST_MARK";

std::string NewMark() {
  static int count = 0;
  return std::to_string(getpid()) + "-" + std::to_string(++count);
}

/// The environment of a process; empty for one that has ended.
std::string EnvironmentOf(const fs::path& process) {
  std::ifstream file(process / "environ", std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

ProcessMark::ProcessMark(Command& command) : value_(NewMark()) {
  command.environment.emplace_back(kMarkName, value_);
}

ProcessMark::~ProcessMark() {
  for (const int id : Living()) {
    kill(id, SIGKILL);
  }
}

std::vector<int> ProcessMark::Living() const {
  const std::string variable = std::string(kMarkName) + "=" + value_ + '\0';
  std::vector<int> ids;
  std::error_code vanished;
  for (const auto& entry : fs::directory_iterator("/proc", vanished)) {
    const std::string name = entry.path().filename().string();
    int id = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), id);
    if (error == std::errc() && end == name.data() + name.size() &&
        EnvironmentOf(entry.path()).find(variable) != std::string::npos) {
      ids.push_back(id);
    }
  }
  return ids;
}

std::vector<int> ProcessMark::LivingAfter(std::chrono::milliseconds time) const {
  const auto deadline = std::chrono::steady_clock::now() + time;
  std::vector<int> ids = Living();
  while (!ids.empty() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ids = Living();
  }
  return ids;
}

WatchedEnd Watch(Command command, std::chrono::milliseconds patience) {
  const ProcessMark mark(command);
  Process process(command);
  WatchedEnd end;
  if (!process.EndsWithin(patience)) {
    end.wasAsked = true;
    process.Signal(SIGTERM);
    end.hangs = !process.EndsWithin(kTimeToEnd);
  }
  if (end.hangs) {
    process.Signal(SIGKILL);
    for (const int id : mark.Living()) {
      kill(id, SIGKILL);
    }
  }
  end.result = process.Wait();
  end.orphans = mark.LivingAfter(kTimeToEnd).size();
  return end;
}

}  // namespace Testing
