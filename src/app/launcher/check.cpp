#include "app/launcher/check.h"

#include <new>
#include <optional>
#include <string>

#include "app/launcher/check_run.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/io/platform/platform.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

struct CheckOptions {
  bool isStrict = false;
  Describe describe = Describe::kNothing;
  std::string definition;
};

/// The options of a command line, or nothing when it is wrong.
std::optional<CheckOptions> ReadOptions(const std::vector<std::string_view>& arguments) {
  CheckOptions options;
  bool hasDefinition = false;
  for (const std::string_view argument : arguments) {
    if (argument == "--strict") {
      options.isStrict = true;
    } else if (argument == "--data") {
      options.describe = Describe::kData;
    } else if (hasDefinition || argument.starts_with("--")) {
      return std::nullopt;
    } else {
      hasDefinition = true;
      options.definition = argument;
    }
  }
  return hasDefinition ? std::optional(options) : std::nullopt;
}

bool Print(Platform::FileHandle file, std::string_view text) {
  return Platform::WriteFile(file, text.data(), text.size());
}

}  // namespace

int RunCheck(const std::vector<std::string_view>& arguments) {
  const std::optional<CheckOptions> options = ReadOptions(arguments);
  if (!options.has_value()) {
    Print(Platform::kStandardError, "hovar: usage: hovar --check [--strict] [--data] DEFINITION\n");
    return 1;
  }
  RunCheckup checkup(options->describe);
  try {
    checkup.Check(options->definition);
  } catch (const Vell::Exceptions::OutOfMemoryException&) {
    throw std::bad_alloc();  // its own line was not shown
  }
  const Findings& found = checkup.Found();
  const bool isPrinted =
      Print(Platform::kStandardOutput, found.Lines() + checkup.Description() + found.Summary());
  const bool isGood = found.Errors() == 0 && (!options->isStrict || found.Warnings() == 0);
  return isPrinted && isGood ? 0 : 1;
}

}  // namespace Hovar
