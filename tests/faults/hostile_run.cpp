#include "faults/hostile_run.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "blackbox/check_runs.h"
#include "blackbox/launcher_runs.h"
#include "blackbox/limited_rights.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

constexpr char kEarlier[] = "earlier\n";
constexpr std::uintmax_t kMostCompared = std::uintmax_t{8} << 20;

std::string ContentOf(const fs::path& path) {
  const fs::file_status status = fs::symlink_status(path);
  switch (status.type()) {
    case fs::file_type::symlink:
      return "link to " + fs::read_symlink(path).string();
    case fs::file_type::directory:
      return "folder";
    case fs::file_type::regular:
      break;
    default:
      return "special";
  }
  const bool isReadable = (status.permissions() & fs::perms::owner_read) != fs::perms::none;
  const std::uintmax_t size = fs::file_size(path);
  return !isReadable || size > kMostCompared ? "bytes: " + std::to_string(size)
                                             : RegularFile(ReadFile(path));
}

FileTree TreeOf(const fs::path& folder) {
  FileTree tree;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    tree[entry.path().lexically_relative(folder).string()] = ContentOf(entry.path());
  }
  return tree;
}

/// A study with the file of a cell.
class HostileStudy {
 public:
  HostileStudy(const HostileCell& cell, const std::string& launcher) {
    study_.Write("elsewhere/secret.csv", kForeignBytes);
    if (cell.place->hasChains) {
      EXPECT_EQ(RunLauncher(study_, {"--chains", "2", "analysis.xml"}, launcher).exitStatus, 0);
    }
    if (cell.place->task == Task::kReport) {
      study_.Write("out/inside.csv", "inside");
    }
    if (cell.place->definitionName != "@") {
      study_.Write("d.xml", WithName(cell.place->definition, cell.name.name));
    }
    const bool isEarlier = cell.place->content.empty();
    const bool isForeign = cell.place->task == Task::kReport && IsLink(cell.kind.kind);
    file_.emplace(study_.Path() / cell.File(), cell.kind.kind,
                  isForeign   ? std::string(kForeignBytes)
                  : isEarlier ? std::string(kEarlier)
                              : cell.place->content,
                  study_.Path() / "elsewhere");
  }

  const TinyStudy& Study() const { return study_; }

  HostileEnd Run(Command command, HostileKind kind) const {
    if (kind == HostileKind::kUnreadable) {
      command = WithoutRights(command);
    }
    if (kind == HostileKind::kTerminalDevice) {
      command.arguments[0] = command.program;
      command.arguments.insert(command.arguments.begin(), "setsid");
      command.program = "/usr/bin/setsid";
    }
    HostileEnd result;
    result.before = TreeOf(study_.Path());
    const int milliseconds = IsEndless(kind) ? 250 : 20'000;
    result.end = Watch(command, std::chrono::milliseconds(milliseconds));
    result.after = TreeOf(study_.Path());
    return result;
  }

 private:
  static bool IsLink(HostileKind kind) { return kind == HostileKind::kLink; }

  TinyStudy study_;
  std::optional<HostileFile> file_;
};

}  // namespace

std::string RegularFile(const std::string& bytes) { return "file: " + bytes; }

std::string HostileCell::Text() const {
  return place->what + " | " + name.what + " | " + kind.what;
}

std::string HostileCell::OutputFolder() const {
  return place->definition.find("<Folder>@<") == std::string::npos ? "out" : name.name;
}

bool HostileEnd::IsChanged(const std::string& path) const {
  const auto then = before.find(path);
  const auto now = after.find(path);
  return (then == before.end()) != (now == after.end()) ||
         (then != before.end() && then->second != now->second);
}

HostileEnd RunCell(const HostileCell& cell, const std::string& launcher) {
  const HostileStudy study(cell, launcher);
  std::vector<std::string> arguments;
  for (const std::string& argument : cell.place->arguments) {
    arguments.push_back(argument == "%" ? cell.Definition() : WithName(argument, cell.name.name));
  }
  return study.Run(LauncherIn(study.Study(), arguments, launcher), cell.kind.kind);
}

HostileEnd RunProgramAlone(const HostileCell& cell) {
  const HostileStudy study(cell, HOVAR_LAUNCHER);
  const ScratchFolder links;
  return study.Run(HovarByLink(links, study.Study(), {cell.Definition()}), cell.kind.kind);
}

}  // namespace Testing
