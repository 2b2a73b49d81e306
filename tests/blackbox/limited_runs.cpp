#include "limited_runs.h"

#include <filesystem>

namespace Testing {

ProcessResult RunLimited(const ScratchFolder& folder, const std::string& limits,
                         const std::string& definition) {
  const std::string link = "C:\\hovar";
  if (!folder.Has(link)) {
    std::filesystem::create_symlink(HOVAR_PROGRAM, folder.Path() / link);
  }
  Command command = HovarIn(folder, {});
  command.program = "/bin/sh";
  command.arguments = {"sh", "-c",        limits + " && exec \"$1\" \"$2\"",
                       "sh", "./" + link, definition};
  return RunProcess(command);
}

ProcessResult RunWithLittleMemory(const ScratchFolder& folder, const std::string& definition) {
  if (!kIsSanitized) {
    return RunLimited(folder, "ulimit -v 1000000", definition);
  }
  Command command = HovarIn(folder, {definition});
  command.environment = {
      {"ASAN_OPTIONS", "max_allocation_size_mb=1000:allocator_may_return_null=1"}};
  return RunProcess(command);
}

}  // namespace Testing
