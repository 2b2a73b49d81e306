// A program for tests to start. The first argument says what it does:
//   exit N       ends with status N
//   echo ...     writes its own name and the arguments, one per line, then what it reads
//   complain     writes a line on standard error
//   sleep        runs for a minute
//   read N       ends with status 0 when there is no open file with the handle N

#include <array>
#include <cstdlib>
#include <string_view>

#include "foundation/io/platform/platform.h"
#include "foundation/io/platform/processes.h"

namespace {

namespace Platform = Vell::IO::Platform;

void Write(Platform::FileHandle file, std::string_view text) {
  Platform::WriteFile(file, text.data(), text.size());
}

void WriteLine(Platform::FileHandle file, std::string_view text) {
  Write(file, text);
  Write(file, "\n");
}

int Echo(int argumentCount, char** arguments) {
  for (int i = 0; i < argumentCount; ++i) {
    WriteLine(Platform::kStandardOutput, arguments[i]);
  }
  std::array<char, 256> buffer;
  std::int64_t size = 0;
  while ((size = Platform::ReadFile(Platform::kStandardInput, buffer.data(), buffer.size())) > 0) {
    Write(Platform::kStandardOutput, {buffer.data(), static_cast<std::size_t>(size)});
  }
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const std::string_view task = argumentCount > 1 ? arguments[1] : "";
  if (task == "exit") {
    return std::atoi(arguments[2]);
  }
  if (task == "echo") {
    return Echo(argumentCount, arguments);
  }
  if (task == "complain") {
    WriteLine(Platform::kStandardError, "a complaint");
    return EXIT_SUCCESS;
  }
  if (task == "sleep") {
    Platform::Sleep(60'000);
    return EXIT_SUCCESS;
  }
  if (task == "read") {
    char byte = 0;
    return Platform::ReadFile(std::atoi(arguments[2]), &byte, 1) < 0 ? EXIT_SUCCESS : EXIT_FAILURE;
  }
  return EXIT_FAILURE;
}
